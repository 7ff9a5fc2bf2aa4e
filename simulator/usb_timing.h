// How long the programmer's USB connection takes: full speed, 12 Mbit/s, frames of 1 ms, as USB
// 2.0 has them (section 5.8.4: at most 19 bulk packets of 64 bytes in a frame).
#pragma once

#include <cstddef>
#include <cstdint>

namespace fliglaf::simulator::usb {

inline constexpr std::int64_t kFrame = 1'000'000;  ///< ns
/// A call that sends one packet is over with the frame that carries it; one that waits for an
/// answer takes a second frame.
inline constexpr std::int64_t kCommand = kFrame;
inline constexpr std::int64_t kQuestion = 2 * kFrame;
inline constexpr std::int64_t kPacket = kFrame / 19;
inline constexpr std::size_t kPacketBytes = 64;
/// A queued register write or delay on the wire: a code and two bytes.
inline constexpr std::int64_t kQueueEntryBytes = 3;

/// ns for `bytes` bytes in whole packets.
[[nodiscard]] constexpr std::int64_t TransferTime(std::size_t bytes) {
  return static_cast<std::int64_t>((bytes + kPacketBytes - 1) / kPacketBytes) * kPacket;
}

}  // namespace fliglaf::simulator::usb
