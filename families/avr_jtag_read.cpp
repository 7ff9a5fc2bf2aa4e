#include <array>
#include <span>

#include "families/avr_jtag.h"
#include "families/avr_jtag_steps.h"
#include "families/jtag_lines.h"
#include "families/read_pass.h"
#include "usb/components/bits.h"

namespace fliglaf {
namespace {

using namespace avr_jtag;

constexpr std::int64_t kBlockWords = kBlockBytes / 2;
/// The configuration needs longer until the programmer has it: ms.
constexpr std::int32_t kConfigWait = 1000;

void QueueCapture(Run& run) { run.io.QueueRegisterWrite(1, reg::kCapture); }

/// A page's bytes one at a time: each is captured anew on the way through Update-DR.
void CaptureByteWise(Run& run, std::int64_t words) {
  for (std::int64_t byte = 0; byte < 2 * words; ++byte) {
    QueueCapture(run);
    setTms(run, 1);
    pulseTckN(run, 3);
    setTms(run, 0);
    pulseTckN(run, 2);
  }
}

/// A page's bytes in one stream, behind eight clocks for a byte that means nothing.
void CaptureStream(Run& run, std::int64_t words) {
  pulseTckN(run, 8);
  for (std::int64_t byte = 0; byte < 2 * words; ++byte) {
    run.io.QueueDelay(2);
    QueueCapture(run);
  }
}

void CapturePage(Run& run, std::int64_t page, Variant variant) {
  ScanAddressHigh(run, page);
  ScanAddressLow(run, page);
  Select(run, Instruction::kProgPageRead);
  WalkToShiftDr(run);
  const auto capture = variant == Variant::kByteRegister ? CaptureByteWise : CaptureStream;
  capture(run, PageWords(run));
  setTms(run, 1);
  pulseTckN(run, 2);
  setTms(run, 0);
  pulseTck(run);
  Select(run, Instruction::kProgCommands);
}

bool ReadFlash(Run& run, std::int16_t mode, Variant variant) {
  setTms(run, 0);
  pulseTck(run);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterFlashRead});
  const std::int64_t words = FlashWords(run);
  for (std::int64_t block = 0; block < words; block += kBlockWords) {
    ArmCapture(run);
    for (std::int64_t word = 0; word < kBlockWords; word += PageWords(run)) {
      CapturePage(run, block | word, variant);
      ProgressAt(run, block | word);
    }
    if (!FetchAndHandOver(run, kBlockAndEndMark, kBlockBytes, 2 * block, mode,
                          BitOrder::kLowFirst)) {
      return false;
    }
  }
  return true;
}

bool ReadEeprom(Run& run, std::int16_t mode) {
  ArmCapture(run);
  run.io.QueueDelay(100);
  setTms(run, 0);
  pulseTck(run);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterEepromRead});
  const std::int64_t bytes = EepromBytes(run);
  for (std::int64_t address = 0; address < bytes; ++address) {
    ScanAddressHigh(run, address);
    ScanAddressLow(run, address);
    Scan(run, {0x3300 | static_cast<std::int32_t>(address & 0xFF), 0x3200});
    scanDrCapture(run, 0x3300, 15);
    ProgressAt(run, address);
  }
  return FetchAndHandOver(run, kBlockAndEndMark, bytes, 2 * FlashWords(run), mode,
                          BitOrder::kLowFirst);
}

void Capture(Run& run, std::initializer_list<std::int32_t> commands) {
  for (const std::int32_t command : commands) scanDrCapture(run, command, 15);
}

void CaptureFuses(Run& run, const FuseBytes& fuses) {
  if (fuses.extended) {
    Scan(run, {0x3A00});
    Capture(run, {0x3E00});
  } else {
    Scan(run, {0x3E00});
  }
  Capture(run, {0x3200, 0x3600, 0x3700});
}

/// The configuration bytes in the order in which they are captured.
constexpr std::array kCaptureOrder{config_byte::kFuseExtended, config_byte::kFuseHigh,
                                   config_byte::kFuseLow, config_byte::kLock,
                                   config_byte::kCalibration};

void HandConfigOver(Run& run, std::int16_t mode, std::span<const int> places) {
  std::int64_t captured = 0;
  for (const int place : places) {
    const std::int32_t byte = reverseBits(run.vars.quorinibuf2[captured++], 8);
    const auto image = static_cast<std::int32_t>(ConfigStart(run) + place);
    if (run.io.BlockTransfer(byte, image, mode) == 1) return;
  }
}

void ReadConfig(Run& run, std::int16_t mode) {
  ArmCapture(run);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterConfigRead});
  const std::optional<FuseBytes> fuses = FusesOf(run);
  if (fuses) CaptureFuses(run, *fuses);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterSignatureRead, command::kAddressLow, 0x3600});
  Capture(run, {0x3700});
  if (!FetchOrCountAsLost(run, kBlockAndEndMark, kConfigWait)) return;
  if (fuses) HandConfigOver(run, mode, std::span(kCaptureOrder).subspan(fuses->extended ? 0 : 1));
}

void ReadPass(Run& run, std::int16_t mode, Variant variant) {
  RequireImage(run);
  OpenPass(run, kPassKind);
  if (ReadFlash(run, mode, variant) && ReadEeprom(run, mode) && mode == check_mode::kRead) {
    ReadConfig(run, mode);
  }
  ClosePass(run);
}

}  // namespace

void jtagAReadPass(Run& run, std::int16_t mode) { ReadPass(run, mode, Variant::kByteRegister); }

void jtagBReadPass(Run& run, std::int16_t mode) { ReadPass(run, mode, Variant::kLongRegister); }

}  // namespace fliglaf
