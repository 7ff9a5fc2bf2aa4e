#include "usb/signature.h"

#include <string>

#include "families/avr_jtag.h"
#include "families/flash_register.h"
#include "families/serial_isp.h"
#include "families/serial_lines.h"
#include "families/serial_page.h"
#include "families/two_wire.h"
#include "usb/request/signature_notes.h"

namespace fliglaf {
namespace {

/// The one family whose parts have no signature that could be read in their programming mode.
constexpr std::uint8_t kNoSignature = 2;

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
  const SharedVariables& vars = run.vars;
  if (!SignatureExpected(run) || vars.quorinprgmode[0] == kNoSignature) return 0;
  for (;;) {
    const Signature bytes = ReadSignature(run);
    const std::u16string text = SignatureText(
        run, run.io.datstr(bytes[0], 2), run.io.datstr(bytes[1], 2) + run.io.datstr(bytes[2], 2));
    if (SignatureMatches(run, bytes)) {
      NoteSignature(run, text);
      return 0;
    }
    switch (AskAboutSignature(run, text)) {
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
