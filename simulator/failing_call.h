#pragma once

#include <string>

#include "usb/components/forwarding_programmer.h"

namespace fliglaf::simulator {

/// Makes one call of one operation fail, as a component does that returns an error.
class FailingCall : public ForwardingProgrammer {
 public:
  static constexpr std::uint32_t kUnspecifiedError = 0x80004005;

  /// The `nth` call of `operation` fails, counted from 1.
  FailingCall(Programmer& next, Op operation, unsigned nth)
      : ForwardingProgrammer(next), operation_(operation), nth_(nth) {}

 protected:
  bool OnCall(Op op, const Arguments&) override {
    if (op == operation_ && ++calls_ == nth_) {
      throw ComponentError(std::string(Row(op).name), kUnspecifiedError);
    }
    return true;
  }

 private:
  Op operation_;
  unsigned nth_;
  unsigned calls_ = 0;
};

}  // namespace fliglaf::simulator
