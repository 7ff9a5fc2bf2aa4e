#include "cli/operation_run.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include <fmt/format.h>

#include "cli/run_log.h"
#include "images/whole_file.h"
#include "platform/terminal.h"
#include "shared/utf8.h"
#include "usb/request/run.h"

namespace fliglaf::cli {
namespace {

/// What kept the programmer from starting; empty when nothing is known to have.
std::string StartProblem(StartUp start_up) {
  switch (start_up) {
    case StartUp::kNotFound:
      return "no programmer was found; is it connected and switched on?";
    case StartUp::kWrongAdapter:
      return "the programmer reports the wrong adapter, or none";
    case StartUp::kNoSupply:
      return "the programmer could not set the device's supply; is there a short circuit?";
    default:
      return {};
  }
}

/// Why a run that has no elapsed time was not carried to its end.
std::string BrokenOff(StartUp start_up, const std::string& failure) {
  if (!failure.empty()) return "the run was broken off: " + failure;
  if (start_up == StartUp::kNotTold) {
    return "the programmer could not be started: is it connected and switched on, with the right "
           "adapter, and is there a short circuit?";
  }
  return "the run was broken off: no reason given";
}

constexpr std::string_view kNothingHandedOver =
    "the programmer does not hand over what it read; is the USB connection good?";

/// Decides how the run ended. A programmer failure wins, so that a check that could not be made is
/// never reported as done.
void Judge(Report& report, const std::string& device, const HostSession& session, StartUp start_up,
           const Questions& questions) {
  const std::uint8_t result = session.result();
  const RunLog told = ReadRunLog(report.log);
  report.result = result;
  report.seconds = told.seconds;
  report.differences = told.differences;
  const auto end = [&](ExitStatus status, const std::string& message) {
    report.status = status;
    report.message = message;
  };
  if (const std::string problem = StartProblem(start_up); !problem.empty()) {
    return end(ExitStatus::kProgrammer, problem);
  }
  if (questions.stopped()) return end(ExitStatus::kStopped, device + ": stopped");
  if (!questions.mismatch().empty()) {
    return end(
        ExitStatus::kDiffers,
        device + ": another signature was read (" + questions.mismatch() +
            "): a different device, none, or badly seated; --no-signature leaves the check out");
  }
  if (!told.seconds || !told.failure.empty()) {
    return end(ExitStatus::kProgrammer, BrokenOff(start_up, told.failure));
  }
  if (session.lost_blocks() > 0 && result != result::kStopped) {
    return end(ExitStatus::kProgrammer, std::string(kNothingHandedOver) +
                                            " The result in the log rests on bytes that are not "
                                            "the device's.");
  }
  switch (result) {
    case result::kSuccess:
      if (told.differences > 0) {
        end(ExitStatus::kDiffers, fmt::format("{}: {} bytes differ", device, told.differences));
      }
      return;
    case result::kStopped:
      return end(ExitStatus::kStopped, device + ": stopped; the device may be half done");
    case result::kReadBackFails:
      return end(ExitStatus::kProgrammer, std::string(kNothingHandedOver));
    default:
      return end(ExitStatus::kDiffers,
                 device + ": the operation failed; the log above tells where");
  }
}

}  // namespace

OperationRun::OperationRun(const OperationOptions& options, const DeviceProfile& device)
    : device_(device),
      session_(HostSession::FreeInstance(), device,
               options.parallel ? Engine::kParallel : Engine::kUsb),
      workplace_(MakeWorkplace(options, device, session_.instance())),
      questions_(options.on_mismatch, platform::IsTerminal(platform::Stream::kInput)),
      progress_(MakeProgress(options.progress, platform::IsTerminal(platform::Stream::kError),
                             std::cerr)) {
  workplace_->on_turn = [this] { return Turn(); };
  workplace_->on_box = [this](int style, std::u16string_view title, std::u16string_view prompt) {
    return questions_.Answer(style, title, prompt);
  };
  if (options.check_signature && device.signature) session_.CheckSignature(*device.signature);
}

Report OperationRun::Run(std::span<const std::uint8_t> codes, Recorded recorded) {
  if (!has_run_ && platform::StopRequested()) throw platform::Stopped();
  has_run_ = true;
  session_.Request(codes);
  workplace_->Run(session_, recorded);
  progress_->Finish();
  Report report;
  report.log = ToUtf8(session_.log());
  Judge(report, device_.name, session_, workplace_->start_up(), questions_);
  report.signature_ignored = questions_.ignored();
  return report;
}

void OperationRun::Keep(Report& report) {
  std::ranges::move(workplace_->Keep(), std::back_inserter(report.unwritten));
  const bool unfinished = report.status == ExitStatus::kSuccess && !report.unwritten.empty();
  if (unfinished && platform::StopRequested()) report.status = ExitStatus::kStopped;
}

/// True when a stop was asked for in this turn.
bool OperationRun::Turn() {
  const std::string log = ToUtf8(session_.log());
  progress_->Update(CurrentOperation(log), session_.percent());
  if (!platform::StopRequested()) return false;
  session_.RequestStop();
  return true;
}

}  // namespace fliglaf::cli
