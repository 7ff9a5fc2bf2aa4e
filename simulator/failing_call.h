#pragma once

#include <string>
#include <utility>

#include "usb/components/forwarding_programmer.h"

namespace fliglaf::simulator {

/// Makes one call of one operation fail, as a component does that returns an error.
class FailingCall : public ForwardingProgrammer {
 public:
  static constexpr std::uint32_t kUnspecifiedError = 0x80004005;

  /// The `nth` call of `operation` fails, counted from 1.
  FailingCall(Programmer& next, std::string operation, unsigned nth)
      : ForwardingProgrammer(next), operation_(std::move(operation)), nth_(nth) {}

 protected:
  bool OnCall(std::string_view operation) override {
    if (operation == operation_ && ++calls_ == nth_) {
      throw ComponentError(operation_, kUnspecifiedError);
    }
    return true;
  }

 private:
  std::string operation_;
  unsigned nth_;
  unsigned calls_ = 0;
};

}  // namespace fliglaf::simulator
