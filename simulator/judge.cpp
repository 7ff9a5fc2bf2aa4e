#include "simulator/judge.h"

#include <string>

#include "resources/string_table.h"
#include "shared/text.h"
#include "usb/run.h"

namespace fliglaf::simulator {
namespace {

namespace text = resources::text;

std::u16string_view Text(const SharedVariables& vars, int number) {
  return resources::FindText(std::int64_t{vars.quorinLanguage[0]} + number);
}

std::uint8_t ErasedValue(const SharedVariables& vars) {
  return vars.quorinbuftype[0] == 1 ? 0x00 : 0xFF;
}

/// The common beginning of a failed verify and a failed blank check.
std::u16string DeviceNote(const SharedVariables& vars, std::uint8_t data, std::int32_t address) {
  return std::u16string(Text(vars, text::kDeviceAddress)) + HexDigits(address, 8) +
         std::u16string(Text(vars, text::kDeviceData)) + HexDigits(data, 2);
}

std::int32_t Fail(SharedVariables& vars, const std::u16string& note) {
  vars.quorinMainRtstr.Append(0, note);
  vars.quorinprgresult[0] = result::kFailure;
  return 1;
}

std::int32_t Verify(SharedVariables& vars, std::uint8_t data, std::int32_t address) {
  const std::uint8_t expected = vars.quorinibuffer[address];
  if (data == expected) return 0;
  return Fail(vars, DeviceNote(vars, data, address) +
                        std::u16string(Text(vars, text::kBufferAddress)) + HexDigits(address, 8) +
                        std::u16string(Text(vars, text::kBufferData)) + HexDigits(expected, 2) +
                        u"H\n");
}

std::int32_t BlankCheck(SharedVariables& vars, std::uint8_t data, std::int32_t address) {
  if (data == ErasedValue(vars)) return 0;
  return Fail(vars, DeviceNote(vars, data, address) + u"H\n");
}

std::int32_t Compare(SharedVariables& vars, std::uint8_t data, std::int32_t address,
                     const std::function<void()>& turn) {
  const std::uint8_t expected = vars.quorinibuffer[address];
  if (data == expected) return 0;
  if (turn) turn();
  if (vars.quorinprgresult[0] == result::kStopped) return 1;
  vars.quorinMainRtstr.Append(1, u">> " + HexDigits(address, 8) + u"H  " + HexDigits(data, 2) +
                                     u"H        " + HexDigits(address, 8) + u"H  " +
                                     HexDigits(expected, 2) + u"H\n");
  return 0;
}

}  // namespace

std::int32_t Judge(SharedVariables& vars, std::int32_t data, std::int32_t address,
                   std::int32_t check_mode, const std::function<void()>& turn) {
  const auto byte = static_cast<std::uint8_t>(data);
  switch (check_mode) {
    case check_mode::kRead:
      vars.quorinibuffer[address] = byte;
      return 0;
    case check_mode::kVerify:
      return Verify(vars, byte, address);
    case check_mode::kBlankCheck:
      return BlankCheck(vars, byte, address);
    case check_mode::kCompare:
      return Compare(vars, byte, address, turn);
    default:
      return 0;
  }
}

}  // namespace fliglaf::simulator
