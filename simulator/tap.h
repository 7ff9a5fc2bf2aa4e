// The state machine of a test access port, IEEE 1149.1: pure state, no lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace fliglaf::simulator {

/// The sixteen states of the TAP controller.
enum class TapState : std::uint8_t {
  kTestLogicReset,
  kRunTestIdle,
  kSelectDrScan,
  kCaptureDr,
  kShiftDr,
  kExit1Dr,
  kPauseDr,
  kExit2Dr,
  kUpdateDr,
  kSelectIrScan,
  kCaptureIr,
  kShiftIr,
  kExit1Ir,
  kPauseIr,
  kExit2Ir,
  kUpdateIr,
};

struct TapBranches {
  TapState low;
  TapState high;
};

/// Where each state leads to, in the order of the states.
inline constexpr std::array kTapBranches = [] {
  using enum TapState;
  // clang-format off
  return std::array{
      //          TMS low       TMS high
      TapBranches{kRunTestIdle, kTestLogicReset},  // Test-Logic-Reset
      TapBranches{kRunTestIdle, kSelectDrScan},    // Run-Test/Idle
      TapBranches{kCaptureDr,   kSelectIrScan},    // Select-DR-Scan
      TapBranches{kShiftDr,     kExit1Dr},         // Capture-DR
      TapBranches{kShiftDr,     kExit1Dr},         // Shift-DR
      TapBranches{kPauseDr,     kUpdateDr},        // Exit1-DR
      TapBranches{kPauseDr,     kExit2Dr},         // Pause-DR
      TapBranches{kShiftDr,     kUpdateDr},        // Exit2-DR
      TapBranches{kRunTestIdle, kSelectDrScan},    // Update-DR
      TapBranches{kCaptureIr,   kTestLogicReset},  // Select-IR-Scan
      TapBranches{kShiftIr,     kExit1Ir},         // Capture-IR
      TapBranches{kShiftIr,     kExit1Ir},         // Shift-IR
      TapBranches{kPauseIr,     kUpdateIr},        // Exit1-IR
      TapBranches{kPauseIr,     kExit2Ir},         // Pause-IR
      TapBranches{kShiftIr,     kUpdateIr},        // Exit2-IR
      TapBranches{kRunTestIdle, kSelectDrScan},    // Update-IR
  };
  // clang-format on
}();

/// The state after a rising edge of TCK with TMS at that level. Asked at every clock.
[[nodiscard]] constexpr TapState NextState(TapState state, bool tms) {
  const TapBranches& branches = kTapBranches[static_cast<std::size_t>(state)];
  return tms ? branches.high : branches.low;
}

}  // namespace fliglaf::simulator
