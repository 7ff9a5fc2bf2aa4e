#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/portable/descriptor.h"

namespace fliglaf::cli {

/// A TCP port for one client, of this machine only. What waits comes back at a stop signal as if
/// the client had gone; CatchStopSignals has been called before.
class LoopbackPort {
 public:
  /// `number` 0: one that is free. Throws UsageError when it is not available.
  explicit LoopbackPort(std::uint16_t number);

  [[nodiscard]] std::uint16_t number() const { return number_; }

  /// Waits for the client; every other one is refused. False when none came.
  [[nodiscard]] bool Accept();
  /// What the client has sent, valid until the next call; waits for some. Empty when it has gone.
  [[nodiscard]] std::string_view Receive();
  /// False when the client has gone.
  [[nodiscard]] bool Send(std::string_view bytes);

 private:
  platform::Descriptor listener_;
  platform::Descriptor client_;
  std::uint16_t number_ = 0;
  std::array<char, 4096> received_{};
};

}  // namespace fliglaf::cli
