#include "families/read_pass.h"

#include <limits>
#include <stdexcept>
#include <string>

#include "usb/components/bits.h"
#include "usb/request/bulk_read.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

/// Element of quorinubuflg.
constexpr int kLostBlocks = 1;

}  // namespace

void OpenPass(Run& run, std::uint8_t kind) { run.SendPacket({0x0D, kind}, kLongPacket); }

void SendClosingPacket(Run& run) { run.SendPacket({0x0D, 0x00}, kLongPacket); }

void ClosePass(Run& run) {
  run.io.FlushQueue();
  run.io.DelayMs(100);
  SendClosingPacket(run);
}

bool GoesOn(Run& run, std::int64_t address) {
  ProgressAt(run, address);
  return !run.stopped();
}

void ArmCapture(Run& run) { run.SendPacket({0x0A, 0x10, 0x40}, kShortPacket); }

bool FetchCaptures(Run& run, std::int32_t count, std::int32_t wait_ms) {
  run.io.FlushQueue();
  run.io.DelayMs(wait_ms);
  ArmCapture(run);
  return BulkRead(run, bulk_mode::kCaptures, 0, count) == 0;
}

bool FetchOrCountAsLost(Run& run, std::int32_t count, std::int32_t wait_ms) {
  if (FetchCaptures(run, count, wait_ms)) return true;
  if (run.stopped()) return false;
  std::int16_t& lost = run.vars.quorinubuflg[kLostBlocks];
  if (lost < std::numeric_limits<std::int16_t>::max()) ++lost;
  return true;
}

bool HandOver(Run& run, std::int32_t last, std::int32_t image, std::int16_t mode, BitOrder order) {
  for (std::int32_t i = 0; i <= last; ++i) {
    const std::int32_t captured = run.vars.quorinibuf2[i];
    const std::int32_t byte = order == BitOrder::kLowFirst ? reverseBits(captured, 8) : captured;
    if (run.io.BlockTransfer(byte, image + i, mode) == 1) return false;
  }
  return true;
}

bool FetchAndHandOver(Run& run, std::int32_t count, std::int64_t bytes, std::int64_t image,
                      std::int16_t mode, BitOrder order) {
  if (!FetchOrCountAsLost(run, count)) return false;
  return HandOver(run, static_cast<std::int32_t>(bytes - 1), static_cast<std::int32_t>(image), mode,
                  order);
}

void RequireOneBlock(std::int64_t bytes) {
  if (bytes <= kBlockBytes) return;
  throw std::length_error("A memory of " + std::to_string(bytes) + " bytes cannot be read; " +
                          std::to_string(kBlockBytes) + " bytes at most are read in this family");
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

void VerifyPoweredAnew(Run& run, void (*read_pass)(Run&, std::int16_t)) {
  SendClosingPacket(run);
  run.io.EndRun();
  run.power_up();  // a target that is not there fails the verify
  VerifyProgrammed(run, read_pass);
}

}  // namespace fliglaf
