#include "usb/components/operations.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace fliglaf {
namespace {

constexpr auto kLong = Argument::kLong;
constexpr auto kByte = Argument::kByte;
constexpr auto kLongHex = Argument::kLongHex;
constexpr auto kByteHex = Argument::kByteHex;

constexpr auto kNone = Result::kNone;
constexpr auto kDecimal = Result::kDecimal;

/// The call of a method that takes numbers; bytes have been checked by whoever read them.
template <auto kMethod>
struct Call;
template <class R, class... P, R (Programmer::*kMethod)(P...)>
struct Call<kMethod> {
  static std::int32_t Make(Programmer& io, [[maybe_unused]] const Arguments& arguments) {
    return [&]<std::size_t... kPlaces>(std::index_sequence<kPlaces...>)->std::int32_t {
      if constexpr (!std::is_void_v<R>) {
        return (io.*kMethod)(static_cast<P>(arguments[kPlaces])...);
      } else {
        (io.*kMethod)(static_cast<P>(arguments[kPlaces])...);
        return 0;
      }
    }
    (std::index_sequence_for<P...>());
  }
};

}  // namespace

// clang-format off
constexpr std::array<Operation, kOperationCount> kOperations{{
  {Op::kEndRun,               "EndRun",               {},                           kNone,        Call<&Programmer::EndRun>::Make},
  {Op::kSetVcc,               "SetVcc",               {kLong},                      kDecimal,     Call<&Programmer::SetVcc>::Make},
  {Op::kSetVpp,               "SetVpp",               {kLong, kByte},               kDecimal,     Call<&Programmer::SetVpp>::Make},
  {Op::kSetGndPin,            "SetGndPin",            {kByte, kByte},               kNone,        Call<&Programmer::SetGndPin>::Make},
  {Op::kSetVccPin,            "SetVccPin",            {kByte, kByte},               kNone,        Call<&Programmer::SetVccPin>::Make},
  {Op::kSetVppPin,            "SetVppPin",            {kByte, kByte},               kNone,        Call<&Programmer::SetVppPin>::Make},
  {Op::kSetOutputs,           "SetOutputs",           {kLong},                      kDecimal,     Call<&Programmer::SetOutputs>::Make},
  {Op::kSignalPass,           "SignalPass",           {kLong},                      kNone,        Call<&Programmer::SignalPass>::Make},
  {Op::kSignalFail,           "SignalFail",           {kLong},                      kNone,        Call<&Programmer::SignalFail>::Make},
  {Op::kOpenProgrammer,       "OpenProgrammer",       {},                           kDecimal,     Call<&Programmer::OpenProgrammer>::Make},
  {Op::kWriteRegister,        "WriteRegister",        {kLongHex, kByteHex},         kDecimal,     Call<&Programmer::WriteRegister>::Make},
  {Op::kReadRegister,         "ReadRegister",         {kByteHex},                   Result::kHex, Call<&Programmer::ReadRegister>::Make},
  {Op::kWriteLatch,           "WriteLatch",           {kLongHex, kByte},            kDecimal,     Call<&Programmer::WriteLatch>::Make},
  {Op::kDelayMs,              "DelayMs",              {kLong},                      kDecimal,     Call<&Programmer::DelayMs>::Make},
  {Op::kShortDelay,           "ShortDelay",           {kLong},                      kDecimal,     Call<&Programmer::ShortDelay>::Make},
  {Op::kQueueRegisterWrite,   "QueueRegisterWrite",   {kLongHex, kByteHex},         kDecimal,     Call<&Programmer::QueueRegisterWrite>::Make},
  {Op::kFlushQueue,           "FlushQueue",           {},                           kDecimal,     Call<&Programmer::FlushQueue>::Make},
  {Op::kQueueDelay,           "QueueDelay",           {kLong},                      kDecimal,     Call<&Programmer::QueueDelay>::Make},
  {Op::kReportStartupFailure, "ReportStartupFailure", {},                           kNone,        Call<&Programmer::ReportStartupFailure>::Make},
  {Op::kSetFigMode,           "SetFigMode",           {kByte},                      kDecimal,     Call<&Programmer::SetFigMode>::Make},
  {Op::kEndProgramming,       "EndProgramming",       {kLong, kLong, kLong, kLong}, kDecimal,     Call<&Programmer::EndProgramming>::Make},
  {Op::kBlockTransfer,        "BlockTransfer",        {kLongHex, kLong, kLong},     kDecimal,     Call<&Programmer::BlockTransfer>::Make},
  {Op::kResetInterface,       "ResetInterface",       {},                           kNone,        Call<&Programmer::ResetInterface>::Make},
  {Op::kUsbComWrite,          "usbcomwrite",          {Argument::kPacket},          kNone,        nullptr},
  {Op::kUsbBulkRead,          "usbbulkread",          {Argument::kBuffer},          kDecimal,     nullptr},
}};
// clang-format on

static_assert(
    [] {
      for (std::size_t i = 0; i < kOperations.size(); ++i) {
        if (static_cast<std::size_t>(kOperations[i].op) != i) return false;
      }
      return true;
    }(),
    "Row looks an operation up by its number");

const Operation* FindOperation(std::string_view name) {
  const auto found = std::ranges::find(kOperations, name, &Operation::name);
  return found == kOperations.end() ? nullptr : &*found;
}

}  // namespace fliglaf
