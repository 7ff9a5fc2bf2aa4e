#include "record/calls.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "record/assignment.h"
#include "record/text.h"

namespace fliglaf::record {
namespace {

/// The transfer library could not be loaded: "the specified module could not be found".
constexpr std::uint32_t kModuleNotFound = 0x8007007E;
constexpr std::string_view kTransferLibraryMissing = "qdnio.dll is missing";
/// A failure that tells no more.
constexpr std::uint32_t kUnspecifiedFailure = 0x80004005;

void AppendNumber(std::string& text, std::int32_t value, bool hexadecimal) {
  if (hexadecimal && value >= 0) {
    fmt::format_to(std::back_inserter(text), "0x{:02X}", value);
  } else {
    fmt::format_to(std::back_inserter(text), "{}", value);
  }
}

void AppendNumbers(std::string& text, const Call& call) {
  const int count = ArgumentCount(*call.operation);
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += ", ";
    const Argument kind = call.operation->arguments[static_cast<std::size_t>(i)];
    AppendNumber(text, call.arguments[static_cast<std::size_t>(i)],
                 kind == Argument::kLongHex || kind == Argument::kByteHex);
  }
}

void AppendBytes(std::string& text, const std::vector<std::uint8_t>& bytes) {
  fmt::format_to(std::back_inserter(text), "{:02X}", fmt::join(bytes, " "));
}

std::string Target(const Call& call) {
  // A target outside the shared variables is never recorded, but can be what a replay got.
  return call.target.empty() ? std::string("unshared memory")
                             : fmt::format("{}({})", call.target, call.arguments[0]);
}

bool OfTransferLibrary(const Operation& operation) {
  return operation.op == Op::kUsbComWrite || operation.op == Op::kUsbBulkRead;
}

/// The message box, which a record holds among the calls of the programmer. Its number follows
/// theirs.
constexpr Operation kBoxRow{
    static_cast<Op>(kOperationCount), "MsgBox", {}, Result::kDecimal, nullptr};

}  // namespace

Form FormOf(const Operation& operation) {
  if (operation.arguments[0] == Argument::kPacket) return Form::kPacket;
  if (operation.arguments[0] == Argument::kBuffer) return Form::kBulkRead;
  return &operation == &kBoxRow ? Form::kBox : Form::kNumbers;
}

int ArgumentCount(const Operation& operation) {
  return static_cast<int>(std::ranges::find(operation.arguments, Argument::kNone) -
                          operation.arguments.begin());
}

const Operation* FindCall(std::string_view name) {
  return name == kBoxRow.name ? &kBoxRow : FindOperation(name);
}

Call PacketCall(std::span<const std::uint8_t> packet) {
  return {.operation = &Row(Op::kUsbComWrite), .packet = {packet.begin(), packet.end()}};
}

Call BulkReadCall(const SharedVariables& vars, std::span<const std::uint8_t> destination) {
  const auto [target, index] = FindByte(vars, destination.data());
  return {.operation = &Row(Op::kUsbBulkRead),
          .arguments = {index, static_cast<std::int32_t>(destination.size())},
          .target = target == nullptr ? std::string_view() : target->row().name};
}

Call BoxCall(int style, std::u16string_view title, std::u16string_view prompt) {
  return {.operation = &kBoxRow,
          .arguments = {style},
          .title = std::u16string(title),
          .prompt = std::u16string(prompt)};
}

std::string Format(const Call& call) {
  std::string text(call.operation->name);
  text += '(';
  switch (FormOf(*call.operation)) {
    case Form::kNumbers:
      AppendNumbers(text, call);
      break;
    case Form::kPacket:
      AppendBytes(text, call.packet);
      break;
    case Form::kBulkRead:
      fmt::format_to(std::back_inserter(text), "{}, {}", Target(call), call.arguments[1]);
      break;
    case Form::kBox:
      fmt::format_to(std::back_inserter(text), "{}, {}, {}", call.arguments[0], Quote(call.title),
                     Quote(call.prompt));
      break;
  }
  return text + ')';
}

std::string Format(const Operation& operation, const Answer& answer) {
  if (answer.hresult != 0) return fmt::format(" ! 0x{:08X}", answer.hresult);
  std::string text;
  if (answer.result != 0 || FormOf(operation) == Form::kBulkRead) {
    text = " = ";
    AppendNumber(text, answer.result, operation.result == Result::kHex);
  }
  if (!answer.data.empty()) {
    text += " data ";
    AppendBytes(text, answer.data);
  }
  if (answer.end) fmt::format_to(std::back_inserter(text), " end {:02X}", *answer.end);
  return text;
}

std::uint32_t FailureCode(const Operation& operation, const ComponentError& error) {
  if (error.hresult() != 0) return error.hresult();
  return OfTransferLibrary(operation) ? kModuleNotFound : kUnspecifiedFailure;
}

ComponentError Failure(const Operation& operation, std::uint32_t hresult) {
  if (OfTransferLibrary(operation) && hresult == kModuleNotFound) {
    return ComponentError(std::string(kTransferLibraryMissing));
  }
  return ComponentError(std::string(operation.name), hresult);
}

}  // namespace fliglaf::record
