#include <array>

#include "families/avr_jtag.h"
#include "families/avr_jtag_steps.h"
#include "families/jtag_lines.h"
#include "families/read_pass.h"

namespace fliglaf {
namespace {

using namespace avr_jtag;

constexpr std::int32_t kEnableSignature = 0xA370;

/// From any state of the test access port to programming mode.
void enterJtagProg(Run& run) {
  setTms(run, 1);
  pulseTckN(run, 7);
  setTms(run, 0);
  pulseTck(run);
  Select(run, Instruction::kAvrReset);
  scanDr(run, 1, 1);
  Select(run, Instruction::kProgEnable);
  scanDr(run, kEnableSignature, 16);
}

/// Reads a byte at once; how it is read has been selected.
std::uint8_t jtagReadByte(Run& run, std::int32_t address) {
  Scan(run, {command::kAddressLow | address, 0x3200});
  return static_cast<std::uint8_t>(scanDrCapture(run, 0x3300, -15));
}

}  // namespace

void enterAvrJtag(Run& run) {
  run.jtag = kJtagPort0;
  run.SendPacket({0x30, 0x01}, kLongPacket);
  run.io.WriteLatch(run.jtag.tdoMask, static_cast<std::uint8_t>(run.jtag.lineRegister + 1));
  run.io.WriteLatch(run.jtag.fixed(), run.jtag.lineRegister);
  run.io.DelayMs(100);
  ConfigureJtagShifter(run);
  enterJtagProg(run);
}

std::array<std::uint8_t, 3> avrJtagSignature(Run& run) {
  OpenPass(run, kPassKind);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterSignatureRead});
  std::array<std::uint8_t, 3> bytes{};
  std::int32_t address = 0;
  for (std::uint8_t& byte : bytes) byte = jtagReadByte(run, address++);
  run.io.FlushQueue();
  SendClosingPacket(run);
  return bytes;
}

}  // namespace fliglaf
