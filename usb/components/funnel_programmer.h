// A programmer whose operations on numbers all come to one place.
#pragma once

#include "record/operations.h"
#include "usb/components/programmer.h"

namespace fliglaf::record {

class FunnelProgrammer : public Programmer {
 public:
  void EndRun() final { Perform(Op::kEndRun, {}); }
  std::int32_t SetVcc(std::int32_t mv) final { return Perform(Op::kSetVcc, {mv}); }
  std::int32_t SetVpp(std::int32_t mv, std::uint8_t channel) final {
    return Perform(Op::kSetVpp, {mv, channel});
  }
  void SetGndPin(std::uint8_t pin, std::uint8_t state) final {
    Perform(Op::kSetGndPin, {pin, state});
  }
  void SetVccPin(std::uint8_t pin, std::uint8_t state) final {
    Perform(Op::kSetVccPin, {pin, state});
  }
  void SetVppPin(std::uint8_t pin, std::uint8_t state) final {
    Perform(Op::kSetVppPin, {pin, state});
  }
  std::int32_t SetOutputs(std::int32_t value) final { return Perform(Op::kSetOutputs, {value}); }
  void SignalPass(std::int32_t value) final { Perform(Op::kSignalPass, {value}); }
  void SignalFail(std::int32_t value) final { Perform(Op::kSignalFail, {value}); }
  std::int32_t OpenProgrammer() final { return Perform(Op::kOpenProgrammer, {}); }
  std::int32_t WriteRegister(std::int32_t value, std::uint8_t number) final {
    return Perform(Op::kWriteRegister, {value, number});
  }
  std::int32_t ReadRegister(std::uint8_t number) final {
    return Perform(Op::kReadRegister, {number});
  }
  std::int32_t WriteLatch(std::int32_t value, std::uint8_t latch) final {
    return Perform(Op::kWriteLatch, {value, latch});
  }
  std::int32_t DelayMs(std::int32_t ms) final { return Perform(Op::kDelayMs, {ms}); }
  std::int32_t ShortDelay(std::int32_t us) final { return Perform(Op::kShortDelay, {us}); }
  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t number) final {
    return Perform(Op::kQueueRegisterWrite, {value, number});
  }
  std::int32_t FlushQueue() final { return Perform(Op::kFlushQueue, {}); }
  std::int32_t QueueDelay(std::int32_t us) final { return Perform(Op::kQueueDelay, {us}); }
  void ReportStartupFailure() final { Perform(Op::kReportStartupFailure, {}); }
  std::int32_t SetFigMode(std::uint8_t mode) final { return Perform(Op::kSetFigMode, {mode}); }
  std::int32_t EndProgramming(std::int32_t page, std::int32_t zero, std::int32_t data,
                              std::int32_t address) final {
    return Perform(Op::kEndProgramming, {page, zero, data, address});
  }
  std::int32_t BlockTransfer(std::int32_t data, std::int32_t address,
                             std::int32_t check_mode) final {
    return Perform(Op::kBlockTransfer, {data, address, check_mode});
  }
  void ResetInterface() final { Perform(Op::kResetInterface, {}); }

 protected:
  /// An operation of Form::kNumbers was called; returns its result, 0 where it has none.
  virtual std::int32_t Perform(Op op, const Arguments& arguments) = 0;
};

}  // namespace fliglaf::record
