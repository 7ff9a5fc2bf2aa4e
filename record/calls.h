// The calls that a run record can hold, their answers, and the text of both.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "shared/shared_variables.h"
#include "usb/components/operations.h"

namespace fliglaf::record {

/// How the arguments of a call are written.
enum class Form : std::uint8_t {
  kNumbers,   ///< as the row of the operation says
  kPacket,    ///< bytes
  kBulkRead,  ///< target and count; the answer is what the transfer did
  kBox,       ///< style, title and prompt; the answer is the button
};

[[nodiscard]] Form FormOf(const Operation& operation);
/// How many numbers an operation of Form::kNumbers takes.
[[nodiscard]] int ArgumentCount(const Operation& operation);
/// The row of an operation or of the message box; null for an unknown name.
[[nodiscard]] const Operation* FindCall(std::string_view name);

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
