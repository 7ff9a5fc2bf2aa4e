#pragma once

#include "usb/components/forwarding_programmer.h"

namespace fliglaf::cli {

/// Notes which start-up step of the programmer failed: the library tells the host less than that.
class ProgrammerWatch : public ForwardingProgrammer {
 public:
  using ForwardingProgrammer::ForwardingProgrammer;

  [[nodiscard]] bool not_found() const { return not_found_; }
  [[nodiscard]] bool adapter_missing() const { return adapter_missing_; }
  [[nodiscard]] bool supply_failed() const { return supply_failed_; }

  std::int32_t OpenProgrammer() override {
    const std::int32_t outcome = next().OpenProgrammer();
    not_found_ |= outcome == kNoProgrammer;
    return outcome;
  }
  std::int32_t SetFigMode(std::uint8_t mode) override {
    const std::int32_t outcome = next().SetFigMode(mode);
    adapter_missing_ |= outcome != 0;
    return outcome;
  }
  std::int32_t SetVcc(std::int32_t millivolts) override {
    const std::int32_t outcome = next().SetVcc(millivolts);
    supply_failed_ |= outcome == kSupplyFailed;
    return outcome;
  }

 private:
  bool not_found_ = false;
  bool adapter_missing_ = false;
  bool supply_failed_ = false;
};

}  // namespace fliglaf::cli
