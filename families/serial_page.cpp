#include "families/serial_page.h"

#include <algorithm>

#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace serial_page;

constexpr std::uint8_t kChipErase = 0x80;
constexpr std::uint8_t kReadFlashLow = 0x20;
constexpr std::uint8_t kReadFlashHigh = 0x28;
constexpr std::uint8_t kLoadPageLow = 0x40;
constexpr std::uint8_t kLoadPageHigh = 0x48;
constexpr std::uint8_t kWritePage = 0x4C;
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kWriteEeprom = 0xC0;

// Pauses, in units of the write time.
constexpr std::int32_t kPageOrConfigWrite = 1;
constexpr std::int32_t kErase = 2;

}  // namespace

SerialPage::SerialPage(Run& request, const Variant& variant)
    : Family(request),
      lines_(request),
      variant_(variant),
      image_(LayoutOf(variant.code, SizesOf(vars))) {}

void SerialPage::Enter() {
  SelectMode();
  lines_.SetUp(ResetLevel::kHigh);
  io.DelayMs(200);
  lines_.ConfigureShifter(ShifterLength::kShort);
  lines_.QueueCapture();  // this byte is discarded
  io.FlushQueue();
  int attempts = 0;
  while (!EnableEchoed() && ++attempts < run.Retries()) {
  }
  lines_.Send({0x00});  // the fourth byte of the programming enable
}

/// Parts with another option leave the first two bytes of the packet as they are.
void SerialPage::SelectMode() {
  switch (vars.quorinwoption[0]) {
    case 14:
      return run.SelectLineMode(LineMode::kAlternate);
    case 15:
      return run.SelectLineMode(LineMode::kStandard);
    default:
      return run.SendPacket({}, kLongPacket);
  }
}

/// A reset pulse and the first bytes of the programming enable; the second comes back while the
/// third is sent.
bool SerialPage::EnableEchoed() {
  lines_.SetReset(ResetLevel::kLow);
  lines_.SetReset(ResetLevel::kHigh);
  lines_.SetReset(ResetLevel::kLow);
  io.DelayMs(200);
  lines_.SendControl({SerialLines::kEnable});
  return lines_.Receive() == SerialLines::kEnable;
}

void SerialPage::DataOp(CheckMode mode) {
  RequireReadable();
  OpenPass(PassKind::kBlocks);
  if (ReadFlash(mode) && ReadEeprom(mode) && mode == CheckMode::kRead) {
    Config(ConfigDirection::kOutput);
  }
  ClosePass();
}

void SerialPage::WriteAndVerify() {
  RequireReadable();
  if (!WriteFlash()) return;
  io.FlushQueue();
  io.DelayMs(100);
  if (!WriteEeprom()) return;
  io.FlushQueue();
  io.DelayMs(100);
  VerifyProgrammed();
}

void SerialPage::Erase() {
  RequireReadable();
  lines_.SendControl({kChipErase, 0x00, 0x00});
  io.ShortDelay(run.WriteTime(kErase));
  NoteBlankCheck(run);
  ReadPass(CheckMode::kBlankCheck);
}

std::uint8_t& SerialPage::ImageByte(ConfigByte byte) {
  return vars.quorinibuffer[image_.config_start + static_cast<std::uint8_t>(byte)];
}

void SerialPage::WriteConfig(std::span<const ConfigWrite> bytes) {
  for (const ConfigWrite& row : bytes) {
    const auto value = static_cast<std::uint8_t>(ImageByte(row.byte) | row.forced);
    lines_.SendControl({row.instruction, 0x00, value});
    io.ShortDelay(run.WriteTime(kPageOrConfigWrite));
  }
}

void SerialPage::ReadConfig(std::span<const ConfigRead> bytes) {
  for (const ConfigRead& row : bytes) {
    lines_.Send({row.instruction.code, row.instruction.high, row.instruction.low});
    const std::uint8_t answer = lines_.Receive();
    ImageByte(row.byte) = answer | row.forced;
  }
}

/// Every operation ends by reading flash and EEPROM, so none begins on a memory too large for that.
void SerialPage::RequireReadable() const {
  RequireOneBlock(image_.main_bytes);
  RequireOneBlock(image_.data_bytes);
}

void SerialPage::QueueAddressed(std::uint8_t instruction, std::int64_t address) {
  lines_.QueueSend(
      {instruction, static_cast<std::uint8_t>(address >> 8), static_cast<std::uint8_t>(address)});
}

bool SerialPage::ReadFlash(CheckMode mode) {
  ArmCapture();
  for (std::int64_t word = 0; word < FlashWords(); ++word) {
    for (const std::uint8_t instruction : {kReadFlashLow, kReadFlashHigh}) {
      QueueAddressed(instruction, word);
      lines_.QueueCapture();
      if (variant_.flash_read_gap > 0) io.QueueDelay(variant_.flash_read_gap);
    }
    if (!GoesOn(word)) return false;
  }
  return FetchAndJudge({.bytes = image_.main_bytes, .image = 0}, mode);
}

bool SerialPage::ReadEeprom(CheckMode mode) {
  ArmCapture();
  for (std::int64_t address = 0; address < image_.data_bytes; ++address) {
    QueueAddressed(kReadEeprom, address);
    lines_.QueueCapture();
    if (!GoesOn(address)) return false;
  }
  return FetchAndJudge({.bytes = image_.data_bytes, .image = image_.data_start}, mode);
}

bool SerialPage::WriteFlash() {
  const std::int64_t page_words = std::max<std::int64_t>(vars.quorinpagelength[0], 1);
  for (std::int64_t page = 0; page < FlashWords(); page += page_words) {
    for (std::int64_t k = 0; k < page_words; ++k) {
      const std::int64_t word = page | k;
      for (const int half : {0, 1}) {
        lines_.QueueSend(
            {half == 0 ? kLoadPageLow : kLoadPageHigh, 0x00, static_cast<std::uint8_t>(k)});
        lines_.QueueSend({vars.quorinibuffer[2 * word + half]});
      }
      if (!GoesOn(word)) return false;
    }
    QueueAddressed(kWritePage, page);
    lines_.QueueSend({0x00});
    io.QueueDelay(run.WriteTime(kPageOrConfigWrite));
  }
  return true;
}

bool SerialPage::WriteEeprom() {
  for (std::int64_t address = 0; address < image_.data_bytes; ++address) {
    QueueAddressed(kWriteEeprom, address);
    lines_.QueueSend({vars.quorinibuffer[image_.data_start + address]});
    io.QueueDelay(run.WriteTime(variant_.eeprom_write));
    if (!GoesOn(address)) return false;
  }
  return true;
}

}  // namespace fliglaf
