#include "families/flash_register_access.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>

#include "usb/request/latches.h"

namespace fliglaf {
namespace {

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

// Instructions of the debug port. The upper four bits of one steer the core.
constexpr std::int16_t kInstructionBits = 16;
constexpr std::int32_t kReset = 0x2000;
constexpr std::int32_t kHalt = 0x1000;
constexpr std::int32_t kIdCode = 0x004;
constexpr std::int32_t kBypass = 0xFFF;
constexpr std::int32_t kDebugRegister = 0x30C1;

constexpr std::int16_t kDebugBits = 17;

// The last two bits of a scan say what it does to the register.
constexpr std::int32_t kWrite = 3;
constexpr std::int32_t kRead = 2;
constexpr std::int16_t kOperationBits = 2;

}  // namespace

void FlashRegisterAccess::Enter() {
  lines_.flash = kSetA;
  run_.SelectLineMode(LineMode::kStandard);
  LoadAssignment();
  tap_.ConfigureShifter();
  for (int clocks = 0; clocks < 16; clocks += 8) run_.io.WriteRegister(0, reg::kShiftOut);
  OpenFlash();
}

void FlashRegisterAccess::LoadAssignment() {
  const std::int32_t option = run_.vars.quorinwoption[0];
  const auto found = std::ranges::find_if(kAssignments, [option](const Assignment& row) {
    return option >= row.first_option && option <= row.last_option;
  });
  if (found == kAssignments.end()) return;
  lines_.jtag = found->lines;
  if (option == kOptionOfSetB) lines_.flash = kSetB;
  WriteLatches(run_, found->latches);
  run_.io.DelayMs(100);
}

/// Resets and halts the core, and sets up the debug register that holds the flash open.
void FlashRegisterAccess::OpenFlash() {
  constexpr std::array<std::int32_t, 5> kDebugValues{0x8400, 0xB731, 0x840F, 0x8A83, 0x8400};
  constexpr std::int32_t kSignExtended = ~0xFFFF;
  constexpr std::int32_t kCoreStart = 65000;  // µs
  resetTap();
  Select({0x1801, 0x1804});
  run_.io.QueueDelay(kCoreStart);
  Select({0x2804, 0x2004, kHalt | kIdCode, 0x4004, kReset | kBypass, kDebugRegister});
  for (const std::int32_t value : kDebugValues) {
    writeFlashReg(kDebugRegister, value | kSignExtended, kDebugBits);
  }
  Select({kHalt | kIdCode, 0x3084});
  FlushAndWait();
}

std::int32_t FlashRegisterAccess::ReadIdentification() {
  Select({kHalt | kIdCode});
  const std::int32_t digest = tap_.ReadIdentification();
  FlushAndWait();
  return digest;
}

void FlashRegisterAccess::enterFlashAccess() {
  Select({kReset | kBypass, kHalt | kIdCode});
  tap_.scanDr(0, 32);
}

void FlashRegisterAccess::FlushAndWait() {
  run_.io.FlushQueue();
  run_.io.DelayMs(100);
}

void FlashRegisterAccess::Select(std::initializer_list<std::int32_t> instructions) {
  for (const std::int32_t instruction : instructions) tap_.scanIr(instruction, kInstructionBits);
}

void FlashRegisterAccess::writeFlashReg(std::int32_t instruction, std::int32_t value,
                                        std::int16_t width) {
  tap_.scanIr(instruction, kInstructionBits);
  tap_.scanDr(value | kWrite << width, static_cast<std::int16_t>(width + kOperationBits));
}

void FlashRegisterAccess::readFlashReg(std::int32_t instruction, std::int16_t width) {
  tap_.scanIr(instruction, kInstructionBits);
  tap_.scanDr(kRead, kOperationBits);
  tap_.scanDrCapture(0, static_cast<std::int16_t>(width + 1));
}

}  // namespace fliglaf
