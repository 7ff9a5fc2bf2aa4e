// The four lines of JTAG devices, shifts and scans on them. Nearly all of it is queued: it reaches
// the device with the next FlushQueue.
//
// Two ways exist, by the device family. Families 4 to 7 walk the device's test access port with
// single levels of TMS and TCK, and leave whole bytes and groups of six bits to the programmer's
// shifter. Families 8 to 11 have the programmer walk, too.
#pragma once

#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

/// The lines of most JTAG devices: port 0, with the buffers of both directions enabled.
inline constexpr JtagLines kJtagPort0{.fixedBitsA = 0x80,
                                      .fixedBitsB = 0x20,
                                      .lineRegister = 0,
                                      .tdiMask = 0x01,
                                      .tdoMask = 0x02,
                                      .tmsMask = 0x04,
                                      .tckMask = 0x10};

/// Tells the programmer's shifter how to drive the lines: bytes 4 to 15 of the command buffer.
void ConfigureJtagShifter(Run& run);

// Levels of a line: 0 or 1.
void setTck(Run& run, std::uint8_t bit);
void setTms(Run& run, std::uint8_t bit);
void setTdi(Run& run, std::uint8_t bit);
void pulseTck(Run& run);
/// None for `n` below 1.
void pulseTckN(Run& run, std::int16_t n);

/// Shifts the low `n` bits of `value` into TDI, bit 0 first, TMS high with the last: from Shift-DR
/// or Shift-IR to Exit1. Counts are 1, 4, 8, 15 and 16 for families 4 to 7, and 1, 2, 10, 16, 17,
/// 18, 19 and 32 for families 8 to 11; the bytes of the latter go out whole, whatever they hold
/// above.
void shiftBits(Run& run, std::int32_t value, std::int16_t n);

/// Captures eight bits while it shifts. For families 4 to 7 the count is 15, of which the low byte
/// of `value` is left out: with 15 the byte comes with the next bulk read, with -15 it is returned,
/// first bit in bit 0. For families 8 to 11 11 clocks three times and captures for the bulk read,
/// -32 returns the digest of an identification code: manufacturer 0-7, part 8-15, version 16-19.
std::int32_t shiftBitsCapture(Run& run, std::int32_t value, std::int16_t n);

// Scans from Run-Test/Idle and back.
void scanDr(Run& run, std::int32_t value, std::int16_t n);
void scanIr(Run& run, std::int32_t value, std::int16_t n);
std::int32_t scanDrCapture(Run& run, std::int32_t value, std::int16_t n);

/// From any state to Run-Test/Idle.
void resetTap(Run& run);

}  // namespace fliglaf
