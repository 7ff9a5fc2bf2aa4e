#pragma once

#include <string_view>

#include "usb/components/programmer.h"

namespace fliglaf {

/// A programmer that hands every call on to another one: what a decorator overrides is what it
/// changes.
class ForwardingProgrammer : public Programmer {
 public:
  explicit ForwardingProgrammer(Programmer& next) : next_(next) {}

  void EndRun() override {
    if (OnCall("EndRun")) next_.EndRun();
  }
  std::int32_t SetVcc(std::int32_t millivolts) override {
    return OnCall("SetVcc") ? next_.SetVcc(millivolts) : 0;
  }
  std::int32_t SetVpp(std::int32_t millivolts, std::uint8_t channel) override {
    return OnCall("SetVpp") ? next_.SetVpp(millivolts, channel) : 0;
  }
  void SetGndPin(std::uint8_t pin, std::uint8_t state) override {
    if (OnCall("SetGndPin")) next_.SetGndPin(pin, state);
  }
  void SetVccPin(std::uint8_t pin, std::uint8_t state) override {
    if (OnCall("SetVccPin")) next_.SetVccPin(pin, state);
  }
  void SetVppPin(std::uint8_t pin, std::uint8_t state) override {
    if (OnCall("SetVppPin")) next_.SetVppPin(pin, state);
  }
  std::int32_t SetOutputs(std::int32_t value) override {
    return OnCall("SetOutputs") ? next_.SetOutputs(value) : 0;
  }
  void SignalPass(std::int32_t value) override {
    if (OnCall("SignalPass")) next_.SignalPass(value);
  }
  void SignalFail(std::int32_t value) override {
    if (OnCall("SignalFail")) next_.SignalFail(value);
  }
  std::int32_t OpenProgrammer() override {
    return OnCall("OpenProgrammer") ? next_.OpenProgrammer() : 0;
  }
  std::int32_t WriteRegister(std::int32_t value, std::uint8_t register_number) override {
    return OnCall("WriteRegister") ? next_.WriteRegister(value, register_number) : 0;
  }
  std::int32_t ReadRegister(std::uint8_t register_number) override {
    return OnCall("ReadRegister") ? next_.ReadRegister(register_number) : 0;
  }
  std::int32_t WriteLatch(std::int32_t value, std::uint8_t latch) override {
    return OnCall("WriteLatch") ? next_.WriteLatch(value, latch) : 0;
  }
  std::int32_t DelayMs(std::int32_t milliseconds) override {
    return OnCall("DelayMs") ? next_.DelayMs(milliseconds) : 0;
  }
  std::int32_t ShortDelay(std::int32_t microseconds) override {
    return OnCall("ShortDelay") ? next_.ShortDelay(microseconds) : 0;
  }
  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t register_number) override {
    return OnCall("QueueRegisterWrite") ? next_.QueueRegisterWrite(value, register_number) : 0;
  }
  std::int32_t FlushQueue() override { return OnCall("FlushQueue") ? next_.FlushQueue() : 0; }
  std::int32_t QueueDelay(std::int32_t microseconds) override {
    return OnCall("QueueDelay") ? next_.QueueDelay(microseconds) : 0;
  }
  void ReportStartupFailure() override {
    if (OnCall("ReportStartupFailure")) next_.ReportStartupFailure();
  }
  std::int32_t SetFigMode(std::uint8_t mode) override {
    return OnCall("SetFigMode") ? next_.SetFigMode(mode) : 0;
  }
  std::int32_t EndProgramming(std::int32_t page, std::int32_t zero, std::int32_t data,
                              std::int32_t address) override {
    return OnCall("EndProgramming") ? next_.EndProgramming(page, zero, data, address) : 0;
  }
  std::int32_t BlockTransfer(std::int32_t data, std::int32_t address,
                             std::int32_t check_mode) override {
    return OnCall("BlockTransfer") ? next_.BlockTransfer(data, address, check_mode) : 0;
  }
  void ResetInterface() override {
    if (OnCall("ResetInterface")) next_.ResetInterface();
  }
  void usbcomwrite(std::span<const std::uint8_t> packet) override {
    if (OnCall("usbcomwrite")) next_.usbcomwrite(packet);
  }
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    if (OnCall("usbbulkread")) next_.usbbulkread(destination, status);
  }
  [[nodiscard]] std::u16string datstr(std::int32_t value, std::int32_t digits) override {
    return next_.datstr(value, digits);
  }

 protected:
  /// Called before every operation but datstr, with its name. False keeps the call from going on:
  /// its result is then 0.
  virtual bool OnCall(std::string_view /*operation*/) { return true; }
  [[nodiscard]] Programmer& next() { return next_; }

 private:
  Programmer& next_;
};

}  // namespace fliglaf
