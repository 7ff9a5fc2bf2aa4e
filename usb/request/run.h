// One request of the host on the USB engine: what a device algorithm may use.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>

#include "usb/components/shifter_config.h"
#include "usb/request/engine_run.h"

namespace fliglaf {

/// Lengths of USB packets.
inline constexpr std::int32_t kLongPacket = 15;
inline constexpr std::int32_t kShortPacket = 8;

/// Modes of the programmer's lines. What the alternate mode changes is not known.
enum class LineMode : std::uint8_t { kStandard = 1, kAlternate = 3 };

class Run : public EngineRun {
 public:
  Run(SharedVariables& variables, Programmer& programmer, platform::Desktop& the_desktop,
      platform::Form& the_window, platform::Timer& the_watchdog)
      : EngineRun(variables, programmer, the_desktop, the_window), watchdog(the_watchdog) {}

  /// Powers the device up again. A family that verifies after a fresh start asks for it.
  std::function<void()> power_up;

  /// Timer2: writes result::kTimeOut when a bulk read takes too long.
  platform::Timer& watchdog;

  /// Addresses to one percent of progress.
  std::int32_t ProgressStep = 1;
  /// The part of the write time above 15; 1 when there is none.
  std::int32_t PwteOffset = 1;

  /// Puts `head` into the first bytes of the command buffer and sends `length` bytes of it.
  void SendPacket(std::initializer_list<std::uint8_t> head, std::int32_t length);

  /// Tells the programmer which mode its lines work in; the packet carries what the command buffer
  /// holds behind it.
  void SelectLineMode(LineMode mode) {
    SendPacket({0x30, static_cast<std::uint8_t>(mode)}, kLongPacket);
  }

  /// Puts the first `length` bytes of `config` into the command buffer, where every long packet
  /// carries them along.
  void ConfigureShifter(const ShifterConfig& config, ShifterLength length);
};

}  // namespace fliglaf
