#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "cli/host_session.h"
#include "cli/operation_options.h"
#include "cli/progress.h"
#include "cli/questions.h"
#include "cli/report.h"
#include "cli/run_log.h"
#include "cli/workplace.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Requests of one call of the program: the host's session, and the workplace that carries them
/// out.
class OperationRun {
 public:
  /// `options` and `device` outlive it. Throws UsageError, BenchError or ImageError for what the
  /// workplace cannot give.
  OperationRun(const OperationOptions& options, const DeviceProfile& device);

  [[nodiscard]] const DeviceProfile& device() const { return device_; }
  [[nodiscard]] HostSession& session() { return session_; }

  /// Runs the operations of `codes` (see HostSession::Request) and judges the outcome; log and time
  /// are those of all requests so far. On success the report's message is left to the caller. Throws
  /// platform::Stopped when the user stopped the program before its first request.
  [[nodiscard]] Report Run(std::span<const std::uint8_t> codes, Recorded recorded = Recorded::kYes);

  /// Writes what the runs leave behind, however they ended: the chip's contents, the waveform and
  /// the record. What cannot be written goes into the report.
  void Keep(Report& report);

  /// Carries out what runs requests, keeps what they leave behind and prints the report. When
  /// `carry` throws, what the requests before it left behind is kept, too.
  ExitStatus Complete(const std::function<Report()>& carry);

 private:
  [[nodiscard]] std::pair<ExitStatus, std::string> Judge(const RunLog& run) const;
  bool Turn();

  const OperationOptions& options_;
  bool has_run_ = false;
  std::string log_;     ///< of the requests so far
  double seconds_ = 0;  ///< that they took
  const DeviceProfile& device_;
  HostSession session_;
  std::unique_ptr<Workplace> workplace_;
  Questions questions_;
  std::unique_ptr<Progress> progress_;
};

}  // namespace fliglaf::cli
