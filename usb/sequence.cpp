#include "usb/sequence.h"

#include "usb/operation.h"

namespace fliglaf {
namespace {

/// Values of quorinprgresult(1); greater ones are operation codes.
constexpr std::uint8_t kRequestSequence = 0;
constexpr std::uint8_t kRequestNothing = 1;

/// Elements of quorinprgnote.
constexpr int kQuestionPrompt = 7;
constexpr int kQuestionTitle = 8;

/// True when the sequence goes on after operation `code`.
bool GoesOn(SharedVariables& vars, platform::Desktop& desktop, std::int16_t code) {
  const std::uint8_t outcome = vars.quorinprgresult[0];
  if (code == operation::kBlankCheck && outcome == 1) {
    return desktop.MsgBox(platform::box_style::kQuestionOkCancel,
                          vars.quorinprgnote[kQuestionTitle],
                          vars.quorinprgnote[kQuestionPrompt]) != platform::box_answer::kCancel;
  }
  return outcome == 0;
}

}  // namespace

void RunRequest(SharedVariables& vars, platform::Desktop& desktop,
                const std::function<void(std::int16_t)>& run_operation) {
  const std::uint8_t request = vars.quorinprgresult[1];
  if (request == kRequestNothing) return;
  if (request != kRequestSequence) return run_operation(request);

  const std::uint8_t steps = vars.quorinwautonum[0];
  if (steps == 0) return run_operation(operation::kProgram);
  for (int i = 0; i < steps; ++i) {
    const std::int16_t code = vars.quorinautoprg[i];
    run_operation(code);
    if (!GoesOn(vars, desktop, code)) return;
  }
}

}  // namespace fliglaf
