#include "families/flash_register.h"

#include <algorithm>

#include "families/flash_register_access.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using Area = FlashRegisterAccess::Area;
using Command = FlashRegisterAccess::Command;
using Scale = FlashRegisterAccess::Scale;

/// What the data register must hold for an erase.
constexpr std::int32_t kEraseKey = 0xA5;

constexpr int kLockBytes = 2;

// Pauses, in units of the write time.
constexpr std::int32_t kByteWrite = 1;
constexpr std::int32_t kPageErase = 500;
constexpr std::int32_t kLockWrite = 300;

/// What the four families share. Two lock bytes and a page lie between the main array and the
/// second area.
class FlashRegister : public Family {
 public:
  FlashRegister(Run& request, WindowLines& lines, std::uint8_t code)
      : Family(request),
        flash_(request, lines),
        sizes_(SizesOf(vars)),
        image_(LayoutOf(code, sizes_)),
        page_bytes_(std::max<std::int64_t>(sizes_.page, 1)) {}

  void Enter() override { flash_.Enter(); }
  void Code9() override { flashWriteLock(); }
  /// Manufacturer, part, version.
  Signature ReadSignature() override {
    const std::int32_t digest = flash_.ReadIdentification();
    return {static_cast<std::uint8_t>(digest), static_cast<std::uint8_t>(digest >> 8),
            static_cast<std::uint8_t>(digest >> 16)};
  }

 protected:
  /// Reads the two lock bytes into the image, or checks them.
  void flashReadLock(CheckMode mode) {
    ArmCapture();
    SeekLockBytes();
    for (int k = 0; k < kLockBytes; ++k) CaptureSingle(Area::kMain);
    static_cast<void>(Judge(kLockBytes, image_.config_start, mode));  // the pass ends either way
    ClosePass();
  }

  void flashWriteLock() {
    RequireImage();
    flash_.Restart();
    SeekLockBytes();
    for (int k = 0; k < kLockBytes; ++k) {
      ProgramByte(Area::kMain, image_.config_start + k, kLockWrite);
    }
    flash_.FlushAndWait();
  }

  /// Throws RangeError for an image larger than the data buffer and than any device.
  void RequireImage() const { RequireData(run, 0, std::max(sizes_.size, image_.main_bytes) - 1); }

  void StartAccess() {
    flash_.enterFlashAccess();
    flash_.FlushAndWait();
    RequireImage();
  }

  [[nodiscard]] bool Judge(std::int64_t bytes, std::int64_t image, CheckMode mode) {
    return FetchAndJudge({.bytes = bytes, .image = image, .order = BitOrder::kLowFirst}, mode);
  }

  /// Bits of an address, except in an access to the lock bytes.
  [[nodiscard]] virtual std::int16_t AddressWidth() const { return flash_.address_width(); }
  /// Where the next access goes; the device moves on by itself.
  void Seek(Scale scale, std::int64_t address) {
    flash_.WriteScale(scale);
    flash_.WriteAddress(address, AddressWidth());
  }

  /// From here on the main array is read byte after byte.
  void StartBlock(std::int64_t address) {
    ArmCapture();
    Seek(Scale::kBlock, address);
    flash_.WriteControl(Command::kReadBlock);
    flash_.StartRead();
  }

  /// The main array in whole blocks; what remains is left to ReadRest.
  [[nodiscard]] bool ReadBlocks(CheckMode mode) {
    for (std::int64_t block = 0; block < rest_start(); block += kBlockBytes) {
      if (!ReadBlock(block, kBlockBytes, mode)) return false;
    }
    return true;
  }

  /// The last, partial block. An empty one is captured and fetched regardless.
  [[nodiscard]] bool ReadRest(CheckMode mode) {
    return ReadBlock(rest_start(), image_.main_bytes - rest_start(), mode);
  }

  /// The second area, from `address` of the device on, with a command for each byte. It comes last
  /// in a pass, so its result is not needed.
  void ReadSecond(Area area, std::int64_t address, CheckMode mode) {
    ArmCapture();
    flash_.enterFlashAccess();
    Seek(Scale::kSingle, address);
    for (std::int64_t i = 0; i < image_.data_bytes; ++i) {
      CaptureSingle(area);
      if (!GoesOn(address + i)) return;
    }
    static_cast<void>(Judge(image_.data_bytes, image_.data_start, mode));
  }

  /// A read fetches the lock bytes even after a failed pass.
  void EndPass(CheckMode mode) {
    ClosePass();
    if (mode == CheckMode::kRead) flashReadLock(mode);
  }

  void ProgramByte(Area area, std::int64_t image, std::int32_t pause) {
    flash_.WriteControl(Command::kProgram, area);
    flash_.WriteData(vars.quorinibuffer[image]);
    io.QueueDelay(run.WriteTime(pause));
  }

