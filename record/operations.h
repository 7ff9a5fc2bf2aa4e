// The calls that a run record can hold, and their text. What an operation is called, which
// arguments it takes and how they are written stands in one table for reader, player and recorder.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "shared/shared_variables.h"
#include "usb/components/programmer.h"

namespace fliglaf::record {

/// The operations of the programmer, in the order in which its components declare them, and the
/// message box.
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
  kMsgBox,
};

/// Arguments of an operation that takes numbers only; what it does not take is 0.
using Arguments = std::array<std::int32_t, 4>;

enum class Argument : std::uint8_t { kNone, kLong, kByte, kLongHex, kByteHex };

/// How an operation's arguments are written.
enum class Form : std::uint8_t {
  kNumbers,   ///< by `arguments`
  kPacket,    ///< bytes
  kBulkRead,  ///< target and count; the answer is what the transfer did
  kBox,       ///< style, title and prompt; the answer is the button
};

enum class Result : std::uint8_t { kNone, kDecimal, kHex };

struct Operation {
  Op op;
  std::string_view name;
  Form form;
  std::array<Argument, 4> arguments;
  Result result;
  /// Makes the call; null for other forms than numbers.
  std::int32_t (*perform)(Programmer&, const Arguments&);

  [[nodiscard]] int argument_count() const;
};

[[nodiscard]] const Operation& Row(Op op);
/// Null when there is none.
[[nodiscard]] const Operation* FindOperation(std::string_view name);

/// What was called.
struct Call {
  const Operation* operation = nullptr;
  /// Form::kBulkRead: index of the first byte, and count. Form::kBox: style.
  Arguments arguments{};
  std::vector<std::uint8_t> packet{};
  /// Form::kBulkRead: the variable; empty when it goes to no shared one.
  std::string_view target{};
  std::u16string title{};
  std::u16string prompt{};

  bool operator==(const Call&) const = default;
};

/// What came of it.
struct Answer {
  /// Form::kBulkRead: the status byte.
  std::int32_t result = 0;
  /// Not 0: the call failed.
  std::uint32_t hresult = 0;
  /// What a bulk read stored: bytes from the first on, and the last byte.
  std::vector<std::uint8_t> data{};
  std::optional<std::uint8_t> end{};

  bool operator==(const Answer&) const = default;
};

[[nodiscard]] Call PacketCall(std::span<const std::uint8_t> packet);
/// The target is empty when `destination` is no piece of a shared variable.
[[nodiscard]] Call BulkReadCall(const SharedVariables& vars,
                                std::span<const std::uint8_t> destination);
[[nodiscard]] Call BoxCall(int style, std::u16string_view title, std::u16string_view prompt);

/// `SetGndPin(20, 1)`
[[nodiscard]] std::string Format(const Call& call);
/// What stands behind the call: ` = 5`, ` ! 0x80004005`, nothing for the result 0.
[[nodiscard]] std::string Format(const Operation& operation, const Answer& answer);

/// HRESULTs of failures have the top bit set.
inline constexpr std::uint32_t kFailureBit = 0x80000000;

/// What a failed call threw, as a record keeps it, and the other way round.
[[nodiscard]] std::uint32_t FailureCode(const Operation& operation, const ComponentError& error);
[[nodiscard]] ComponentError Failure(const Operation& operation, std::uint32_t hresult);

}  // namespace fliglaf::record
