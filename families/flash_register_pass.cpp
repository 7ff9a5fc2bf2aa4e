#include <algorithm>

#include "families/flash_register.h"
#include "families/flash_register_access.h"
#include "families/jtag_lines.h"
#include "families/read_pass.h"

namespace fliglaf {
namespace {

using namespace flash_register;

constexpr std::uint8_t kPassKind = 0x0A;

void Restart(Run& run) {
  resetTap(run);
  enterFlashAccess(run);
}

bool HandOverBlock(Run& run, std::int64_t bytes, std::int64_t image, std::int16_t mode) {
  return FetchAndHandOver(run, kBlockAndEndMark, bytes, image, mode, BitOrder::kLowFirst);
}

/// From here on the main array is read byte after byte.
void StartBlock(Run& run, std::int64_t address, std::int16_t width) {
  ArmCapture(run);
  WriteScale(run, scale::kReadBlock);
  WriteAddress(run, address, width);
  WriteControl(run, control::kReadBlock);
  StartRead(run);
}

bool ReadBlock(Run& run, std::int64_t address, std::int64_t bytes, std::int16_t width,
               std::int16_t mode) {
  StartBlock(run, address, width);
  for (std::int64_t i = 0; i < bytes; ++i) {
    CaptureByte(run);
    if (!GoesOn(run, address + i)) return false;
  }
  return HandOverBlock(run, bytes, address, mode);
}

/// The main array in blocks; the rest that makes no block, even an empty one, follows
/// `before_rest`.
bool ReadMain(Run& run, std::int16_t width, std::int16_t mode, void (*before_rest)(Run&)) {
  const std::int64_t bytes = Layout(run).main_bytes;
  const std::int64_t rest = bytes / kBlockBytes * kBlockBytes;
  for (std::int64_t block = 0; block < rest; block += kBlockBytes) {
    if (!ReadBlock(run, block, kBlockBytes, width, mode)) return false;
  }
  before_rest(run);
  return ReadBlock(run, rest, bytes - rest, width, mode);
}

/// The main array of family 9, which is one block of whole pages.
bool ReadMainPages(Run& run, std::int16_t mode) {
  const Layout layout(run);
  StartBlock(run, 0, kNarrowAddress);
  for (std::int64_t page = 0; page < layout.main_bytes; page += layout.page) {
    for (std::int64_t i = 0; i < layout.page; ++i) CaptureByte(run);
    if (!GoesOn(run, page)) return false;
  }
  return HandOverBlock(run, layout.main_bytes, 0, mode);
}

/// Where the device has its second area, and how it is told to read a byte of it.
struct SecondArea {
  std::int64_t address;
  std::int16_t width;
  std::int32_t read;
};

bool ReadSecond(Run& run, const SecondArea& area, std::int16_t mode) {
  const Layout layout(run);
  ArmCapture(run);
  enterFlashAccess(run);
  WriteScale(run, scale::kSingle);
  WriteAddress(run, area.address, area.width);
  for (std::int64_t i = 0; i < layout.second_bytes; ++i) {
    WriteControl(run, area.read);
    StartRead(run);
    CaptureByte(run);
    if (!GoesOn(run, area.address + i)) return false;
  }
  return HandOverBlock(run, layout.second_bytes, layout.second_start, mode);
}

bool ReadSecondBehindMain(Run& run, std::int16_t mode) {
  return ReadSecond(run, {Layout(run).second_start, kNarrowAddress, control::kReadByte}, mode);
}

/// A pass that reads brings the lock bytes whatever became of it.
void EndPass(Run& run, std::int16_t mode) {
  ClosePass(run);
  if (mode == check_mode::kRead) flashReadLock(run, mode);
}

void ClearLastPage(Run& run) {
  const Layout layout(run);
  for (std::int64_t i = layout.last_page(); i < layout.second_start; ++i) {
    run.vars.quorinibuffer[i] = 0;
  }
}

}  // namespace

void flashDataOp8(Run& run, std::int16_t mode) {
  Restart(run);
  OpenPass(run, kPassKind);
  static_cast<void>(ReadMain(run, kNarrowAddress, mode, Restart) &&
                    ReadSecondBehindMain(run, mode));
  EndPass(run, mode);
}

void flashDataOp9(Run& run, std::int16_t mode) {
  Restart(run);
  OpenPass(run, kPassKind);
  if (ReadMainPages(run, mode)) {
    if (mode == check_mode::kRead) ClearLastPage(run);
    static_cast<void>(ReadSecondBehindMain(run, mode));
  }
  EndPass(run, mode);
}

void flashDataOp10(Run& run, std::int16_t mode) {
  const std::int16_t width = run.flash.addressWidth;
  OpenPass(run, kPassKind);
  Restart(run);
  static_cast<void>(ReadMain(run, width, mode, [](Run&) {}) &&
                    ReadSecond(run, {0, width, control::kReadByte | control::kSecondArea}, mode));
  EndPass(run, mode);
}

}  // namespace fliglaf