  /// Image bytes `first` to `end` - 1 to the same addresses of the device. False after a stop.
  [[nodiscard]] bool ProgramRange(std::int64_t first, std::int64_t end,
                                  std::int32_t pause = kByteWrite) {
    Seek(Scale::kSingle, first);
    for (std::int64_t address = first; address < end; ++address) {
      ProgramByte(Area::kMain, address, pause);
      if (!GoesOn(address)) return false;
    }
    return true;
  }

  [[nodiscard]] bool ProgramAndWait(std::int64_t first, std::int64_t end,
                                    std::int32_t pause = kByteWrite) {
    if (!ProgramRange(first, end, pause)) return false;
    flash_.FlushAndWait();
    return true;
  }

  void ErasePage(Area area, std::int64_t address, std::int32_t pause = kPageErase) {
    Seek(Scale::kSingle, address);
    flash_.WriteControl(Command::kErasePage, area);
    flash_.WriteData(kEraseKey);
    io.QueueDelay(run.WriteTime(pause));
  }

  void BlankCheck() {
    NoteBlankCheck(run);
    ReadPass(CheckMode::kBlankCheck);
  }

  FlashRegisterAccess flash_;
  const ImageSizes sizes_;
  const ImageLayout image_;
  const std::int64_t page_bytes_;

 private:
  [[nodiscard]] std::int64_t rest_start() const {
    return image_.main_bytes / kBlockBytes * kBlockBytes;
  }

  [[nodiscard]] bool ReadBlock(std::int64_t address, std::int64_t bytes, CheckMode mode) {
    StartBlock(address);
    for (std::int64_t i = 0; i < bytes; ++i) {
      flash_.CaptureByte();
      if (!GoesOn(address + i)) return false;
    }
    return Judge(bytes, address, mode);
  }

  void SeekLockBytes() {
    flash_.WriteScale(Scale::kSingle);
    flash_.WriteAddress(image_.config_start, flash_.address_width());
  }

  /// Reads without reading ahead, as the second area and the lock bytes need it.
  void CaptureSingle(Area area) {
    flash_.WriteControl(Command::kReadByte, area);
    flash_.StartRead();
    flash_.CaptureByte();
  }
};

/// Families 8 and 9, with one address space.
class FlashRegisterInOneSpace : public FlashRegister {
 public:
  using FlashRegister::FlashRegister;

 protected:
  /// Also with a register set of 17 bits.
  [[nodiscard]] std::int16_t AddressWidth() const override { return 16; }

  void ReadSecondBehindMain(CheckMode mode) { ReadSecond(Area::kMain, image_.data_start, mode); }

  /// After a stop the lock bytes are not read, but the verify still runs.
  void EndProgram(bool written) {
    if (written) flashReadLock(CheckMode::kRead);
    flash_.FlushAndWait();
    VerifyProgrammed();
  }

  /// From the page behind the last whole one down to 0.
  void EraseDown(std::int32_t pause) {
    RequireImage();
    for (std::int64_t page = sizes_.size / page_bytes_; page >= 0; --page) {
      ErasePage(Area::kMain, page * page_bytes_, pause);
    }
    flash_.FlushAndWait();
  }
};

class FlashRegister8 final : public FlashRegisterInOneSpace {
 public:
  using FlashRegisterInOneSpace::FlashRegisterInOneSpace;
  void ReadPass(CheckMode mode) override { flashDataOp8(mode); }
  void Program() override { flashProgram8(); }
  void Code8() override { flashErase8(); }

 private:
  void flashDataOp8(CheckMode mode) {
    flash_.Restart();
    OpenPass(PassKind::kBlocks);
    RequireImage();
    if (ReadBlocks(mode)) {
      flash_.Restart();
      if (ReadRest(mode)) ReadSecondBehindMain(mode);
    }
    EndPass(mode);
  }

  void flashProgram8() {
    StartAccess();
    EndProgram(ProgramAndWait(0, image_.main_bytes) &&
               ProgramAndWait(image_.data_start, sizes_.size));
  }

  void flashErase8() {
    flash_.enterFlashAccess();
    EraseDown(kPageErase);
    BlankCheck();
  }
};

class FlashRegister9 final : public FlashRegisterInOneSpace {
 public:
  using FlashRegisterInOneSpace::FlashRegisterInOneSpace;
  void ReadPass(CheckMode mode) override { flashDataOp9(mode); }
  void Program() override { flashProgram9(); }
  void Code8() override { flashErase9(); }

 private:
  static constexpr std::int32_t kLongPageErase = 600;

  void flashDataOp9(CheckMode mode) {
    flash_.Restart();
    OpenPass(PassKind::kBlocks);
    RequireImage();
    if (ReadPages(mode)) {
      if (mode == CheckMode::kRead) ClearLastPage();
      ReadSecondBehindMain(mode);
    }
    EndPass(mode);
  }

