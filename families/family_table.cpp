#include "families/family_table.h"

#include <algorithm>
#include <array>

#include "families/avr_jtag.h"
#include "families/flash_register.h"
#include "families/framed_page.h"
#include "families/isp_fam1.h"
#include "families/isp_fam2.h"
#include "families/isp_fam3.h"
#include "families/serial_page_fam13.h"
#include "families/serial_page_fam14.h"
#include "families/two_wire.h"

namespace fliglaf {
namespace {

using Routine = void (*)(Run&);

/// A family whose routines have no class yet.
struct Routines {
  Routine enter;
  void (*read_pass)(Run&, std::int16_t mode);
  Routine program;
  Routine code8 = nullptr;
  Routine code9 = nullptr;
  Routine code10 = nullptr;
  Routine code11 = nullptr;
  Signature (*signature)(Run&) = nullptr;
};

template <auto& kRoutines>
class RoutineFamily : public Family {
 public:
  explicit RoutineFamily(Run& request) : Family(request) {}
  void Enter() override { kRoutines.enter(run); }
  void ReadPass(CheckMode mode) override {
    kRoutines.read_pass(run, static_cast<std::int16_t>(mode));
  }
  void Program() override { kRoutines.program(run); }
  void Code8() override { Call(kRoutines.code8); }
  void Code9() override { Call(kRoutines.code9); }
  void Code10() override { Call(kRoutines.code10); }
  void Code11() override { Call(kRoutines.code11); }
  Signature ReadSignature() override {
    return kRoutines.signature != nullptr ? kRoutines.signature(run) : Signature{};
  }

 private:
  void Call(Routine routine) {
    if (routine != nullptr) routine(run);
  }
};

template <auto& kRoutines>
std::unique_ptr<Family> Make(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<RoutineFamily<kRoutines>>(run);
}

// clang-format off
constexpr Routines kFamily8{enterFlashRegister, flashDataOp8, flashProgram8, flashErase8, flashWriteLock, nullptr, nullptr, flashRegisterSignature};
constexpr Routines kFamily9{enterFlashRegister, flashDataOp9, flashProgram9, flashErase9, flashWriteLock, nullptr, nullptr, flashRegisterSignature};
constexpr Routines kFamily10{enterFlashRegister, flashDataOp10, flashProgram10, flashErase10, flashWriteLock, nullptr, nullptr, flashRegisterSignature};
constexpr Routines kFamily11{enterFlashRegister, flashDataOp10, flashProgram10, flashErase10, nullptr, nullptr, nullptr, flashRegisterSignature};
// clang-format on

struct FamilyRow {
  std::uint8_t code;
  std::unique_ptr<Family> (*make)(Run&, WindowLines&);
};

constexpr std::array kFamilies{
    FamilyRow{1, MakeIspFam1},          FamilyRow{2, MakeIspFam2},
    FamilyRow{3, MakeIspFam3},          FamilyRow{4, MakeAvrJtagA},
    FamilyRow{5, MakeAvrJtagB},         FamilyRow{6, MakeAvrJtagB},
    FamilyRow{7, MakeAvrJtagB},         FamilyRow{8, Make<kFamily8>},
    FamilyRow{9, Make<kFamily9>},       FamilyRow{10, Make<kFamily10>},
    FamilyRow{11, Make<kFamily11>},     FamilyRow{12, MakeTwoWire12},
    FamilyRow{13, MakeSerialPageFam13}, FamilyRow{14, MakeSerialPageFam14},
    FamilyRow{15, MakeFramedPage},      FamilyRow{16, MakeTwoWire16},
};

}  // namespace

std::unique_ptr<Family> MakeFamily(std::uint8_t code, Run& run, WindowLines& lines) {
  const auto row = std::ranges::find(kFamilies, code, &FamilyRow::code);
  return row == kFamilies.end() ? nullptr : row->make(run, lines);
}

}  // namespace fliglaf
