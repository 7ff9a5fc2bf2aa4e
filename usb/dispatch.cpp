#include "usb/dispatch.h"

#include "families/family_table.h"
#include "usb/request/notes.h"
#include "usb/request/operation.h"

namespace fliglaf {
namespace {

void RunCode(Family& family, std::int16_t code) {
  if (code < operation::kProgram) return family.ReadPass(operation::CheckModeOf(code));
  switch (code) {
    case operation::kProgram:
      return family.Program();
    case 8:
      return family.Code8();
    case 9:
      return family.Code9();
    case 10:
      return family.Code10();
    case 11:
      return family.Code11();
    default:
      return;
  }
}

}  // namespace

void RunOperation(Run& run, WindowLines& lines, std::int16_t code) {
  RunNoted(run, code, [&] {
    const auto family = MakeFamily(run.vars.quorinprgmode[0], run, lines);
    if (family != nullptr) RunCode(*family, code);
  });
  if (run.outcome() == result::kReadBackFails) NoteReadBackFails(run);
}

}  // namespace fliglaf
