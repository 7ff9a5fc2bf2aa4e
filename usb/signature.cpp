#include "usb/signature.h"

#include <array>
#include <string>

#include "families/avr_jtag.h"
#include "families/flash_register.h"
#include "families/serial_isp.h"
#include "families/serial_lines.h"
#include "families/serial_page.h"
#include "families/two_wire.h"
#include "resources/string_table.h"

namespace fliglaf {
namespace {

/// Elements of quorinprgnote: labels of the manufacturer code and of the device code.
constexpr int kMakerLabel = 9;
constexpr int kDeviceLabel = 10;

/// The one family whose parts have no signature that could be read in their programming mode.
constexpr std::uint8_t kNoSignature = 2;

using Signature = std::array<std::uint8_t, 3>;

Signature ReadSignature(Run& run) {
  switch (run.vars.quorinprgmode[0]) {
    case 1:
      return ispFam1Signature(run);
    case 3:
    case 13:
    case 14:
      return serial::WordFamilySignature(run);
    case 4:
    case 5:
    case 6:
    case 7:
      return avrJtagSignature(run);
    case 8:
    case 9:
    case 10:
    case 11:
      return flashRegisterSignature(run);
    case 12:
      return fam12Signature(run);
    case 15:
      return fam15Signature(run);
    default:
      return {};
  }
}

}  // namespace

std::int16_t CheckSignature(Run& run) {
  SharedVariables& vars = run.vars;
  if (vars.quorintypeid[0] == 0 && vars.quorincompid[0] == 0) return 0;
  if (vars.quorinprgmode[0] == kNoSignature) return 0;
  for (;;) {
    const Signature bytes = ReadSignature(run);
    std::u16string text(vars.quorinprgnote[kMakerLabel]);
    text += run.io.datstr(bytes[0], 2);
    text += u"   ";
    text += vars.quorinprgnote[kDeviceLabel];
    text += run.io.datstr(bytes[1], 2) + run.io.datstr(bytes[2], 2);

    if (vars.quorintypeid[0] == bytes[1] && vars.quorincompid[0] == bytes[0]) {
      run.Log(u">>" + text + u"\n");
      return 0;
    }
    switch (run.desktop.MsgBox(
        platform::box_style::kWarningAbortRetryIgnore,
        run.Text(resources::text::kWarning) + run.Text(resources::text::kDeviceCodeError), text)) {
      case platform::box_answer::kRetry:
        continue;
      case platform::box_answer::kAbort:
        run.io.EndRun();
        return 1;
      default:
        return 0;
    }
  }
}

}  // namespace fliglaf
