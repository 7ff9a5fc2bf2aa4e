#pragma once

#include "usb/components/funnel_programmer.h"

namespace fliglaf {

/// A programmer that hands every call on to another one: what a decorator overrides is what it
/// changes.
class ForwardingProgrammer : public FunnelProgrammer {
 public:
  explicit ForwardingProgrammer(Programmer& next) : next_(next) {}

  void usbcomwrite(std::span<const std::uint8_t> packet) override {
    if (OnCall(Op::kUsbComWrite, {Count(packet)})) next_.usbcomwrite(packet);
  }
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    if (OnCall(Op::kUsbBulkRead, {Count(destination)})) next_.usbbulkread(destination, status);
  }
  [[nodiscard]] std::u16string datstr(std::int32_t value, std::int32_t digits) override {
    return next_.datstr(value, digits);
  }

 protected:
  std::int32_t Perform(Op op, const Arguments& arguments) override {
    return OnCall(op, arguments) ? Row(op).perform(next_, arguments) : 0;
  }
  /// Called before every operation of the table; the argument of a transfer is its bytes. False
  /// keeps the call from going on: its result is then 0.
  virtual bool OnCall(Op /*op*/, const Arguments& /*arguments*/) { return true; }
  [[nodiscard]] Programmer& next() { return next_; }

 private:
  static std::int32_t Count(std::span<const std::uint8_t> bytes) {
    return static_cast<std::int32_t>(bytes.size());
  }

  Programmer& next_;
};

}  // namespace fliglaf
