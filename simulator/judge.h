#pragma once

#include <functional>
#include <string>

#include "usb/request/byte_check.h"

namespace fliglaf::simulator {

/// The judging done by the programmer's component, with texts of its own.
class ComponentJudge : public ByteCheck {
 public:
  /// `turn` may be empty.
  ComponentJudge(SharedVariables& variables, const std::function<void()>& turn)
      : ByteCheck(variables), turn_(turn) {}

 private:
  [[nodiscard]] std::u16string Text(int number) const override;
  [[nodiscard]] std::u16string Hex(std::int32_t value, std::int32_t digits) const override;
  void Turn() override {
    if (turn_) turn_();
  }

  const std::function<void()>& turn_;
};

}  // namespace fliglaf::simulator
