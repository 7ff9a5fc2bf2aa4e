#include "cli/operations.h"

#include <ctime>
#include <iostream>
#include <sstream>
#include <vector>

#include <fmt/format.h>

#include "cli/host_session.h"
#include "cli/image_input.h"
#include "cli/programmer_watch.h"
#include "cli/progress.h"
#include "cli/questions.h"
#include "cli/report.h"
#include "cli/run_log.h"
#include "cli/simulated_bench.h"
#include "cli/usage_error.h"
#include "cli/utf8.h"
#include "images/image.h"
#include "platform/portable/portable_desktop.h"
#include "platform/terminal.h"
#include "record/recorder.h"
#include "usb/operation.h"
#include "usb/run.h"

namespace fliglaf::cli {
namespace {

std::uint8_t EraseCode(const DeviceProfile& device) {
  if (!device.operations.erase) throw UsageError(device.name + " has no erase operation");
  return *device.operations.erase;
}

std::uint8_t LockCode(const DeviceProfile& device, int level) {
  const auto& codes = device.operations.lock;
  if (codes.empty()) throw UsageError(device.name + " has no lock operation");
  if (level < 1 || level > static_cast<int>(codes.size())) {
    throw UsageError(
        fmt::format("lock level {}: {} has levels 1 to {}", level, device.name, codes.size()));
  }
  return codes[static_cast<std::size_t>(level) - 1];
}

/// The host's operation codes for a command.
std::vector<std::uint8_t> Codes(const Options& options, const DeviceProfile& device) {
  switch (options.command) {
    case Command::kProgram:
      if (options.erase) return {EraseCode(device), operation::kProgram};
      return {operation::kProgram};
    case Command::kRead:
      return {operation::kRead};
    case Command::kVerify:
      return {operation::kVerify};
    case Command::kBlank:
      return {operation::kBlankCheck};
    case Command::kCompare:
      return {operation::kCompare};
    case Command::kErase:
      return {EraseCode(device)};
    case Command::kLock:
      return {LockCode(device, options.lock_level)};
    default:
      throw UsageError(options.command_name + " is no operation on a device");
  }
}

bool TakesImage(Command command) {
  return command == Command::kProgram || command == Command::kVerify ||
         command == Command::kCompare;
}

ImageFormat OutputFormat(const Options& options) {
  if (const auto format = FormatOfName(options.output)) return *format;
  throw UsageError(fmt::format("{}: the ending of the file's name tells its format: {}",
                               options.output.string(), KnownEndings()));
}

double LocalSecondsSinceMidnight() {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  return local == nullptr ? 0 : local->tm_hour * 3600.0 + local->tm_min * 60.0 + local->tm_sec;
}

/// What success means, in one sentence.
std::string SuccessMessage(const Options& options, const DeviceProfile& device, std::size_t bytes) {
  switch (options.command) {
    case Command::kProgram:
      return fmt::format("{}: programmed with {} bytes and verified.", device.name, bytes);
    case Command::kRead:
      return fmt::format("{}: {} bytes read into {}.", device.name, bytes, options.output.string());
    case Command::kVerify:
      return fmt::format("{}: verified.", device.name);
    case Command::kBlank:
      return fmt::format("{}: blank.", device.name);
    case Command::kCompare:
      return fmt::format("{}: no difference.", device.name);
    case Command::kErase:
      return fmt::format("{}: erased and blank.", device.name);
    default:
      return fmt::format("{}: locked at level {}.", device.name, options.lock_level);
  }
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

/// One operation: the bench, the host's session and the library between them.
class OperationRun {
 public:
  OperationRun(const Options& options, const DeviceProfile& device)
      : options_(options),
        codes_(Codes(options, device)),
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
    bench_.bench().programmer().on_turn = [this] { desktop_.DoEvents(); };
    desktop_.on_box = [this](int style, std::u16string_view title, std::u16string_view prompt) {
      return questions_.Answer(style, title, prompt);
    };
    if (options.check_signature && device.signature) session_.CheckSignature(*device.signature);
    session_.SetMargin(options.margin);
  }

  [[nodiscard]] HostSession& session() { return session_; }

  /// Writes what the run leaves behind, whatever became of it: the chip's contents and the record.
  void Keep() {
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

  Report Run(const std::string& device) {
    session_.Request(codes_);
    if (options_.record_file.empty()) {
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
    Judge(report, device, session_.result(), watch_, questions_);
    return report;
  }

 private:
  void RunRecorded() {
    record::Recorder recorder(watch_, desktop_, session_.variables(), record_);
    Library library(recorder.programmer(), recorder.desktop());
    clsMPU object(library);
    session_.Open(object);
    recorder.Begin("runMpu4Prg(-1)");
    session_.Run(object);
    if (!recorder.End()) record_problem_ = recorder.problem();
  }

  /// True when a stop was asked for in this turn.
  bool Turn() {
    const std::string log = ToUtf8(session_.log());
    progress_->Update(CurrentOperation(log), session_.percent());
    if (!platform::StopRequested()) return false;
    session_.RequestStop();
    return true;
  }

  const Options& options_;
  std::vector<std::uint8_t> codes_;
  HostSession session_;
  SimulatedBench bench_;
  ProgrammerWatch watch_;
  platform::PortableDesktop desktop_;
  Questions questions_;
  std::unique_ptr<Progress> progress_;
  std::ostringstream record_;
  std::string record_problem_;
};

}  // namespace

ExitStatus RunOperationCommand(const Options& options, const DeviceProfile& device) {
  const bool reads = options.command == Command::kRead;
  const ImageFormat format = reads ? OutputFormat(options) : ImageFormat::kBinary;
  if (reads) CheckWritable(options.output);
  if (!options.record_file.empty()) CheckWritable(options.record_file);

  OperationRun run(options, device);
  std::size_t bytes = 0;
  if (TakesImage(options.command)) bytes = LoadImage(options, device, run.session().image());

  platform::CatchStopSignals();
  Report report = run.Run(device.name);
  if (report.status == ExitStatus::kSuccess) {
    if (reads) {
      const auto memory =
          run.session().image().first(static_cast<std::size_t>(device.size) * device.address_bytes);
      WriteImage(options.output, format, memory);
      bytes = memory.size();
    }
    report.message = SuccessMessage(options, device, bytes);
  }
  report.bytes = bytes;
  PrintReport(options, report);
  run.Keep();
  return report.status;
}

}  // namespace fliglaf::cli
