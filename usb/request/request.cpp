#include "usb/request/request.h"

#include <exception>
#include <new>
#include <string_view>

#include "shared/text.h"
#include "usb/request/notes.h"
#include "usb/request/operation.h"

namespace fliglaf {
namespace {

/// Values of quorinprgresult(1); greater ones are operation codes.
constexpr std::uint8_t kRequestSequence = 0;
constexpr std::uint8_t kRequestNothing = 1;

/// Elements of quorinprgnote.
constexpr int kQuestionPrompt = 7;
constexpr int kQuestionTitle = 8;

/// True when the sequence goes on after operation `code`.
bool GoesOn(EngineRun& run, std::int16_t code) {
  const SharedVariables& vars = run.vars;
  const std::uint8_t outcome = run.outcome();
  if (code == operation::kBlankCheck && outcome == 1) {
    return run.desktop.MsgBox(platform::box_style::kQuestionOkCancel,
                              vars.quorinprgnote[kQuestionTitle],
                              vars.quorinprgnote[kQuestionPrompt]) != platform::box_answer::kCancel;
  }
  return outcome == 0;
}

/// The request in quorinprgresult(1): one operation, nothing, or the automatic sequence, in which a
/// failed blank check asks the user and any other result but 0 ends it.
void RunSequence(EngineRun& run, const std::function<void(std::int16_t)>& run_operation) {
  const SharedVariables& vars = run.vars;
  const std::uint8_t request = vars.quorinprgresult[1];
  if (request == kRequestNothing) return;
  if (request != kRequestSequence) return run_operation(request);

  const std::uint8_t steps = vars.quorinwautonum[0];
  if (steps == 0) return run_operation(operation::kProgram);
  for (int i = 0; i < steps; ++i) {
    const std::int16_t code = vars.quorinautoprg[i];
    run_operation(code);
    if (!GoesOn(run, code)) return;
  }
}

/// Ends a run that cannot go on. Each step is tried even if the one before it failed: the socket
/// must not be left powered.
void Abandon(EngineRun& run, std::string_view reason) noexcept {
  const auto attempt = [](const auto& step) {
    try {
      step();
    } catch (const std::exception&) {  // NOLINT: there is nobody to report it to
    }
  };
  attempt([&run] {
    if (!run.stopped()) run.vars.quorinprgresult[0] = result::kFailure;
  });
  attempt([&run, reason] { run.Log(u">>" + Widen(reason) + u"\n"); });
  attempt([&run] { run.io.EndRun(); });
}

}  // namespace

void CarryOut(EngineRun& run, const std::function<void()>& request) {
  try {
    request();
  } catch (const RangeError&) {
    Abandon(run, "Index out of range");
  } catch (const std::bad_alloc&) {
    Abandon(run, "Out of memory");
  } catch (const std::exception& error) {
    Abandon(run, error.what());
  }
}

void RunRequest(EngineRun& run, const std::function<void(std::int16_t)>& run_operation) {
  run.ExtraMs = 0;
  const double start = run.desktop.SecondsSinceMidnight();
  RunSequence(run, run_operation);
  NoteElapsedTime(run, start);
  if (run.outcome() != result::kSuccess) {
    run.io.SignalFail(0);
  } else {
    run.io.SignalPass(0);
  }
}

}  // namespace fliglaf
