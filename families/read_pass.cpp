#include "families/read_pass.h"

#include "usb/bulk_read.h"
#include "usb/notes.h"

namespace fliglaf {

void OpenPass(Run& run, std::uint8_t kind) { run.SendPacket({0x0D, kind}, kLongPacket); }

void ClosePass(Run& run) {
  run.io.FlushQueue();
  run.io.DelayMs(100);
  run.SendPacket({0x0D, 0x00}, kLongPacket);
}

void ArmCapture(Run& run) { run.SendPacket({0x0A, 0x10, 0x40}, kShortPacket); }

bool FetchCaptures(Run& run, std::int32_t count) {
  run.io.FlushQueue();
  run.io.DelayMs(100);
  ArmCapture(run);
  return BulkRead(run, bulk_mode::kCaptures, 0, count) == 0;
}

bool HandOver(Run& run, std::int32_t last, std::int32_t image, std::int16_t mode) {
  for (std::int32_t i = 0; i <= last; ++i) {
    if (run.io.BlockTransfer(run.vars.quorinibuf2[i], image + i, mode) == 1) return false;
  }
  return true;
}

void VerifyProgrammed(Run& run, void (*read_pass)(Run&, std::int16_t)) {
  if (run.vars.quorinwlverifyvcc[0] == 0) {
    prgnote1(run, 0);
    return read_pass(run, check_mode::kVerify);
  }
  prgnote1(run, 1);
  read_pass(run, check_mode::kVerify);
  if (run.outcome() != result::kSuccess) return;
  prgnote1(run, 2);
  read_pass(run, check_mode::kVerify);
}

}  // namespace fliglaf
