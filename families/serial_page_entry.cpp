#include "families/serial_page_entry.h"

#include "families/serial_lines.h"

namespace fliglaf {
namespace {

using namespace serial;

constexpr std::uint8_t kEnable1 = 0xAC;
constexpr std::uint8_t kEnable2 = 0x53;  ///< comes back while the third byte is sent

/// Variants that have a mode of their own; for others the packet goes out with its first two bytes
/// as they are.
void SendMode(Run& run) {
  switch (run.vars.quorinwoption[0]) {
    case 14:
      return run.SendPacket({0x30, 0x03}, kLongPacket);
    case 15:
      return run.SendPacket({0x30, 0x01}, kLongPacket);
    default:
      return run.SendPacket({}, kLongPacket);
  }
}

bool EnableEchoed(Run& run) {
  run.io.WriteLatch(kResetLow, kResetLatch);
  run.io.WriteLatch(kResetHigh, kResetLatch);
  run.io.WriteLatch(kResetLow, kResetLatch);
  run.io.DelayMs(200);
  Send(run, {kEnable1, kEnable2});
  return Receive(run) == kEnable2;
}

}  // namespace

void enterSerialPage(Run& run) {
  SendMode(run);
  SetUpLines(run, kResetHigh);
  run.io.DelayMs(200);
  ConfigureShifter(run, kShortShifter);
  QueueCapture(run);  // one byte that nobody looks at
  run.io.FlushQueue();
  int attempts = 0;
  bool echoed = false;
  do {
    echoed = EnableEchoed(run);
  } while (!echoed && ++attempts < run.Retries());
  Send(run, {0x00});
}

}  // namespace fliglaf
