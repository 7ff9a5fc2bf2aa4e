#pragma once

#include "usb/components/operations.h"

namespace fliglaf {

/// A programmer whose operations on numbers all come to one place; one that a subclass overrides no
/// longer does.
class FunnelProgrammer : public Programmer {
 public:
  void EndRun() override { Perform(Op::kEndRun, {}); }
  std::int32_t SetVcc(std::int32_t mv) override { return Perform(Op::kSetVcc, {mv}); }
  std::int32_t SetVpp(std::int32_t mv, std::uint8_t channel) override {
    return Perform(Op::kSetVpp, {mv, channel});
  }
  void SetGndPin(std::uint8_t pin, std::uint8_t state) override {
    Perform(Op::kSetGndPin, {pin, state});
  }
  void SetVccPin(std::uint8_t pin, std::uint8_t state) override {
    Perform(Op::kSetVccPin, {pin, state});
  }
  void SetVppPin(std::uint8_t pin, std::uint8_t state) override {
    Perform(Op::kSetVppPin, {pin, state});
  }
  std::int32_t SetOutputs(std::int32_t value) override { return Perform(Op::kSetOutputs, {value}); }
  void SignalPass(std::int32_t value) override { Perform(Op::kSignalPass, {value}); }
  void SignalFail(std::int32_t value) override { Perform(Op::kSignalFail, {value}); }
  std::int32_t OpenProgrammer() override { return Perform(Op::kOpenProgrammer, {}); }
  std::int32_t WriteRegister(std::int32_t value, std::uint8_t number) override {
    return Perform(Op::kWriteRegister, {value, number});
  }
  std::int32_t ReadRegister(std::uint8_t number) override {
    return Perform(Op::kReadRegister, {number});
  }
  std::int32_t WriteLatch(std::int32_t value, std::uint8_t latch) override {
    return Perform(Op::kWriteLatch, {value, latch});
  }
  std::int32_t DelayMs(std::int32_t ms) override { return Perform(Op::kDelayMs, {ms}); }
  std::int32_t ShortDelay(std::int32_t us) override { return Perform(Op::kShortDelay, {us}); }
  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t number) override {
    return Perform(Op::kQueueRegisterWrite, {value, number});
  }
  std::int32_t FlushQueue() override { return Perform(Op::kFlushQueue, {}); }
  std::int32_t QueueDelay(std::int32_t us) override { return Perform(Op::kQueueDelay, {us}); }
  void ReportStartupFailure() override { Perform(Op::kReportStartupFailure, {}); }
  std::int32_t SetFigMode(std::uint8_t mode) override { return Perform(Op::kSetFigMode, {mode}); }
  std::int32_t EndProgramming(std::int32_t page, std::int32_t zero, std::int32_t data,
                              std::int32_t address) override {
    return Perform(Op::kEndProgramming, {page, zero, data, address});
  }
  std::int32_t BlockTransfer(std::int32_t data, std::int32_t address,
                             std::int32_t check_mode) override {
    return Perform(Op::kBlockTransfer, {data, address, check_mode});
  }
  void ResetInterface() override { Perform(Op::kResetInterface, {}); }

 protected:
  /// Performs an operation that takes numbers only; returns its result, 0 where it has none.
  virtual std::int32_t Perform(Op op, const Arguments& arguments) = 0;
};

}  // namespace fliglaf
