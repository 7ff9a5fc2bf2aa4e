#include "families/flash_register_access.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

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

/// How the programmer reaches a device, by the device's option.
struct Assignment {
  std::uint8_t first_option;
  std::uint8_t last_option;
  JtagLines lines;
  std::initializer_list<Latch> latches;  ///< in the order in which they are written
};
// clang-format off
constexpr Assignment kAssignments[] = {
    {11, 15, kJtagPort0,
     {{0x02, 1}, {0xA0, 0}}},
    {22, 22, {.fixedBitsA = 0x08, .lineRegister = 2, .tdiMask = 0x80, .tdoMask = 0x40, .tmsMask = 0x20, .tckMask = 0x10},
     {{0x40, 3}, {0x08, 2}, {0x00, 1}, {0x02, 0}}},
    {23, 23, {.fixedBitsA = 0x01, .fixedBitsB = 0x08, .lineRegister = 0, .tdiMask = 0x40, .tdoMask = 0x80, .tmsMask = 0x10, .tckMask = 0x20},
     {{0x00, 7}, {0x01, 6}, {0x00, 5}, {0x00, 4}, {0x00, 3}, {0xA0, 2}, {0x80, 1}, {0x09, 0}}},
    {24, 24, {.lineRegister = 0, .tdiMask = 0x80, .tdoMask = 0x40, .tmsMask = 0x20, .tckMask = 0x10},
     {{0x00, 9}, {0x00, 8}, {0x00, 7}, {0x04, 6}, {0x00, 5}, {0x02, 4}, {0x00, 3}, {0x40, 2}, {0x40, 1}, {0x00, 0}}},
};
// clang-format on

constexpr std::int16_t kInstructionBits = 16;

// Instructions of the debug port: the upper four bits steer the core, the rest selects a register.
constexpr std::int32_t kResetCore = 0x2FFF;
constexpr std::int32_t kHaltAndIdentify = 0x1004;
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
  if (found == std::end(kAssignments)) return;
  lines_.jtag = found->lines;
  if (option == kOptionOfSetB) lines_.flash = kSetB;
  WriteLatches(run_, found->latches);
  run_.io.DelayMs(100);
}

/// Resets and halts the core, and sets up the debug register that holds the flash open. What most
/// of these instructions do is not known, so they stand as numbers.
void FlashRegisterAccess::OpenFlash() {
  constexpr std::int32_t kDebugValues[] = {0x8400, 0xB731, 0x840F, 0x8A83, 0x8400};
  constexpr std::int32_t kSignExtended = ~0xFFFF;
  constexpr std::int32_t kCoreStart = 65000;  // µs
  resetTap();
  Select({0x1801, 0x1804});
  run_.io.QueueDelay(kCoreStart);
  Select({0x2804, 0x2004, 0x1004, 0x4004, 0x2FFF, 0x30C1});
  for (const std::int32_t value : kDebugValues) {
    writeFlashReg(kDebugRegister, value | kSignExtended, kDebugBits);
  }
  Select({0x1004, 0x3084});
  FlushAndWait();
}

std::int32_t FlashRegisterAccess::ReadIdentification() {
  Select({kHaltAndIdentify});
  const std::int32_t digest = tap_.ReadIdentification();
  FlushAndWait();
  return digest;
}

void FlashRegisterAccess::enterFlashAccess() {
  Select({kResetCore, kHaltAndIdentify});
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
