#include <algorithm>
#include <stdexcept>
#include <string>

#include "families/read_pass.h"
#include "families/two_wire.h"
#include "families/two_wire_frames.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace two_wire;

constexpr std::uint8_t kPassKind = 0x0A;

/// Of the interface's status.
constexpr std::int16_t kByteReady = 0x01;
constexpr std::int16_t kNotTaken = 0x02;

constexpr std::array<std::int16_t, 3> kEraseKey{0xDE, 0xAD, 0xA5};

/// The main array lies below a page that is not programmed; its last byte is the lock byte.
struct Layout {
  /// Throws RangeError for a main array that there cannot be, or that the data buffer cannot hold.
  explicit Layout(const Run& run) : page(run.vars.quorinpagelength[0]) {
    const std::int64_t bytes = std::int64_t{run.vars.quorintlength[0]} - page;
    if (bytes < 0) throw RangeError();
    RequireData(run, 0, bytes - 1);
    main_bytes = static_cast<std::int32_t>(bytes);
  }

  std::int32_t page;
  std::int32_t main_bytes = 0;

  [[nodiscard]] std::int32_t lock() const { return main_bytes - 1; }
  /// Half a page, as the passes that read round it: to the nearest even number.
  [[nodiscard]] std::int32_t chunk_to_read() const {
    const std::int32_t half = page / 2;
    return std::max(page % 2 != 0 && half % 2 != 0 ? half + 1 : half, 1);
  }
  [[nodiscard]] std::int32_t chunk_to_write() const { return std::max(page / 2, 1); }
};

/// Every operation on the main array ends in a pass over it; none begins where that cannot be.
/// Throws RangeError for a range beyond the 16 bits that addresses have, std::length_error for a
/// device without pages.
void RequireReadable(const Run& run) {
  constexpr std::int32_t kLastAddress = 0xFFFF;
  const Layout layout(run);
  if (layout.main_bytes - 1 > kLastAddress || run.RangeEnd > kLastAddress) throw RangeError();
  if (layout.page < 1) {
    throw std::length_error("A page of " + std::to_string(layout.page) +
                            " bytes cannot be read; right is the page size of the device");
  }
}

bool GoesOnAt(Run& run, std::int64_t address) {
  run.Progress(address, Layout(run).main_bytes);
  return !run.stopped();
}

bool ReadChunk(Run& run, std::int32_t address, std::int32_t count) {
  readFlashBlock(run, address, count, FrameMode::kUsb);
  return GoesOnAt(run, address);
}

/// One block of what is fetched at a time. The chunk that closes the last block leaves the lock
/// byte out.
bool ReadBlock(Run& run, std::int32_t block, bool last, std::int32_t first, std::int16_t mode) {
  const Layout layout(run);
  const std::int32_t chunk = layout.chunk_to_read();
  const auto start = static_cast<std::int32_t>(block * kBlockBytes);
  const auto end =
      static_cast<std::int32_t>(last ? (layout.lock() - chunk) % kBlockBytes : kBlockBytes - 1);
  std::int32_t offset = first;
  for (; end >= 0 && offset <= end; offset += chunk) {
    if (!ReadChunk(run, start + offset, chunk)) return false;
  }
  if (last && !ReadChunk(run, start + offset, chunk - 1)) return false;
  const std::int32_t bytes = last ? (layout.lock() - 1) % kBlockBytes + 1 : kBlockBytes;
  return FetchAndHandOver(run, kBlockAndEndMark, bytes - first, start + first, mode,
                          BitOrder::kLowFirst);
}

bool ReadMain(Run& run, std::int16_t mode) {
  const std::int32_t first_block = run.RangeStart / kBlockBytes;
  const std::int32_t last_block = run.RangeEnd / kBlockBytes;
  for (std::int32_t block = 0; block <= last_block; ++block) {
    const std::int32_t first = block == first_block ? run.RangeStart % kBlockBytes : 0;
    if (!ReadBlock(run, block, block == last_block, first, mode)) return false;
    run.io.FlushQueue();
    run.io.DelayMs(100);
  }
  return true;
}

void ReadLock(Run& run) {
  const std::int32_t lock = Layout(run).lock();
  run.vars.quorinibuffer[lock] =
      static_cast<std::uint8_t>(readFlashBlock(run, lock, 1, FrameMode::kCom));
}

bool WriteMain(Run& run) {
  const Layout layout(run);
  const std::int32_t chunk = layout.chunk_to_write();
  for (std::int32_t address = 0; address <= layout.lock() - chunk; address += chunk) {
    writeFlashBlock(run, address, chunk, FrameMode::kUsb);
    if (!GoesOnAt(run, address)) return false;
  }
  writeFlashBlock(run, layout.main_bytes - chunk, chunk - 1, FrameMode::kUsb);
  return true;
}

/// Reads the status until `bit` of it is as wanted, Retries() times more at most.
void PollStatus(Run& run, std::int16_t bit, bool set) {
  for (std::int32_t poll = 0; poll <= run.Retries(); ++poll) {
    if (((readAddressFrame(run, FrameMode::kCom) & bit) != 0) == set) return;
  }
}

void EraseDevice(Run& run) {
  if (StartCommand(run, command::kDeviceErase) != kAccepted) return;
  for (const std::int16_t key : kEraseKey) {
    writeDataFrame(run, key, kDataWait, FrameMode::kCom);
    PollStatus(run, kNotTaken, false);
  }
  PollStatus(run, kByteReady, true);
  if (readDataFrame(run, kDataWait, FrameMode::kCom) == kAccepted) return;
  run.desktop.MsgBox(platform::box_style::kOkOnly, u"Test Mode", u"Device Erase Error");
}

}  // namespace

std::array<std::uint8_t, 3> fam12Signature(Run& run) {
  initFlashInterface(run);
  std::array<std::uint8_t, 3> bytes{};
  for (const std::int16_t address : {interface_register::kDevice, interface_register::kRevision}) {
    writeAddressFrame(run, address);
    run.io.FlushQueue();
    run.io.DelayMs(10);
    bytes[static_cast<std::size_t>(address) + 1] =
        static_cast<std::uint8_t>(readDataFrame(run, kRegisterWait, FrameMode::kCom));
  }
  return bytes;
}

void dataOp12(Run& run, std::int16_t mode) {
  RequireReadable(run);
  RequireData(run, std::min(run.RangeStart, 0), run.RangeEnd);
  OpenPass(run, kPassKind);
  ArmCapture(run);
  if (ReadMain(run, mode) && mode == check_mode::kRead) ReadLock(run);
  ClosePass(run);
}

void program12(Run& run) {
  RequireReadable(run);
  static_cast<void>(WriteMain(run));
  run.io.FlushQueue();
  run.io.DelayMs(100);
  VerifyProgrammed(run, dataOp12);
}

void erase12(Run& run) {
  RequireReadable(run);
  EraseDevice(run);
  NoteBlankCheck(run);
  dataOp12(run, check_mode::kBlankCheck);
}

void writeLock12(Run& run) { writeFlashBlock(run, Layout(run).lock(), 1, FrameMode::kCom); }

}  // namespace fliglaf
