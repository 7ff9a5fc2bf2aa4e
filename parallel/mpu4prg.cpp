#include "parallel/mpu4prg.h"

#include <utility>

#include "parallel/device_id.h"
#include "parallel/operations.h"
#include "parallel/page_operations.h"
#include "parallel/start_programmer.h"
#include "resources/string_table.h"
#include "usb/request/notes.h"
#include "usb/request/operation.h"
#include "usb/request/request.h"

namespace fliglaf {
namespace {

/// As it is designed, in twips.
constexpr platform::Size kDesignSize{5400, 2700};

/// What a compare takes off the window's height, in twips.
constexpr int kButtonRow = 300;

}  // namespace

mpu4prg::mpu4prg(std::shared_ptr<SharedVariables> variables, Programmer& programmer,
                 platform::Desktop& desktop)
    : vars_(std::move(variables)),
      Timer1(desktop, "Timer1", [this] { Timer1_Timer(); }),
      run_(*vars_, programmer, desktop, form_) {
  pexit.on_click = [this] { vars_->quorinprgresult[0] = result::kStopped; };
}

void mpu4prg::Form_Load() {
  form_.size = kDesignSize;
  form_.caption = run_.Text(resources::text::kInformation);
  pexit.caption = run_.Text(resources::text::kStop);
}

void mpu4prg::Timer1_Timer() {
  Timer1.Disable();
  wmpu0();
}

std::int32_t mpu4prg::dataout(std::int16_t data, std::int32_t address, std::int16_t mode) {
  return parallel::dataout(run_, data, address, mode);
}

void mpu4prg::prgnote1(std::uint8_t pass) { fliglaf::prgnote1(run_, pass); }

void mpu4prg::wmpu0() {
  CarryOut(run_, [this] {
    Request();
    run_.io.EndRun();
  });
}

void mpu4prg::Request() {
  Form_Load();
  switch (parallel::StartProgrammer(run_)) {
    case StartResult::kNotFound:
      return run_.io.ReportStartupFailure();
    case StartResult::kAborted:
      return;
    default:
      break;
  }
  if (vars_->quorinchipidtestmode[0] != 0 &&
      parallel::CheckDeviceId(run_) == SignatureOutcome::kAbort) {
    return;
  }
  RunRequest(run_, [this](std::int16_t code) { RunOperation(code); });
}

void mpu4prg::RunOperation(std::int16_t code) {
  parallel::RunOperation(run_, code);
  if (code != operation::kCompare) return;
  form_.size.height -= kButtonRow;
  pexit.visible = false;
}

}  // namespace fliglaf
