#pragma once

#include "usb/components/forwarding_programmer.h"

namespace fliglaf::cli {

/// Notes which start-up step of the programmer failed, which the library does not report.
class ProgrammerWatch : public ForwardingProgrammer {
 public:
  using ForwardingProgrammer::ForwardingProgrammer;

  [[nodiscard]] bool not_found() const { return not_found_; }
  [[nodiscard]] bool adapter_missing() const { return adapter_missing_; }
  [[nodiscard]] bool supply_failed() const { return supply_failed_; }

 protected:
  std::int32_t Perform(Op op, const Arguments& arguments) override {
    const std::int32_t outcome = ForwardingProgrammer::Perform(op, arguments);
    not_found_ |= op == Op::kOpenProgrammer && outcome == kNoProgrammer;
    adapter_missing_ |= op == Op::kSetFigMode && outcome != 0;
    supply_failed_ |= op == Op::kSetVcc && outcome == kSupplyFailed;
    return outcome;
  }

 private:
  bool not_found_ = false;
  bool adapter_missing_ = false;
  bool supply_failed_ = false;
};

}  // namespace fliglaf::cli
