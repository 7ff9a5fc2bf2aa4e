#include "host/memory_map.h"

#include <string>

#include "resources/string_table.h"
#include "shared/text.h"

namespace fliglaf {
namespace {

constexpr std::uint8_t kMapWithDataMemory = 30;
constexpr std::uint8_t kMapWithOneWord = 31;

/// Texts of the user's language.
class Texts {
 public:
  Texts(const SharedVariables& vars, platform::Desktop& desktop)
      : base_(vars.quorinLanguage[0]), desktop_(desktop) {}
  std::u16string operator()(int number) const { return desktop_.LoadText(base_ + number); }

 private:
  std::int64_t base_;
  platform::Desktop& desktop_;
};

/// Program memory, data memory, eight identification bytes and fourteen configuration bytes, in the
/// buffer one after the other with a gap of eight bytes before the last.
std::u16string MapWithDataMemory(const SharedVariables& vars, const Texts& text) {
  const std::uint16_t data = static_cast<std::uint16_t>((vars.quorinwoption[0] + 1) * 64);
  const std::int64_t program = std::int64_t{vars.quorintlength[0]} - data - 32;
  const std::int64_t id = program + data;
  return text(resources::text::kProgramMemory) + u"000H---" + HexNumber(program - 1) +
         u"H    000H---" + HexNumber(program - 1) + u"H   \r\r" +  //
         text(resources::text::kDataMemory) + u"000H---" + HexNumber(data - 1) + u"H     " +
         HexNumber(program) + u"H---" + HexNumber(id - 1) + u"H\r\r" +  //
         text(resources::text::kIdLocations) + u"200000H--200007H   " + HexNumber(id) + u"H---" +
         HexNumber(id + 7) + u"H   \r\r" +  //
         text(resources::text::kConfigWord) + u"300000H--30000DH   " + HexNumber(id + 16) +
         u"H---" + HexNumber(id + 29) + u"H   \r\r";
}

/// Program memory with the configuration word as its last address.
std::u16string MapWithOneWord(const SharedVariables& vars, const Texts& text) {
  const std::int64_t end = std::int64_t{vars.quorintlength[0]} - vars.quorinpagelength[0];
  return text(resources::text::kProgramMemory) + u"000H---" + HexNumber(end - 2) + u"H    000H---" +
         HexNumber(end - 2) + u"H   \r\r" +  //
         text(resources::text::kConfigWord) + u"    " + HexNumber(end - 1) + u"H         " +
         HexNumber(end - 1) + u"H   \r\r";
}

}  // namespace

void ShowMemoryMap(const SharedVariables& vars, platform::Desktop& desktop, std::uint8_t number) {
  if (number != kMapWithDataMemory && number != kMapWithOneWord) return;
  const Texts text(vars, desktop);
  std::u16string prompt(16, u' ');
  prompt += text(resources::text::kDeviceAndBuffer) + u"\r\r";
  prompt +=
      number == kMapWithDataMemory ? MapWithDataMemory(vars, text) : MapWithOneWord(vars, text);
  desktop.MsgBox(platform::box_style::kInformationOk, text(resources::text::kNote), prompt);
}

}  // namespace fliglaf
