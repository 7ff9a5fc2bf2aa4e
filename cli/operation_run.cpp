#include "cli/operation_run.h"

#include <ctime>
#include <iostream>

#include <fmt/format.h>

#include "cli/run_log.h"
#include "cli/utf8.h"
#include "images/whole_file.h"
#include "platform/terminal.h"
#include "record/recorder.h"
#include "usb/run.h"

namespace fliglaf::cli {
namespace {

double LocalSecondsSinceMidnight() {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  return local == nullptr ? 0 : local->tm_hour * 3600.0 + local->tm_min * 60.0 + local->tm_sec;
}

/// What the run came to. A check that could not be made is never told as one that was: what kept
/// the programmer from working comes first.
void Judge(Report& report, const std::string& device, std::uint8_t result,
           const ProgrammerWatch& watch, const Questions& questions) {
  const RunLog told = ReadRunLog(report.log);
  report.result = result;
  report.seconds = told.seconds;
  report.differences = told.differences;
  const auto end = [&](ExitStatus status, const std::string& message) {
    report.status = status;
    report.message = message;
  };
  if (watch.not_found()) {
    return end(ExitStatus::kProgrammer,
               "no programmer was found; is it connected and switched on?");
  }
  if (watch.adapter_missing()) {
    return end(ExitStatus::kProgrammer, "the programmer reports the wrong adapter, or none");
  }
  if (watch.supply_failed()) {
    return end(ExitStatus::kProgrammer,
               "the programmer could not set the device's supply; is there a short circuit?");
  }
  if (!questions.mismatch().empty()) {
    return end(
        ExitStatus::kDiffers,
        device + ": another signature was read (" + questions.mismatch() +
            "): a different device, none, or badly seated; --no-signature leaves the check out");
  }
  if (!told.seconds || !told.failure.empty()) {
    return end(
        ExitStatus::kProgrammer,
        "the run was broken off: " + (told.failure.empty() ? "no reason given" : told.failure));
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
      return end(ExitStatus::kProgrammer,
                 "the programmer does not hand over what it read; is the USB connection good?");
    default:
      return end(ExitStatus::kDiffers,
                 device + ": the operation failed; the log above tells where");
  }
}

}  // namespace

OperationRun::OperationRun(const Options& options, const DeviceProfile& device)
    : options_(options),
      device_(device),
      session_(HostSession::FreeInstance(), device),
      bench_(device, session_.instance(),
             {.chip_file = options.chip_file,
              .faults = options.faults,
              .real_time = options.real_time}),
      watch_(bench_.programmer()),
      desktop_(bench_.bench(), LocalSecondsSinceMidnight()),
      questions_(options.on_mismatch, platform::IsTerminal(platform::Stream::kInput)),
      progress_(MakeProgress(options.progress, platform::IsTerminal(platform::Stream::kError),
                             std::cerr)) {
  desktop_.on_turn = [this] { return Turn(); };
  desktop_.on_box = [this](int style, std::u16string_view title, std::u16string_view prompt) {
    return questions_.Answer(style, title, prompt);
  };
  bench_.bench().programmer().on_turn = [this] { desktop_.DoEvents(); };
  if (options.check_signature && device.signature) session_.CheckSignature(*device.signature);
  session_.SetMargin(options.margin);
  if (!options.record_file.empty()) CheckWritable(options.record_file);
}

Report OperationRun::Run(std::span<const std::uint8_t> codes, Recorded recorded) {
  session_.Request(codes);
  if (options_.record_file.empty() || recorded == Recorded::kNo) {
    Library library(watch_, desktop_);
    clsMPU object(library);
    session_.Open(object);
    session_.Run(object);
  } else {
    RunRecorded();
  }
  progress_->Finish();
  Report report;
  report.log = ToUtf8(session_.log());
  Judge(report, device_.name, session_.result(), watch_, questions_);
  report.signature_ignored = questions_.ignored();
  return report;
}

void OperationRun::RunRecorded() {
  record::Recorder recorder(watch_, desktop_, session_.variables(), record_);
  Library library(recorder.programmer(), recorder.desktop());
  clsMPU object(library);
  session_.Open(object);
  recorder.Begin("runMpu4Prg(-1)");
  session_.Run(object);
  if (!recorder.End()) record_problem_ = recorder.problem();
}

/// True when a stop was asked for in this turn.
bool OperationRun::Turn() {
  const std::string log = ToUtf8(session_.log());
  progress_->Update(CurrentOperation(log), session_.percent());
  if (!platform::StopRequested()) return false;
  session_.RequestStop();
  return true;
}

void OperationRun::Keep() {
  bench_.KeepChip();
  if (options_.record_file.empty()) return;
  if (!record_problem_.empty()) {
    throw ImageError(fmt::format("{}: the run cannot be recorded: {}",
                                 options_.record_file.string(), record_problem_));
  }
  const std::string text = record_.str();
  WriteFileWhole(options_.record_file,
                 {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

}  // namespace fliglaf::cli
