// What a run record is made of besides calls and assignments: its first line and its sections. A
// record holds one call of the host object, all that crossed the boundary between the library and
// the programmer while it ran, and the shared variables before and after.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace fliglaf::record {

inline constexpr std::string_view kFirstLine = "fliglaf run record 1";

/// The sections, in the order in which a record has them.
enum class Section : std::uint8_t { kBefore, kCall, kTraffic, kAfter };
inline constexpr std::array<std::string_view, 4> kSectionNames{"[before]", "[call]", "[traffic]",
                                                               "[after]"};

[[nodiscard]] constexpr std::string_view Name(Section section) {
  return kSectionNames[static_cast<std::size_t>(section)];
}

/// Words in front of what is no call, in the traffic.
inline constexpr std::string_view kSetWord = "set";
inline constexpr std::string_view kEventWord = "event";
/// The timer that an event can make fire: the watchdog of bulk reads.
inline constexpr std::string_view kWatchdog = "Timer2";

// What a reader accepts: far more than any device needs, and no more than a machine has.

/// Of quorinbuflength(0), in bytes: 16 MiB.
inline constexpr std::int64_t kLongestData = std::int64_t{1} << 24;
/// In bytes: 16 MiB.
inline constexpr std::size_t kLongestLine = std::size_t{1} << 24;
/// In bytes: 1 GiB. A pipe or a device may have no end.
inline constexpr std::uint64_t kLongestRecord = std::uint64_t{1} << 30;
/// What the assignments that wait for their call, or for a data buffer, may take: 128 MiB.
inline constexpr std::size_t kMostHeldBytes = std::size_t{1} << 27;
/// Events that wait for a turn of the message loop.
inline constexpr std::size_t kMostWaitingEvents = 1'000'000;

}  // namespace fliglaf::record
