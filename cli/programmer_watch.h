#pragma once

#include "cli/workplace.h"
#include "usb/components/forwarding_programmer.h"

namespace fliglaf::cli {

/// Notes which start-up step of the programmer failed, which the library does not report.
class ProgrammerWatch : public ForwardingProgrammer {
 public:
  using ForwardingProgrammer::ForwardingProgrammer;

  [[nodiscard]] StartUp start_up() const { return start_up_; }

 protected:
  std::int32_t Perform(Op op, const Arguments& arguments) override {
    const std::int32_t outcome = ForwardingProgrammer::Perform(op, arguments);
    if (start_up_ == StartUp::kDone) start_up_ = Judge(op, outcome);
    return outcome;
  }

 private:
  static StartUp Judge(Op op, std::int32_t outcome) {
    if (op == Op::kOpenProgrammer && outcome == kNoProgrammer) return StartUp::kNotFound;
    if (op == Op::kSetFigMode && outcome != 0) return StartUp::kWrongAdapter;
    if (op == Op::kSetVcc && outcome == kSupplyFailed) return StartUp::kNoSupply;
    return StartUp::kDone;
  }

  StartUp start_up_ = StartUp::kDone;
};

}  // namespace fliglaf::cli
