#include "families/jtag_lines.h"

#include <algorithm>
#include <array>

#include "families/serial_lines.h"
#include "usb/components/bits.h"

namespace fliglaf {
namespace {

bool WalksInSoftware(const Run& run) {
  const std::uint8_t family = run.vars.quorinprgmode[0];
  return family >= 4 && family <= 7;
}

bool WalksInHardware(const Run& run) {
  const std::uint8_t family = run.vars.quorinprgmode[0];
  return family >= 8 && family <= 11;
}

void Queue(Run& run, std::int32_t value, std::uint8_t command) {
  run.io.QueueRegisterWrite(value, command);
}

void QueueLevels(Run& run) { Queue(run, run.jtag.levels(), run.jtag.lineRegister); }

std::uint8_t LevelOf(std::uint8_t bit, std::uint8_t mask) {
  return static_cast<std::uint8_t>(bit * mask);
}

std::uint8_t LowBit(std::uint32_t value) { return static_cast<std::uint8_t>(value & 1); }

/// A byte as the shifter takes it, which sends bit 7 first.
std::int32_t Reversed(std::uint32_t value) {
  return reverseBits(static_cast<std::int32_t>(value & 0xFF), 8);
}

/// The last bit of a shift, TMS high.
void LastBit(Run& run, std::uint32_t value) {
  setTdi(run, LowBit(value));
  setTms(run, 1);
  pulseTck(run);
}

/// How families 4 to 7 shift a number of bits: a byte, six bits, single ones, then the last.
struct SoftwareShift {
  std::int16_t bits;
  bool byte;
  bool six;
  int single;
};
constexpr std::array kSoftwareShifts{
    SoftwareShift{4, false, false, 3},
    SoftwareShift{8, false, true, 1},
    SoftwareShift{15, true, true, 0},
    SoftwareShift{16, true, true, 1},
};

void ShiftInSoftware(Run& run, std::uint32_t value, std::int16_t n) {
  const auto found = std::ranges::find(kSoftwareShifts, n, &SoftwareShift::bits);
  const SoftwareShift shift = found != kSoftwareShifts.end() ? *found : SoftwareShift{};
  if (shift.byte) {
    Queue(run, Reversed(value), reg::kShiftOut);
    value >>= 8;
  }
  if (shift.six) {
    Queue(run, static_cast<std::int32_t>(value & 0x3F), reg::kShiftLow);
    value >>= 6;
  }
  for (int i = 0; i < shift.single; ++i, value >>= 1) {
    setTdi(run, LowBit(value));
    pulseTck(run);
  }
  LastBit(run, value);
  setTdi(run, 0);
}

/// How families 8 to 11 shift: whole bytes, then the command that ends in TMS high.
struct HardwareShift {
  std::int16_t bits;
  int bytes;
  std::uint8_t last;
};
constexpr std::array kHardwareShifts{
    HardwareShift{2, 0, reg::kLastTwoBits},  HardwareShift{10, 1, reg::kLastTwoBits},
    HardwareShift{16, 1, reg::kLastByte},    HardwareShift{17, 2, reg::kLastBit},
    HardwareShift{18, 2, reg::kLastTwoBits}, HardwareShift{32, 3, reg::kLastByte},
};

void ShiftNineteen(Run& run, std::uint32_t value) {
  for (int i = 0; i < 3; ++i, value >>= 6) {
    Queue(run, static_cast<std::int32_t>(value & 0x3F), reg::kShiftLow);
  }
  Queue(run, Reversed(value & 1), reg::kLastBit);
}

void ShiftInHardware(Run& run, std::uint32_t value, std::int16_t n) {
  if (n == 1) return LastBit(run, value);
  if (n == 19) return ShiftNineteen(run, value);
  const auto shift = std::ranges::find(kHardwareShifts, n, &HardwareShift::bits);
  if (shift == kHardwareShifts.end()) return;
  for (int i = 0; i < shift->bytes; ++i, value >>= 8) Queue(run, Reversed(value), reg::kShiftOut);
  Queue(run, Reversed(value), shift->last);
}

std::int32_t CaptureAtOnce(Run& run) {
  run.io.WriteRegister(1, reg::kCapture);
  return reverseBits(run.io.ReadRegister(reg::kCaptured), 8);
}

std::int32_t CaptureInSoftware(Run& run, std::uint32_t value, std::int16_t n) {
  const auto six = static_cast<std::int32_t>(value >> 8 & 0x3F);
  std::int32_t captured = 0;
  if (n == 15) {
    Queue(run, 1, reg::kCapture);
    Queue(run, six, reg::kShiftLow);
  } else if (n == -15) {
    run.io.FlushQueue();
    captured = CaptureAtOnce(run);
    run.io.WriteRegister(six, reg::kShiftLow);
  } else {
    return 0;
  }
  LastBit(run, value >> 14);
  setTdi(run, 0);
  return captured;
}

/// The 32-bit identification code, of which a signature needs less: the low byte of the
/// manufacturer, the low byte of the part number, the version.
std::int32_t CaptureIdentification(Run& run) {
  run.io.FlushQueue();
  run.io.WriteLatch(run.jtag.tdoMask, static_cast<std::uint8_t>(run.jtag.lineRegister + 1));
  run.io.DelayMs(100);
  std::array<std::int32_t, 4> bytes{};
  for (std::int32_t& byte : bytes) byte = CaptureAtOnce(run);
  setTms(run, 1);
  pulseTck(run);
  const std::int32_t low = bytes[0] + 256 * bytes[1];
  return (low >> 1 & 0xFF) | (low >> 12 & 0x0F) << 8 | (bytes[2] & 0x0F) << 12 |
         (bytes[3] >> 4 & 0x0F) << 16;
}

std::int32_t CaptureInHardware(Run& run, std::uint32_t value, std::int16_t n) {
  switch (n) {
    case -32:
      return CaptureIdentification(run);
    case 1:
      LastBit(run, value);
      return 0;
    case 11:
      pulseTckN(run, 3);
      Queue(run, 1, reg::kCapture);
      setTms(run, 1);
      pulseTck(run);
      setTdi(run, 0);
      return 0;
    default:
      run.io.DelayMs(100);
      return 0;
  }
}

/// From Run-Test/Idle to Shift-DR, `shift`, and back.
template <class Shift>
auto ScanDr(Run& run, const Shift& shift) {
  if (!WalksInSoftware(run)) {
    Queue(run, 0, reg::kTmsHighLowLow);
    const auto captured = shift();
    Queue(run, 0, reg::kTmsHighLow);
    return captured;
  }
  setTms(run, 1);
  pulseTck(run);
  setTms(run, 0);
  pulseTckN(run, 2);
  const auto captured = shift();
  setTms(run, 1);
  pulseTck(run);
  setTms(run, 0);
  pulseTck(run);
  return captured;
}

}  // namespace

void ConfigureJtagShifter(Run& run) {
  const JtagLines& lines = run.jtag;
  const std::array<std::uint8_t, 12> bytes{lines.lineRegister,
                                           8,
                                           lines.tckMask,
                                           lines.fixed(),
                                           lines.tdoMask,
                                           lines.tdiMask,
                                           0,
                                           6,
                                           8,
                                           lines.lineRegister,
                                           lines.fixed(),
                                           lines.tmsMask};
  serial::ConfigureShifter(run, bytes);
}

void setTck(Run& run, std::uint8_t bit) {
  run.jtag.tckState = LevelOf(bit, run.jtag.tckMask);
  QueueLevels(run);
}

void setTms(Run& run, std::uint8_t bit) {
  run.jtag.tmsState = LevelOf(bit, run.jtag.tmsMask);
  QueueLevels(run);
}

void setTdi(Run& run, std::uint8_t bit) {
  run.jtag.tdiState = LevelOf(bit, run.jtag.tdiMask);
  QueueLevels(run);
}

void pulseTck(Run& run) { pulseTckN(run, 1); }

void pulseTckN(Run& run, std::int16_t n) {
  if (n < 1) return;
  JtagLines& lines = run.jtag;
  lines.tckState = 0;
  const std::uint8_t low = lines.levels();
  const auto high = static_cast<std::uint8_t>(low | lines.tckMask);
  const std::uint8_t port = lines.lineRegister;
  Programmer& io = run.io;
  for (std::int16_t i = 0; i < n; ++i) {
    io.QueueRegisterWrite(high, port);
    io.QueueRegisterWrite(low, port);
  }
}

void shiftBits(Run& run, std::int32_t value, std::int16_t n) {
  const auto bits = static_cast<std::uint32_t>(value);
  if (WalksInSoftware(run)) {
    ShiftInSoftware(run, bits, n);
  } else if (WalksInHardware(run)) {
    ShiftInHardware(run, bits, n);
  }
}

std::int32_t shiftBitsCapture(Run& run, std::int32_t value, std::int16_t n) {
  const auto bits = static_cast<std::uint32_t>(value);
  return WalksInSoftware(run) ? CaptureInSoftware(run, bits, n) : CaptureInHardware(run, bits, n);
}

void scanDr(Run& run, std::int32_t value, std::int16_t n) {
  ScanDr(run, [&] {
    shiftBits(run, value, n);
    return 0;
  });
}

std::int32_t scanDrCapture(Run& run, std::int32_t value, std::int16_t n) {
  return ScanDr(run, [&] { return shiftBitsCapture(run, value, n); });
}

void scanIr(Run& run, std::int32_t value, std::int16_t n) {
  if (!WalksInSoftware(run)) {
    setTms(run, 1);
    pulseTck(run);
    Queue(run, 0, reg::kTmsHighLow);
    setTms(run, 0);
    pulseTck(run);
    shiftBits(run, value, n);
    return Queue(run, 0, reg::kTmsHighLow);
  }
  setTms(run, 1);
  pulseTckN(run, 2);
  setTms(run, 0);
  pulseTckN(run, 2);
  shiftBits(run, value, n);
  setTms(run, 1);
  pulseTck(run);
  setTms(run, 0);
  pulseTck(run);
}

void resetTap(Run& run) {
  setTms(run, 1);
  pulseTckN(run, 5);
  setTms(run, 0);
  pulseTckN(run, 2);
}

}  // namespace fliglaf
