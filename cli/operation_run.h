#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "cli/host_session.h"
#include "cli/options.h"
#include "cli/progress.h"
#include "cli/questions.h"
#include "cli/report.h"
#include "cli/workplace.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Requests of one call of the program: the host's session, and the workplace that carries them
/// out.
class OperationRun {
 public:
  /// Throws UsageError or ImageError for what the options ask of the workplace and cannot be had,
  /// and for a record that could not be written.
  OperationRun(const Options& options, const DeviceProfile& device);

  [[nodiscard]] HostSession& session() { return session_; }

  /// Runs the operations of `codes` (see HostSession::Request) and judges what came of it. Where
  /// that is success the report's message is left to the caller.
  [[nodiscard]] Report Run(std::span<const std::uint8_t> codes, Recorded recorded = Recorded::kYes);

  /// Writes what the run leaves behind, whatever became of it: the chip's contents, the
  /// waveform and the record.
  /// Throws ImageError.
  void Keep() { workplace_->Keep(); }

 private:
  bool Turn();

  const DeviceProfile& device_;
  HostSession session_;
  std::unique_ptr<Workplace> workplace_;
  Questions questions_;
  std::unique_ptr<Progress> progress_;
};

}  // namespace fliglaf::cli
