// The programmer as the library reaches it: the operations of the three components of the
// programmer's software (the USB transfer library qdnio.dll, the parallel-port library hxaio.dll,
// the helper object IoHelper), with the components' own names, argument order and results.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace fliglaf {

/// A component call that failed. Caught by the driver of a request, which ends the run.
class ComponentError : public std::runtime_error {
 public:
  /// `what` becomes a line of the log, for example "qdnio.dll is missing".
  explicit ComponentError(const std::string& what) : std::runtime_error(what) {}
  /// The call of an IoHelper operation returned `hresult`, a negative HRESULT.
  ComponentError(const std::string& operation, std::uint32_t hresult);

  /// What the call returned; 0 when there was no call to make.
  [[nodiscard]] std::uint32_t hresult() const { return hresult_; }

 private:
  std::uint32_t hresult_ = 0;
};

/// Registers of the programmer that shift or capture on the target's lines, or walk a test access
/// port: TMS is low but where it is said to be high.
namespace reg {
inline constexpr std::uint8_t kCaptured = 0x21;       ///< read: the byte of the last capture
inline constexpr std::uint8_t kShiftOut = 0x8E;       ///< write: one byte out, bit 7 first
inline constexpr std::uint8_t kCapture = 0x8F;        ///< write 1: one byte in, bit 7 first
inline constexpr std::uint8_t kShiftLow = 0x90;       ///< write: a group of bits out, bit 0 first
inline constexpr std::uint8_t kLastBit = 0xC1;        ///< write: bit 7 out with TMS high
inline constexpr std::uint8_t kLastTwoBits = 0xC2;    ///< write: bits 7 and 6 out, TMS high on 6
inline constexpr std::uint8_t kLastByte = 0xC4;       ///< write: one byte out, TMS high on bit 0
inline constexpr std::uint8_t kTmsHighLow = 0xC5;     ///< write: two pulses, TMS high, then low
inline constexpr std::uint8_t kTmsHighLowLow = 0xC6;  ///< write: three pulses, TMS high, low, low
inline constexpr std::uint8_t kFrameIn = 0xC8;        ///< write 1: one byte in over the data line
inline constexpr std::uint8_t kFrameBit = 0xC9;       ///< write: bit 7 out over the data line
inline constexpr std::uint8_t kFrameByte = 0xCB;      ///< write: one byte out over it, bit 0 first
}  // namespace reg

/// Results of the start-up operations that callers test.
inline constexpr std::int32_t kNoProgrammer = 1;  ///< of OpenProgrammer
inline constexpr std::int32_t kSupplyFailed = 1;  ///< of SetVcc
inline constexpr std::int32_t kAdapterAbort = 2;  ///< of SetFigMode

/// Values of the status byte of a bulk read.
namespace bulk_status {
inline constexpr std::uint8_t kDone = 2;
inline constexpr std::uint8_t kLastGood = 3;  ///< above it: failed
}  // namespace bulk_status

/// What the programmer puts into the last byte of a bulk read when all of it has come.
inline constexpr std::uint8_t kEndMark = 0xAA;

class Programmer {
 public:
  Programmer() = default;
  virtual ~Programmer() = default;
  Programmer(const Programmer&) = delete;
  Programmer& operator=(const Programmer&) = delete;

  // IoHelper. Every operation may throw ComponentError. Results that nobody tests are returned all
  // the same, so that a decorator hands on what the component said.

  /// Ends a run: supplies, programming voltage and pins off.
  virtual void EndRun() = 0;
  /// Device supply in mV.
  virtual std::int32_t SetVcc(std::int32_t millivolts) = 0;
  /// Programming voltage in mV.
  virtual std::int32_t SetVpp(std::int32_t millivolts, std::uint8_t channel) = 0;
  /// Socket pins by number; state 1 = on, 0 = off.
  virtual void SetGndPin(std::uint8_t pin, std::uint8_t state) = 0;
  virtual void SetVccPin(std::uint8_t pin, std::uint8_t state) = 0;
  virtual void SetVppPin(std::uint8_t pin, std::uint8_t state) = 0;
  virtual std::int32_t SetOutputs(std::int32_t value) = 0;
  virtual void SignalPass(std::int32_t value) = 0;
  virtual void SignalFail(std::int32_t value) = 0;
  virtual std::int32_t OpenProgrammer() = 0;
  /// Performed at once.
  virtual std::int32_t WriteRegister(std::int32_t value, std::uint8_t register_number) = 0;
  virtual std::int32_t ReadRegister(std::uint8_t register_number) = 0;
  virtual std::int32_t WriteLatch(std::int32_t value, std::uint8_t latch) = 0;
  virtual std::int32_t DelayMs(std::int32_t milliseconds) = 0;
  /// Duration in µs.
  virtual std::int32_t ShortDelay(std::int32_t microseconds) = 0;
  /// Collected until FlushQueue.
  virtual std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t register_number) = 0;
  virtual std::int32_t FlushQueue() = 0;
  /// A delay in µs inside the collected sequence.
  virtual std::int32_t QueueDelay(std::int32_t microseconds) = 0;
  virtual void ReportStartupFailure() = 0;
  virtual std::int32_t SetFigMode(std::uint8_t mode) = 0;
  virtual std::int32_t EndProgramming(std::int32_t page, std::int32_t zero, std::int32_t data,
                                      std::int32_t address) = 0;
  /// Hands over one byte read from the device: the component stores or judges it by the check mode
  /// (0 read, 1 verify, 2 blank check, 3 compare), records the outcome in the shared variables and
  /// returns 1 to end the pass.
  virtual std::int32_t BlockTransfer(std::int32_t data, std::int32_t address,
                                     std::int32_t check_mode) = 0;
  virtual void ResetInterface() = 0;

  // qdnio.dll

  virtual void usbcomwrite(std::span<const std::uint8_t> packet) = 0;
  /// Starts a transfer into `destination`; it reports through `status` and the end mark, both of
  /// which must outlive it.
  virtual void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) = 0;

  // hxaio.dll

  /// The low `digits` hexadecimal digits of `value`, upper case.
  [[nodiscard]] virtual std::u16string datstr(std::int32_t value, std::int32_t digits) = 0;
};

}  // namespace fliglaf
