// The operations of the programmer's components, a row each: name, arguments, result, and how the
// call is made. What forwards, records, replays, counts or fails calls goes by these rows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "usb/components/programmer.h"

namespace fliglaf {

/// In the order in which the components declare them. datstr is not among them: it only computes.
enum class Op : std::uint8_t {
  kEndRun,
  kSetVcc,
  kSetVpp,
  kSetGndPin,
  kSetVccPin,
  kSetVppPin,
  kSetOutputs,
  kSignalPass,
  kSignalFail,
  kOpenProgrammer,
  kWriteRegister,
  kReadRegister,
  kWriteLatch,
  kDelayMs,
  kShortDelay,
  kQueueRegisterWrite,
  kFlushQueue,
  kQueueDelay,
  kReportStartupFailure,
  kSetFigMode,
  kEndProgramming,
  kBlockTransfer,
  kResetInterface,
  kUsbComWrite,
  kUsbBulkRead,
};
inline constexpr std::size_t kOperationCount = static_cast<std::size_t>(Op::kUsbBulkRead) + 1;

/// The numbers that an operation takes, in its order; the rest are 0.
using Arguments = std::array<std::int32_t, 4>;

/// Hex: a pattern of bits rather than a quantity.
enum class Argument : std::uint8_t { kNone, kLong, kByte, kLongHex, kByteHex, kPacket, kBuffer };

enum class Result : std::uint8_t { kNone, kDecimal, kHex };

struct Operation {
  Op op;
  std::string_view name;
  std::array<Argument, 4> arguments;
  Result result;
  /// Makes the call and returns its result, 0 where it has none. Null where the arguments are not
  /// all numbers.
  std::int32_t (*perform)(Programmer&, const Arguments&);
};

/// In the order of Op.
extern const std::array<Operation, kOperationCount> kOperations;

[[nodiscard]] inline const Operation& Row(Op op) {
  return kOperations[static_cast<std::size_t>(op)];
}
/// Null for an unknown name.
[[nodiscard]] const Operation* FindOperation(std::string_view name);

}  // namespace fliglaf
