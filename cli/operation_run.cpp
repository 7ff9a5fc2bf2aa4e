#include "cli/operation_run.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <tuple>

#include <fmt/format.h>

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

std::string WrongSignature(const OperationOptions& options, const DeviceProfile& device,
                           const std::string& read) {
  const DeviceProfile* const other = options.device.FindBySignature(read);
  return fmt::format(
      "{}: another signature was read ({}), expected {}: {}; --no-signature skips the check",
      device.name, read, DescribeSignature(*device.signature),
      other == nullptr ? "the socket may be empty, or hold another device or a badly seated one"
                       : fmt::format("it is that of {}", other->name));
}

/// What a failed operation has come upon.
std::string Difference(const RunLog& log) {
  if (!log.mismatch) return "the operation failed; see the log";
  const auto& [address, device, file] = *log.mismatch;
  if (!file) return fmt::format("not blank at 0x{:04X}: device {:02X}", address, device);
  return fmt::format("differs at 0x{:04X}: device {:02X}, file {:02X}", address, device, *file);
}

/// What a request has added to the log of those before it. A compare listing begins a new one.
std::string AddedTo(std::string_view before, std::string log) {
  return log.starts_with(before) ? log.substr(before.size()) : log;
}

/// Of a request that was carried to its end, by the library's result.
std::pair<ExitStatus, std::string> JudgeResult(std::uint8_t result, const RunLog& log,
                                               const std::string& device) {
  const auto differences = static_cast<std::size_t>(log.differences);
  switch (result) {
    case result::kSuccess:
      if (differences == 0) return {ExitStatus::kSuccess, {}};
      return {ExitStatus::kDiffers, fmt::format("{}: {} differ{}", device, ByteCount(differences),
                                                differences == 1 ? "s" : "")};
    case result::kStopped:
      return {ExitStatus::kStopped, device + ": stopped; the device may be half done"};
    case result::kReadBackFails:
      return {ExitStatus::kProgrammer, std::string(kNothingHandedOver)};
    default:
      return {ExitStatus::kDiffers, fmt::format("{}: {}", device, Difference(log))};
  }
}

}  // namespace

OperationRun::OperationRun(const OperationOptions& options, const DeviceProfile& device)
    : options_(options),
      device_(device),
      session_(HostSession::FreeInstance(), device,
               options.parallel ? Engine::kParallel : Engine::kUsb),
      workplace_(MakeWorkplace(options, device, session_.instance())),
      questions_(options.on_mismatch, platform::IsTerminal(platform::Stream::kInput),
                 device.signature ? DescribeSignature(*device.signature) : ""),
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
  const std::string added = AddedTo(log_, ToUtf8(session_.log()));
  const RunLog run = ReadRunLog(added);
  log_ += added;
  Report report;
  report.log = log_;
  report.result = session_.result();
  report.differences = run.differences;
  report.signature_ignored = questions_.ignored();
  seconds_ += run.seconds.value_or(0);
  if (run.seconds) report.seconds = seconds_;
  std::tie(report.status, report.message) = Judge(run);
  return report;
}

/// Decides how the run ended. A programmer failure wins, so that a check that could not be made is
/// never reported as done.
std::pair<ExitStatus, std::string> OperationRun::Judge(const RunLog& run) const {
  if (std::string problem = StartProblem(workplace_->start_up()); !problem.empty()) {
    return {ExitStatus::kProgrammer, std::move(problem)};
  }
  if (questions_.stopped()) return {ExitStatus::kStopped, device_.name + ": stopped"};
  if (!questions_.mismatch().empty()) {
    return {ExitStatus::kDiffers, WrongSignature(options_, device_, questions_.mismatch())};
  }
  if (!run.seconds || !run.failure.empty()) {
    return {ExitStatus::kProgrammer, BrokenOff(workplace_->start_up(), run.failure)};
  }
  if (session_.lost_blocks() > 0 && session_.result() != result::kStopped) {
    return {ExitStatus::kProgrammer,
            fmt::format("{} The result in the log rests on bytes that are not the device's.",
                        kNothingHandedOver)};
  }
  return JudgeResult(session_.result(), run, device_.name);
}

void OperationRun::Keep(Report& report) {
  std::ranges::move(workplace_->Keep(), std::back_inserter(report.unwritten));
  const bool unfinished = report.status == ExitStatus::kSuccess && !report.unwritten.empty();
  if (unfinished && platform::StopRequested()) report.status = ExitStatus::kStopped;
}

ExitStatus OperationRun::Complete(const std::function<Report()>& carry) {
  Report report;
  try {
    report = carry();
  } catch (const std::exception&) {  // refused, or stopped, after the device has been read
    Keep(report);
    PrintUnwritten(report);
    throw;
  }
  Keep(report);
  return PrintReport(options_, report);
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
