#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <sstream>
#include <string>

#include "cli/host_session.h"
#include "cli/options.h"
#include "cli/programmer_watch.h"
#include "cli/progress.h"
#include "cli/questions.h"
#include "cli/report.h"
#include "cli/simulated_bench.h"
#include "devices/device_profile.h"
#include "platform/portable/portable_desktop.h"

namespace fliglaf::cli {

/// Whether a request goes into the record that the options may ask for: one request of a call does.
enum class Recorded { kYes, kNo };

/// Requests of one call of the program: the bench, the host's session, and the library between
/// them.
class OperationRun {
 public:
  /// Throws UsageError or ImageError for what the options ask of the bench and cannot be had, and
  /// for a record that could not be written.
  OperationRun(const Options& options, const DeviceProfile& device);

  [[nodiscard]] HostSession& session() { return session_; }

  /// Runs the operations of `codes` (see HostSession::Request) and judges what came of it. Where
  /// that is success the report's message is left to the caller.
  [[nodiscard]] Report Run(std::span<const std::uint8_t> codes, Recorded recorded = Recorded::kYes);

  /// Writes what the run leaves behind, whatever became of it: the chip's contents and the record.
  /// Throws ImageError.
  void Keep();

 private:
  void RunRecorded();
  bool Turn();

  const Options& options_;
  const DeviceProfile& device_;
  HostSession session_;
  SimulatedBench bench_;
  ProgrammerWatch watch_;
  platform::PortableDesktop desktop_;
  Questions questions_;
  std::unique_ptr<Progress> progress_;
  std::ostringstream record_;
  std::string record_problem_;
};

}  // namespace fliglaf::cli
