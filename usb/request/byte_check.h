#pragma once

#include <cstdint>
#include <string>

#include "shared/shared_variables.h"
#include "usb/request/engine_run.h"

namespace fliglaf {

/// What is done with each byte that is read from a device. The programmer's component does it for
/// the USB engine, the parallel engine itself.
class ByteCheck {
 public:
  explicit ByteCheck(SharedVariables& variables) : vars_(variables) {}
  virtual ~ByteCheck() = default;
  ByteCheck(const ByteCheck&) = delete;
  ByteCheck& operator=(const ByteCheck&) = delete;

  struct Byte {
    std::uint8_t data;
    std::int32_t address;  ///< of the device
    std::int32_t index;    ///< of the data buffer
  };

  /// By `mode`: stores the byte, verifies it against the data buffer or an erased cell, or
  /// lists a difference; any other mode accepts it. Returns 1 to end the pass; note and result then
  /// stand in the shared variables. A difference that is to be listed lets the message loop run; a
  /// stop request that then stands ends the pass. Throws RangeError for an index outside the
  /// buffer.
  [[nodiscard]] std::int32_t Judge(const Byte& byte, CheckMode mode);

 protected:
  [[nodiscard]] SharedVariables& vars() const { return vars_; }
  /// The text of the user's language with that number.
  [[nodiscard]] virtual std::u16string Text(int number) const = 0;
  /// The low `digits` hexadecimal digits of `value`.
  [[nodiscard]] virtual std::u16string Hex(std::int32_t value, std::int32_t digits) const = 0;
  /// Lets the message loop turn once.
  virtual void Turn() = 0;

 private:
  [[nodiscard]] std::int32_t Verify(const Byte& byte);
  [[nodiscard]] std::int32_t BlankCheck(const Byte& byte);
  [[nodiscard]] std::int32_t Compare(const Byte& byte);
  [[nodiscard]] std::u16string DeviceNote(const Byte& byte) const;
  [[nodiscard]] std::int32_t Fail(const std::u16string& note);

  SharedVariables& vars_;
};

}  // namespace fliglaf
