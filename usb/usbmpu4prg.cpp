#include "usb/usbmpu4prg.h"

#include <utility>

#include "resources/string_table.h"
#include "usb/dispatch.h"
#include "usb/power_up.h"
#include "usb/request/notes.h"
#include "usb/request/request.h"
#include "usb/signature.h"

namespace fliglaf {
namespace {

/// What quorinubuflg(0) tells the host while the USB engine serves it.
constexpr std::int16_t kUsbEngineMark = 0x3FF0;

/// Write times up to this need no offset.
constexpr std::int32_t kPlainWriteTime = 15;

}  // namespace

usbmpu4prg::usbmpu4prg(std::shared_ptr<SharedVariables> variables, Programmer& programmer,
                       platform::Desktop& desktop)
    : vars_(std::move(variables)),
      programmer_(programmer),
      Timer1(desktop, "Timer1", [this] { Timer1_Timer(); }),
      Timer2(desktop, "Timer2", [this] { Timer2_Timer(); }),
      run_(*vars_, programmer, desktop, form_, Timer2) {
  run_.power_up = [this] { static_cast<void>(powerUpTarget(run_, lines_)); };
  pexit.on_click = [this] { vars_->quorinprgresult[0] = result::kStopped; };
}

void usbmpu4prg::Form_Load() {
  Form_Resize();
  form_.caption = run_.Text(resources::text::kInformation);
  pexit.caption = run_.Text(resources::text::kStop);
}

void usbmpu4prg::Form_Resize() {}  // the window has a fixed layout

void usbmpu4prg::Timer1_Timer() {
  Timer1.Disable();
  Timer2.Disable();
  wmpu0();
}

void usbmpu4prg::Timer2_Timer() {
  Timer2.Disable();
  vars_->quorinprgresult[0] = result::kTimeOut;
}

void usbmpu4prg::prgnote1(std::uint8_t pass) { fliglaf::prgnote1(run_, pass); }

void usbmpu4prg::wmpu0() {
  CarryOut(run_, [this] { Request(); });
}

void usbmpu4prg::Request() {
  SharedVariables& vars = *vars_;
  Form_Load();
  vars.quorinubuflg[0] = kUsbEngineMark;
  switch (powerUpTarget(run_, lines_)) {
    case StartResult::kNotFound:
      return programmer_.ReportStartupFailure();
    case StartResult::kAborted:
      return;
    default:
      break;
  }
  if (vars.quorinchipidtestmode[0] != 0 &&
      (CheckSignature(run_, lines_) == SignatureOutcome::kAbort || run_.stopped())) {
    return programmer_.EndRun();
  }

  const std::int64_t addresses =
      std::int64_t{vars.quorinwltbigendbuf[1]} + 1 - vars.quorinwltbigendbuf[0];
  run_.ProgressStep = static_cast<std::int32_t>(addresses / 100 + 1);
  const std::int32_t write_time = vars.quorinpwte[0];
  run_.PwteOffset = write_time > kPlainWriteTime ? write_time - kPlainWriteTime : 1;

  RunRequest(run_, [this](std::int16_t code) { RunOperation(run_, lines_, code); });
  programmer_.EndRun();
}

}  // namespace fliglaf
