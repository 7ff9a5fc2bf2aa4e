#include "record/operations.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "record/assignment.h"
#include "record/text.h"

namespace fliglaf::record {
namespace {

constexpr auto kLong = Argument::kLong;
constexpr auto kByte = Argument::kByte;
constexpr auto kLongHex = Argument::kLongHex;
constexpr auto kByteHex = Argument::kByteHex;

/// An argument that the reader has found to fit, or that came in as a byte.
constexpr std::uint8_t Byte(std::int32_t argument) { return static_cast<std::uint8_t>(argument); }

// clang-format off
constexpr std::array kOperations{
  Operation{Op::kEndRun,             "EndRun",             Form::kNumbers,  {},                           Result::kNone,    [](Programmer& io, const Arguments&)   { io.EndRun(); return 0; }},
  Operation{Op::kSetVcc,             "SetVcc",             Form::kNumbers,  {kLong},                      Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.SetVcc(a[0]); }},
  Operation{Op::kSetVpp,             "SetVpp",             Form::kNumbers,  {kLong, kByte},               Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.SetVpp(a[0], Byte(a[1])); }},
  Operation{Op::kSetGndPin,          "SetGndPin",          Form::kNumbers,  {kByte, kByte},               Result::kNone,    [](Programmer& io, const Arguments& a) { io.SetGndPin(Byte(a[0]), Byte(a[1])); return 0; }},
  Operation{Op::kSetVccPin,          "SetVccPin",          Form::kNumbers,  {kByte, kByte},               Result::kNone,    [](Programmer& io, const Arguments& a) { io.SetVccPin(Byte(a[0]), Byte(a[1])); return 0; }},
  Operation{Op::kSetVppPin,          "SetVppPin",          Form::kNumbers,  {kByte, kByte},               Result::kNone,    [](Programmer& io, const Arguments& a) { io.SetVppPin(Byte(a[0]), Byte(a[1])); return 0; }},
  Operation{Op::kSetOutputs,         "SetOutputs",         Form::kNumbers,  {kLong},                      Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.SetOutputs(a[0]); }},
  Operation{Op::kSignalPass,         "SignalPass",         Form::kNumbers,  {kLong},                      Result::kNone,    [](Programmer& io, const Arguments& a) { io.SignalPass(a[0]); return 0; }},
  Operation{Op::kSignalFail,         "SignalFail",         Form::kNumbers,  {kLong},                      Result::kNone,    [](Programmer& io, const Arguments& a) { io.SignalFail(a[0]); return 0; }},
  Operation{Op::kOpenProgrammer,     "OpenProgrammer",     Form::kNumbers,  {},                           Result::kDecimal, [](Programmer& io, const Arguments&)   { return io.OpenProgrammer(); }},
  Operation{Op::kWriteRegister,      "WriteRegister",      Form::kNumbers,  {kLongHex, kByteHex},         Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.WriteRegister(a[0], Byte(a[1])); }},
  Operation{Op::kReadRegister,       "ReadRegister",       Form::kNumbers,  {kByteHex},                   Result::kHex,     [](Programmer& io, const Arguments& a) { return io.ReadRegister(Byte(a[0])); }},
  Operation{Op::kWriteLatch,         "WriteLatch",         Form::kNumbers,  {kLongHex, kByte},            Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.WriteLatch(a[0], Byte(a[1])); }},
  Operation{Op::kDelayMs,            "DelayMs",            Form::kNumbers,  {kLong},                      Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.DelayMs(a[0]); }},
  Operation{Op::kShortDelay,         "ShortDelay",         Form::kNumbers,  {kLong},                      Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.ShortDelay(a[0]); }},
  Operation{Op::kQueueRegisterWrite, "QueueRegisterWrite", Form::kNumbers,  {kLongHex, kByteHex},         Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.QueueRegisterWrite(a[0], Byte(a[1])); }},
  Operation{Op::kFlushQueue,         "FlushQueue",         Form::kNumbers,  {},                           Result::kDecimal, [](Programmer& io, const Arguments&)   { return io.FlushQueue(); }},
  Operation{Op::kQueueDelay,         "QueueDelay",         Form::kNumbers,  {kLong},                      Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.QueueDelay(a[0]); }},
  Operation{Op::kReportStartupFailure, "ReportStartupFailure", Form::kNumbers, {},                        Result::kNone,    [](Programmer& io, const Arguments&)   { io.ReportStartupFailure(); return 0; }},
  Operation{Op::kSetFigMode,         "SetFigMode",         Form::kNumbers,  {kByte},                      Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.SetFigMode(Byte(a[0])); }},
  Operation{Op::kEndProgramming,     "EndProgramming",     Form::kNumbers,  {kLong, kLong, kLong, kLong}, Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.EndProgramming(a[0], a[1], a[2], a[3]); }},
  Operation{Op::kBlockTransfer,      "BlockTransfer",      Form::kNumbers,  {kLongHex, kLong, kLong},     Result::kDecimal, [](Programmer& io, const Arguments& a) { return io.BlockTransfer(a[0], a[1], a[2]); }},
  Operation{Op::kResetInterface,     "ResetInterface",     Form::kNumbers,  {},                           Result::kNone,    [](Programmer& io, const Arguments&)   { io.ResetInterface(); return 0; }},
  Operation{Op::kUsbComWrite,        "usbcomwrite",        Form::kPacket,   {},                           Result::kNone,    nullptr},
  Operation{Op::kUsbBulkRead,        "usbbulkread",        Form::kBulkRead, {},                           Result::kDecimal, nullptr},
  Operation{Op::kMsgBox,             "MsgBox",             Form::kBox,      {},                           Result::kDecimal, nullptr},
};
// clang-format on

constexpr bool InOrder() {
  for (std::size_t i = 0; i < kOperations.size(); ++i) {
    if (static_cast<std::size_t>(kOperations[i].op) != i) return false;
  }
  return true;
}
static_assert(InOrder(), "Row looks an operation up by its number");

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
  const int count = call.operation->argument_count();
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

}  // namespace

int Operation::argument_count() const {
  return static_cast<int>(std::ranges::find(arguments, Argument::kNone) - arguments.begin());
}

const Operation& Row(Op op) { return kOperations[static_cast<std::size_t>(op)]; }

const Operation* FindOperation(std::string_view name) {
  const auto found = std::ranges::find(kOperations, name, &Operation::name);
  return found == kOperations.end() ? nullptr : &*found;
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
  return {.operation = &Row(Op::kMsgBox),
          .arguments = {style},
          .title = std::u16string(title),
          .prompt = std::u16string(prompt)};
}

std::string Format(const Call& call) {
  std::string text(call.operation->name);
  text += '(';
  switch (call.operation->form) {
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
  if (answer.result != 0 || operation.form == Form::kBulkRead) {
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