  void flashProgram9() {
    StartAccess();
    EndProgram(ProgramRange(0, image_.main_bytes) && ProgramAndWait(last_page(), sizes_.size));
  }

  void flashErase9() {
    flash_.enterFlashAccess();
    flash_.resetTap();
    flash_.FlushAndWait();
    EraseDown(kLongPageErase);
    BlankCheck();
  }

  /// The main array, which is one block of whole pages.
  [[nodiscard]] bool ReadPages(CheckMode mode) {
    StartBlock(0);
    for (std::int64_t page = 0; page < image_.main_bytes; page += page_bytes_) {
      for (std::int64_t i = 0; i < page_bytes_; ++i) flash_.CaptureByte();
      if (!GoesOn(page)) return false;
    }
    return Judge(image_.main_bytes, 0, mode);
  }

  /// The page below the second area. It is programmed but not read, so a read clears it: the image
  /// must not keep what a file had there.
  [[nodiscard]] std::int64_t last_page() const { return image_.main_bytes + kLockBytes; }
  void ClearLastPage() {
    for (std::int64_t i = last_page(); i < image_.data_start; ++i) vars.quorinibuffer[i] = 0;
  }
};

/// Families 10 and 11, with a second area that has addresses of its own.
class FlashRegister10 : public FlashRegister {
 public:
  using FlashRegister::FlashRegister;
  void ReadPass(CheckMode mode) override { flashDataOp10(mode); }
  void Program() override { flashProgram10(); }
  void Code8() override { flashErase10(); }

 private:
  void flashDataOp10(CheckMode mode) {
    OpenPass(PassKind::kBlocks);
    flash_.Restart();
    RequireImage();
    if (ReadBlocks(mode) && ReadRest(mode)) ReadSecond(Area::kSecond, 0, mode);
    EndPass(mode);
  }

  /// After a stop neither the lock bytes are read nor the verify runs.
  void flashProgram10() {
    StartAccess();
    if (ProgramAndWait(0, image_.main_bytes, 2 * kByteWrite) && ProgramSecond()) {
      flashReadLock(CheckMode::kRead);
      Verify();
    }
    flash_.FlushAndWait();
  }

  void flashErase10() {
    constexpr std::int64_t kSecondAreaPage = 0x400;
    RequireImage();
    const std::int64_t pages = sizes_.size / page_bytes_;
    const std::int64_t first = vars.quorinwltbigendbuf[0];
    flash_.enterFlashAccess();
    flash_.FlushAndWait();
    for (std::int64_t page = pages - 1; page >= 0; --page) {
      ErasePage(Area::kMain, page * page_bytes_);
      run.Progress(pages - page - first, pages - first + 1);
    }
    flash_.FlushAndWait();
    ErasePage(Area::kSecond, kSecondAreaPage);
    flash_.FlushAndWait();
    BlankCheck();
  }

  [[nodiscard]] bool ProgramSecond() {
    for (std::int64_t i = 0; i < image_.data_bytes; ++i) {
      Seek(Scale::kSingle, i);
      ProgramByte(Area::kSecond, image_.data_start + i, kByteWrite);
      if (!GoesOn(i)) return false;
    }
    return true;
  }

  void Verify() {
    if (vars.quorinwlverifyvcc[0] != 0) return VerifyAtTwoSupplies();
    flash_.FlushAndWait();
    VerifyProgrammed();
  }

  /// A failed first pass is repeated, Retries() times at most: a device that keeps failing must not
  /// hold the host for ever.
  void VerifyAtTwoSupplies() {
    for (int repeats = 0;; ++repeats) {
      flash_.FlushAndWait();
      prgnote1(run, 1);
      flashDataOp10(CheckMode::kVerify);
      if (run.outcome() == result::kSuccess) break;
      if (run.stopped() || repeats >= run.Retries()) return;
      vars.quorinprgresult[0] = result::kSuccess;
    }
    prgnote1(run, 2);
    flashDataOp10(CheckMode::kVerify);
  }
};

class FlashRegister11 final : public FlashRegister10 {
 public:
  using FlashRegister10::FlashRegister10;
  void Code9() override {}
};

}  // namespace

std::unique_ptr<Family> MakeFlashRegister8(Run& run, WindowLines& lines) {
  return std::make_unique<FlashRegister8>(run, lines, 8);
}

std::unique_ptr<Family> MakeFlashRegister9(Run& run, WindowLines& lines) {
  return std::make_unique<FlashRegister9>(run, lines, 9);
}

std::unique_ptr<Family> MakeFlashRegister10(Run& run, WindowLines& lines) {
  return std::make_unique<FlashRegister10>(run, lines, 10);
}

std::unique_ptr<Family> MakeFlashRegister11(Run& run, WindowLines& lines) {
  return std::make_unique<FlashRegister11>(run, lines, 11);
}

}  // namespace fliglaf
