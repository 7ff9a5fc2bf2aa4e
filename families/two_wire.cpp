#include "families/two_wire.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

#include "families/flash_interface.h"
#include "families/two_wire_lines.h"
#include "image_layout/rounding.h"
#include "usb/request/latches.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using Register = FlashInterface::Register;
using Command = FlashInterface::Command;

/// Of the reset pulse, in µs.
constexpr std::int32_t kResetTime = 20;

/// The adapter of this option has supply pins of its own.
constexpr std::uint8_t kOptionWithAdapter = 23;
constexpr std::uint8_t kAdapterVccPin = 0x77;
constexpr std::uint8_t kAdapterGndPins[] = {0x76, 0x13};

/// Sent after the erase command, so that no disturbed line erases a device.
constexpr std::array<std::int16_t, 3> kEraseKey{0xDE, 0xAD, 0xA5};

/// What both families do. The main array lies below a page that is not programmed, and its last
/// byte is the lock byte.
class TwoWire : public Family {
 public:
  TwoWire(Run& request, WindowLines& lines, std::uint8_t code)
      : Family(request),
        jtag_(lines.jtag),
        lines_(lines.two_wire),
        interface_(request, [this] { resetTarget(); }),
        page_(vars.quorinpagelength[0]),
        array_bytes_(LayoutOf(code, SizesOf(vars)).config_start + 1) {}

  void ReadPass(CheckMode mode) override { dataOp12(mode); }
  void Program() override { program12(); }
  void Code8() override { erase12(); }
  void Code9() override { writeLock12(); }

 protected:
  /// Queues the pulse that restarts the device.
  virtual void resetTarget() = 0;

  void Load(const TwoWireAssignment& assignment) {
    lines_.clockState = lines_.clockMask = assignment.clock;
    lines_.dataState = lines_.dataMask = assignment.data;
    if (assignment.has_vpp) lines_.extraBits = assignment.extra;
    jtag_.fixedBitsA = assignment.fixed;
    jtag_.lineRegister = assignment.line_register;
    WriteLatches(run, assignment.latches);
  }

  /// Tells the programmer's shifter how to drive the lines, and clocks it once each way.
  void SetUpShifter() {
    run.ConfigureShifter({.line_register = jtag_.lineRegister,
                          .clock_rests_high = ShifterConfig::kClockRestsHigh,
                          .clock = lines_.clockState,
                          .fixed = jtag_.fixedBitsA,
                          .data_in = lines_.dataState,
                          .data_out = lines_.dataState,
                          .line_register2 = jtag_.lineRegister},
                         ShifterLength::kTwoWire);
    io.WriteRegister(0, reg::kShiftOut);
    io.WriteRegister(0, reg::kShiftLow);
  }

  // Lines of the window, which other families share.
  JtagLines& jtag_;
  TwoWireLines& lines_;
  FlashInterface interface_;

 private:
  /// A read also fetches the lock byte.
  void dataOp12(CheckMode mode) {
    RequireReadable();
    RequireData(run, std::min(run.RangeStart, 0), run.RangeEnd);
    OpenPass(PassKind::kBlocks);
    ArmCapture();
    if (ReadMain(mode) && mode == CheckMode::kRead) ReadLock();
    ClosePass();
  }

  /// The main array up to the lock byte is written in chunks of half a page, then verified.
  void program12() {
    RequireReadable();
    WriteMain();
    io.FlushQueue();
    io.DelayMs(100);
    VerifyProgrammed();
  }

  /// The blank check decides the result.
  void erase12() {
    RequireReadable();
    EraseDevice();
    NoteBlankCheck(run);
    dataOp12(CheckMode::kBlankCheck);
  }

  /// The lock byte of the image.
  void writeLock12() {
    RequireArray();
    interface_.writeFlashBlock(lock(), 1, FrameMode::kCom);
  }

