#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "devices/device_profile.h"
#include "host/cls_mpu.h"
#include "shared/shared_variables.h"

namespace fliglaf::cli {

/// Which of the library's engines carries a request out.
enum class Engine { kUsb, kParallel };

/// The host's side of the library: fills the shared blocks for a device, runs requests through the
/// public object and reads what comes back.
class HostSession {
 public:
  /// Opens the blocks under a free instance number and describes `device` in them.
  /// Throws UsageError for a device that the engine does not reach.
  HostSession(std::int16_t instance, const DeviceProfile& device, Engine engine);
  ~HostSession();
  HostSession(const HostSession&) = delete;
  HostSession& operator=(const HostSession&) = delete;

  /// The lowest instance number whose blocks are not in use.
  [[nodiscard]] static std::int16_t FreeInstance();

  /// The device image, as the library lays it out.
  [[nodiscard]] std::span<std::uint8_t> image();
  void SetMargin(int steps) { vars_.quorinwlverifyvcc[0] = steps; }
  void CheckSignature(const Signature& expected);

  /// Asks for the operations of `codes`: one as a request, several as an automatic sequence of at
  /// most eleven.
  void Request(std::span<const std::uint8_t> codes);
  /// Has `object` open the blocks.
  void Open(clsMPU& object) const;
  /// Runs the request.
  void Run(clsMPU& object);

  /// Asks the running request to stop; to be repeated at each turn of the message loop, since the
  /// start of an operation forgets it.
  void RequestStop() { vars_.quorinprgresult[0] = 2; }

  [[nodiscard]] std::uint8_t result() const { return vars_.quorinprgresult[0]; }
  /// Blocks of captured bytes that the library could not fetch and judged all the same.
  [[nodiscard]] int lost_blocks() const { return vars_.quorinubuflg[1]; }
  [[nodiscard]] int percent() const { return vars_.quorinprgmode[1]; }
  [[nodiscard]] std::u16string_view log() const { return vars_.quorinMainRtstr[0]; }
  [[nodiscard]] std::int16_t instance() const { return instance_; }
  /// What runMpu4Prg is called with.
  [[nodiscard]] std::int16_t usbenable() const { return engine_ == Engine::kUsb ? -1 : 0; }
  [[nodiscard]] SharedVariables& variables() { return vars_; }

 private:
  void DescribeTexts();

  std::int16_t instance_;
  const DeviceProfile& device_;
  Engine engine_;
  SharedVariables vars_;
};

/// What the session puts before and after an operation's name in the log.
inline constexpr std::string_view kNameStart = "<";
inline constexpr std::string_view kNameEnd = ">";

}  // namespace fliglaf::cli
