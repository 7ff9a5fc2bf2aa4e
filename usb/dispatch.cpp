#include "usb/dispatch.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "families/avr_jtag.h"
#include "families/flash_register.h"
#include "families/serial_isp.h"
#include "families/serial_page.h"
#include "families/two_wire.h"
#include "usb/request/notes.h"
#include "usb/request/operation.h"

namespace fliglaf {
namespace {

using ReadPass = void (*)(Run&, std::int16_t mode);
using Routine = void (*)(Run&);

/// The routines of one family; null runs nothing.
struct FamilyRoutines {
  std::uint8_t family;
  ReadPass read_pass;  ///< codes below 6
  Routine program;     ///< code 6
  Routine code8;
  Routine code9;
  Routine code10;
  Routine code11;
};

template <std::uint8_t kSelector>
void LockLevels(Run& run) {
  ispWriteLockLevels(run, kSelector);
}

template <std::uint8_t kBits>
void Fam2Lock(Run& run) {
  ispFam2Lock(run, kBits);
}

template <std::int32_t kBits>
void LockBits(Run& run) {
  ispWriteLockBits(run, kBits);
}

template <void (*kConfig)(Run&, std::string_view direction)>
void WriteConfig(Run& run) {
  kConfig(run, "input");
}

// clang-format off
constexpr std::array kFamilies{
  //             family read pass         program         8              9              10             11
  FamilyRoutines{1,     ispFam1ReadPass, ispFam1Program, LockLevels<0>, LockLevels<1>, LockLevels<2>, ispFam1Op11},
  FamilyRoutines{2,     ispFam2ReadPass, ispFam2Program, Fam2Lock<3>,   Fam2Lock<1>,   Fam2Lock<0>,   ispFam2Op11},
  FamilyRoutines{3,     ispFam3ReadPass, ispFam3Program, LockBits<2>,   LockBits<0>,   ispFam3Op10,   nullptr},
  FamilyRoutines{4,     jtagAReadPass,   jtagAProgram,    jtagAErase,    jtagWriteConfig, nullptr,     nullptr},
  FamilyRoutines{5,     jtagBReadPass,   jtagBProgram,    jtagBErase,    jtagWriteConfig, nullptr,     nullptr},
  FamilyRoutines{6,     jtagBReadPass,   jtagBProgram,    jtagBErase,    jtagWriteConfig, nullptr,     nullptr},
  FamilyRoutines{7,     jtagBReadPass,   jtagBProgram,    jtagBErase,    jtagWriteConfig, nullptr,     nullptr},
  FamilyRoutines{8,     flashDataOp8,    flashProgram8,   flashErase8,   flashWriteLock,  nullptr,     nullptr},
  FamilyRoutines{9,     flashDataOp9,    flashProgram9,   flashErase9,   flashWriteLock,  nullptr,     nullptr},
  FamilyRoutines{10,    flashDataOp10,   flashProgram10,  flashErase10,  flashWriteLock,  nullptr,     nullptr},
  FamilyRoutines{11,    flashDataOp10,   flashProgram10,  flashErase10,  nullptr,         nullptr,     nullptr},
  FamilyRoutines{12,    dataOp12,        program12,       erase12,       writeLock12,   nullptr,     nullptr},
  FamilyRoutines{13,    dataOp13,        program13,      erase13,       WriteConfig<config13>, nullptr, nullptr},
  FamilyRoutines{14,    dataOp14,        program14,      erase14,       WriteConfig<config14>, nullptr, nullptr},
  FamilyRoutines{15,    dataOp15,        program15,      erase15,       WriteConfig<config15>, nullptr, nullptr},
  FamilyRoutines{16,    dataOp12,        program12,       erase12,       writeLock12,   nullptr,     nullptr},
};
// clang-format on

Routine OneOff(const FamilyRoutines& routines, std::int16_t code) {
  switch (code) {
    case operation::kProgram:
      return routines.program;
    case 8:
      return routines.code8;
    case 9:
      return routines.code9;
    case 10:
      return routines.code10;
    case 11:
      return routines.code11;
    default:
      return nullptr;
  }
}

void RunRoutine(Run& run, std::uint8_t family, std::int16_t code) {
  const auto found = std::ranges::find(kFamilies, family, &FamilyRoutines::family);
  if (found == kFamilies.end()) return;
  if (code < operation::kProgram) {
    if (found->read_pass != nullptr) {
      found->read_pass(run, static_cast<std::int16_t>(code - operation::kRead));
    }
  } else if (const Routine routine = OneOff(*found, code)) {
    routine(run);
  }
}

}  // namespace

void RunOperation(Run& run, std::int16_t code) {
  RunNoted(run, code, [&run, code] { RunRoutine(run, run.vars.quorinprgmode[0], code); });
  if (run.outcome() == result::kReadBackFails) NoteReadBackFails(run);
}

}  // namespace fliglaf
