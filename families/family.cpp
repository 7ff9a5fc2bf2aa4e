#include "families/family.h"

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

void Family::OpenPass(PassKind kind) {
  run.SendPacket({0x0D, static_cast<std::uint8_t>(kind)}, kLongPacket);
}

void Family::SendClosingPacket() { run.SendPacket({0x0D, 0x00}, kLongPacket); }

void Family::ClosePass() {
  io.FlushQueue();
  io.DelayMs(100);
  SendClosingPacket();
}

bool Family::GoesOn(std::int64_t address) {
  ProgressAt(address);
  return !run.stopped();
}

void Family::ArmCapture() { run.SendPacket({0x0A, 0x10, 0x40}, kShortPacket); }

bool Family::FetchCaptures(std::int32_t count, std::int32_t wait_ms) {
  io.FlushQueue();
  io.DelayMs(wait_ms);
  ArmCapture();
  return BulkRead(run, bulk_mode::kCaptures, 0, count) == 0;
}

bool Family::FetchOrCountAsLost(std::int32_t count, std::int32_t wait_ms) {
  if (FetchCaptures(count, wait_ms)) return true;
  if (run.stopped()) return false;
  std::int16_t& lost = vars.quorinubuflg[kLostBlocks];
  if (lost < std::numeric_limits<std::int16_t>::max()) ++lost;
  return true;
}

bool Family::HandOver(const Block& block, CheckMode mode) {
  const auto image = static_cast<std::int32_t>(block.image);
  for (std::int32_t i = 0; i < block.bytes; ++i) {
    const std::int32_t captured = vars.quorinibuf2[i];
    const std::int32_t byte =
        block.order == BitOrder::kLowFirst ? reverseBits(captured, 8) : captured;
    if (io.BlockTransfer(byte, image + i, static_cast<std::int32_t>(mode)) == 1) return false;
  }
  return true;
}

bool Family::FetchAndJudge(const Block& block, CheckMode mode) {
  return FetchOrCountAsLost(block.count) && HandOver(block, mode);
}

void Family::VerifyProgrammed() {
  if (vars.quorinwlverifyvcc[0] == 0) {
    prgnote1(run, 0);
    return ReadPass(CheckMode::kVerify);
  }
  prgnote1(run, 1);
  ReadPass(CheckMode::kVerify);
  if (run.outcome() != result::kSuccess) return;
  prgnote1(run, 2);
  ReadPass(CheckMode::kVerify);
}

void Family::VerifyAfterPowerUp() {
  SendClosingPacket();
  io.EndRun();
  run.power_up();  // a target that is not there fails the verify
  VerifyProgrammed();
}

void Family::RequireOneBlock(std::int64_t bytes) {
  if (bytes <= kBlockBytes) return;
  throw std::length_error("A memory of " + std::to_string(bytes) + " bytes cannot be read; " +
                          std::to_string(kBlockBytes) + " bytes at most are read in this family");
}

}  // namespace fliglaf
