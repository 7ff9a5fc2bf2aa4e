#include "usb/request/byte_check.h"

#include "resources/string_table.h"
#include "usb/request/engine_run.h"

namespace fliglaf {

namespace text = resources::text;

std::int32_t ByteCheck::Judge(const Byte& byte, CheckMode mode) {
  switch (mode) {
    case CheckMode::kRead:
      vars_.quorinibuffer[byte.index] = byte.data;
      return 0;
    case CheckMode::kVerify:
      return Verify(byte);
    case CheckMode::kBlankCheck:
      return BlankCheck(byte);
    case CheckMode::kCompare:
      return Compare(byte);
    default:
      return 0;
  }
}

std::int32_t ByteCheck::Verify(const Byte& byte) {
  const std::uint8_t expected = vars_.quorinibuffer[byte.index];
  if (byte.data == expected) return 0;
  return Fail(DeviceNote(byte) + Text(text::kBufferAddress) + Hex(byte.index, 8) +
              Text(text::kBufferData) + Hex(expected, 2) + u"H\n");
}

std::int32_t ByteCheck::BlankCheck(const Byte& byte) {
  const std::uint8_t erased = vars_.quorinbuftype[0] == 1 ? 0x00 : 0xFF;
  return byte.data == erased ? 0 : Fail(DeviceNote(byte) + u"H\n");
}

std::int32_t ByteCheck::Compare(const Byte& byte) {
  const std::uint8_t expected = vars_.quorinibuffer[byte.index];
  if (byte.data == expected) return 0;
  Turn();
  if (vars_.quorinprgresult[0] == result::kStopped) return 1;
  vars_.quorinMainRtstr.Append(1, u">> " + Hex(byte.address, 8) + u"H  " + Hex(byte.data, 2) +
                                      u"H        " + Hex(byte.index, 8) + u"H  " +
                                      Hex(expected, 2) + u"H\n");
  return 0;
}

/// The common beginning of a failed verify and a failed blank check.
std::u16string ByteCheck::DeviceNote(const Byte& byte) const {
  return Text(text::kDeviceAddress) + Hex(byte.address, 8) + Text(text::kDeviceData) +
         Hex(byte.data, 2);
}

std::int32_t ByteCheck::Fail(const std::u16string& note) {
  vars_.quorinMainRtstr.Append(0, note);
  vars_.quorinprgresult[0] = result::kFailure;
  return 1;
}

}  // namespace fliglaf
