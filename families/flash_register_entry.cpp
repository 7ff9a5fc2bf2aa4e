#include <algorithm>
#include <array>
#include <span>

#include "families/flash_register.h"
#include "families/flash_register_access.h"
#include "families/jtag_lines.h"
#include "usb/request/latches.h"

namespace fliglaf {
namespace {

using namespace flash_register;

constexpr FlashRegs kSetA{.regControl = 0x4082,
                          .regData = 0x4083,
                          .regAddress = 0x4084,
                          .regScale = 0x4085,
                          .addressWidth = 16};
constexpr FlashRegs kSetB{.regControl = 0x3082,
                          .regData = 0x3083,
                          .regAddress = 0x3084,
                          .regScale = 0x3085,
                          .addressWidth = 17};
constexpr std::uint8_t kOptionOfSetB = 15;

constexpr std::array kLatchesPort0{Latch{0x02, 1}, Latch{0xA0, 0}};
constexpr std::array kLatches22{Latch{0x40, 3}, Latch{0x08, 2}, Latch{0x00, 1}, Latch{0x02, 0}};
constexpr std::array kLatches23{Latch{0x00, 7}, Latch{0x01, 6}, Latch{0x00, 5}, Latch{0x00, 4},
                                Latch{0x00, 3}, Latch{0xA0, 2}, Latch{0x80, 1}, Latch{0x09, 0}};
constexpr std::array kLatches24{Latch{0x00, 9}, Latch{0x00, 8}, Latch{0x00, 7}, Latch{0x04, 6},
                                Latch{0x00, 5}, Latch{0x02, 4}, Latch{0x00, 3}, Latch{0x40, 2},
                                Latch{0x40, 1}, Latch{0x00, 0}};

/// How the programmer reaches a device, by the device's option.
struct Assignment {
  std::uint8_t first_option;
  std::uint8_t last_option;
  JtagLines lines;
  std::span<const Latch> latches;
};

constexpr std::array kAssignments{
    Assignment{11, 15, kJtagPort0, kLatchesPort0},
    Assignment{22, 22,
               JtagLines{.fixedBitsA = 0x08,
                         .fixedBitsB = 0x00,
                         .lineRegister = 2,
                         .tdiMask = 0x80,
                         .tdoMask = 0x40,
                         .tmsMask = 0x20,
                         .tckMask = 0x10},
               kLatches22},
    Assignment{23, 23,
               JtagLines{.fixedBitsA = 0x01,
                         .fixedBitsB = 0x08,
                         .lineRegister = 0,
                         .tdiMask = 0x40,
                         .tdoMask = 0x80,
                         .tmsMask = 0x10,
                         .tckMask = 0x20},
               kLatches23},
    Assignment{24, 24,
               JtagLines{.fixedBitsA = 0x00,
                         .fixedBitsB = 0x00,
                         .lineRegister = 0,
                         .tdiMask = 0x80,
                         .tdoMask = 0x40,
                         .tmsMask = 0x20,
                         .tckMask = 0x10},
               kLatches24},
};

/// An option without a row leaves lines and latches as they are.
void LoadAssignment(Run& run) {
  const std::int32_t option = run.vars.quorinwoption[0];
  const auto found = std::ranges::find_if(kAssignments, [option](const Assignment& row) {
    return option >= row.first_option && option <= row.last_option;
  });
  if (found == kAssignments.end()) return;
  run.jtag = found->lines;
  if (option == kOptionOfSetB) run.flash = kSetB;
  WriteLatches(run, found->latches);
  run.io.DelayMs(100);
}

void Select(Run& run, std::initializer_list<std::int32_t> instructions) {
  for (const std::int32_t instruction : instructions) scanIr(run, instruction, 16);
}

/// Resets and halts the core, and sets up the debug register that holds the flash open.
void OpenFlash(Run& run) {
  constexpr std::int32_t kDebugRegister = 0x30C1;
  constexpr std::array<std::int32_t, 5> kDebugValues{0x8400, 0xB731, 0x840F, 0x8A83, 0x8400};
  constexpr std::int32_t kSignExtended = ~0xFFFF;
  resetTap(run);
  Select(run, {0x1801, 0x1804});
  run.io.QueueDelay(65000);
  Select(run, {0x2804, 0x2004, 0x1004, 0x4004, 0x2FFF, kDebugRegister});
  for (const std::int32_t value : kDebugValues) {
    writeFlashReg(run, kDebugRegister, value | kSignExtended, 17);
  }
  Select(run, {0x1004, 0x3084});
  FlushAndWait(run);
}

}  // namespace

void enterFlashRegister(Run& run) {
  run.flash = kSetA;
  run.SendPacket({0x30, 0x01}, kLongPacket);
  LoadAssignment(run);
  ConfigureJtagShifter(run);
  for (int clocks = 0; clocks < 16; clocks += 8) run.io.WriteRegister(0, reg::kShiftOut);
  OpenFlash(run);
}

std::array<std::uint8_t, 3> flashRegisterSignature(Run& run) {
  constexpr std::int32_t kIdentification = 0x1004;
  scanIr(run, kIdentification, 16);
  const std::int32_t digest = scanDrCapture(run, 0, -32);
  FlushAndWait(run);
  return {static_cast<std::uint8_t>(digest), static_cast<std::uint8_t>(digest >> 8),
          static_cast<std::uint8_t>(digest >> 16)};
}

}  // namespace fliglaf
