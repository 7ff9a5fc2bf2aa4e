#pragma once

#include "usb/components/funnel_programmer.h"

namespace fliglaf {

/// A programmer that adds up what is queued and does nothing else.
class CountingSink : public FunnelProgrammer {
 public:
  std::int64_t sum = 0;

  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t number) override {
    sum += value + number;
    return 0;
  }
  void usbcomwrite(std::span<const std::uint8_t>) override {}
  void usbbulkread(std::span<std::uint8_t>, std::uint8_t&) override {}
  std::u16string datstr(std::int32_t, std::int32_t) override { return {}; }

 protected:
  std::int32_t Perform(Op, const Arguments&) override { return 0; }
};

}  // namespace fliglaf