  /// Throws RangeError for a negative size, and for an array larger than the data buffer and than
  /// any device.
  void RequireArray() const {
    if (array_bytes_ < 0) throw RangeError();
    RequireData(run, 0, array_bytes_ - 1);
  }

  /// Every operation on the main array ends in a pass over it, and does not begin where that pass
  /// could not be made. Throws RangeError for an array or a range beyond the 16 bits of an address,
  /// std::length_error for a device without pages.
  void RequireReadable() const {
    constexpr std::int32_t kLastAddress = 0xFFFF;
    RequireArray();
    if (lock() > kLastAddress || run.RangeEnd > kLastAddress) throw RangeError();
    if (page_ < 1) {
      throw std::length_error("The page size is " + std::to_string(page_) +
                              " bytes; must be 1 or more");
    }
  }

  [[nodiscard]] std::int32_t lock() const { return static_cast<std::int32_t>(array_bytes_ - 1); }

  // Half a page: halves round to even in what a pass reads at a time, and down in what it writes.
  [[nodiscard]] std::int32_t chunk_to_read() const {
    return std::max(static_cast<std::int32_t>(DivideToEven(page_, 2)), 1);
  }
  [[nodiscard]] std::int32_t chunk_to_write() const { return std::max(page_ / 2, 1); }

  /// Writes the progress; false after a stop.
  [[nodiscard]] bool GoesOnInArray(std::int32_t address) {
    run.Progress(address, array_bytes_);
    return !run.stopped();
  }

  [[nodiscard]] bool ReadMain(CheckMode mode) {
    const std::int32_t first_block = run.RangeStart / kBlockBytes;
    const std::int32_t last_block = run.RangeEnd / kBlockBytes;
    for (std::int32_t block = 0; block <= last_block; ++block) {
      const std::int32_t first = block == first_block ? run.RangeStart % kBlockBytes : 0;
      if (!ReadBlock(block, block == last_block, first, mode)) return false;
      io.FlushQueue();
      io.DelayMs(100);
    }
    return true;
  }

  /// One block of what is fetched at a time, from its offset `first` on. The chunk that closes the
  /// last block leaves the lock byte out.
  [[nodiscard]] bool ReadBlock(std::int32_t block, bool last, std::int32_t first, CheckMode mode) {
    const std::int32_t chunk = chunk_to_read();
    const std::int32_t start = block * kBlockBytes;
    const std::int32_t end = last ? (lock() - chunk) % kBlockBytes : kBlockBytes - 1;
    std::int32_t offset = first;
    for (; end >= 0 && offset <= end; offset += chunk) {
      if (!ReadChunk(start + offset, chunk)) return false;
    }
    if (last && !ReadChunk(start + offset, chunk - 1)) return false;
    const std::int32_t bytes = last ? (lock() - 1) % kBlockBytes + 1 : kBlockBytes;
    return FetchAndJudge(
        {.bytes = bytes - first, .image = start + first, .order = BitOrder::kLowFirst}, mode);
  }

  [[nodiscard]] bool ReadChunk(std::int32_t address, std::int32_t count) {
    interface_.readFlashBlock(address, count, FrameMode::kUsb);
    return GoesOnInArray(address);
  }

  /// Stored without the programmer's judgement, which the rest of a pass goes through.
  void ReadLock() {
    vars.quorinibuffer[lock()] =
        static_cast<std::uint8_t>(interface_.readFlashBlock(lock(), 1, FrameMode::kCom));
  }

  void WriteMain() {
    const std::int32_t chunk = chunk_to_write();
    for (std::int32_t address = 0; address <= lock() - chunk; address += chunk) {
      interface_.writeFlashBlock(address, chunk, FrameMode::kUsb);
      if (!GoesOnInArray(address)) return;
    }
    interface_.writeFlashBlock(lock() + 1 - chunk, chunk - 1, FrameMode::kUsb);
  }

  void EraseDevice() {
    if (interface_.StartCommand(Command::kDeviceErase) != FlashInterface::kAccepted) return;
    for (const std::int16_t key : kEraseKey) {
      interface_.writeDataFrame(key, FlashInterface::kDataWait, FrameMode::kCom);
      PollStatus(FlashInterface::kNotTaken, false);
    }
    PollStatus(FlashInterface::kByteReady, true);
    if (interface_.readDataFrame(FlashInterface::kDataWait, FrameMode::kCom) ==
        FlashInterface::kAccepted) {
      return;
    }
    run.desktop.MsgBox(platform::box_style::kOkOnly, u"Test Mode", u"Device Erase Error");
  }

  /// Reads the status until `bit` of it is as wanted, Retries() times more at most.
  void PollStatus(std::int16_t bit, bool set) {
    for (std::int32_t poll = 0; poll <= run.Retries(); ++poll) {
      if (((interface_.readAddressFrame(FrameMode::kCom) & bit) != 0) == set) return;
    }
  }

  std::int32_t page_;         ///< bytes
  std::int64_t array_bytes_;  ///< with the lock byte
};

class TwoWire12 : public TwoWire {
 public:
  TwoWire12(Run& request, WindowLines& lines) : TwoWire(request, lines, 12) {}

  void Enter() override {
    run.SelectLineMode(LineMode::kStandard);
    if (const TwoWireAssignment* found = Fam12Assignment(vars.quorinwoption[0])) {
      SwitchPins(*found);
      Load(*found);
    }
    SetUpShifter();
  }

  /// Device and revision number, behind a byte that stays 0.
  [[nodiscard]] Signature ReadSignature() override {
    interface_.initFlashInterface();
    return {0, interface_.ReadRegister(Register::kDevice),
            interface_.ReadRegister(Register::kRevision)};
  }

 private:
  void SwitchPins(const TwoWireAssignment& assignment) {
    if (assignment.option == kOptionWithAdapter) {
      io.SetVccPin(kAdapterVccPin, 1);
      for (const std::uint8_t pin : kAdapterGndPins) io.SetGndPin(pin, 1);
    }
    if (assignment.has_vpp) io.SetVppPin(vars.quorinbvpppin[0], 1);
  }

  /// The clock line is the reset line too: it resets the device when it stays low.
  void resetTarget() override {
    lines_.clockState = 0;
    WritePort();
    io.QueueDelay(kResetTime);
    lines_.clockState = lines_.clockMask;
    WritePort();
  }

  void WritePort() {
    std::int32_t levels = jtag_.fixedBitsA | lines_.dataState | lines_.clockState;
    const TwoWireAssignment* found = Fam12Assignment(vars.quorinwoption[0]);
    if (found != nullptr && found->has_vpp) levels |= lines_.extraBits;
    io.QueueRegisterWrite(levels, jtag_.lineRegister);
  }
};

class TwoWire16 : public TwoWire {
 public:
  TwoWire16(Run& request, WindowLines& lines) : TwoWire(request, lines, 16) {}

  void Enter() override {
    const TwoWireAssignment* found = Fam16Assignment(vars.quorinwoption[0]);
    if (found == nullptr) return;
    Load(*found);
    SetUpShifter();
  }

 private:
  /// A line of another port pulls the clock low.
  void resetTarget() override {
    constexpr std::uint8_t kHoldPort = 4;
    constexpr std::int32_t kReleased = 0x04;
    io.QueueRegisterWrite(0, kHoldPort);
    io.QueueDelay(kResetTime);
    io.QueueRegisterWrite(kReleased, kHoldPort);
  }
};

}  // namespace

std::unique_ptr<Family> MakeTwoWire12(Run& run, WindowLines& lines) {
  return std::make_unique<TwoWire12>(run, lines);
}

std::unique_ptr<Family> MakeTwoWire16(Run& run, WindowLines& lines) {
  return std::make_unique<TwoWire16>(run, lines);
}

}  // namespace fliglaf
