#include "families/family_table.h"

#include <algorithm>
#include <array>

#include "families/avr_jtag.h"
#include "families/flash_register.h"
#include "families/framed_page.h"
#include "families/isp_fam1.h"
#include "families/isp_fam2.h"
#include "families/isp_fam3.h"
#include "families/serial_page.h"
#include "families/two_wire.h"

namespace fliglaf {
namespace {

struct FamilyRow {
  std::uint8_t code;
  std::unique_ptr<Family> (*make)(Run&, WindowLines&);
};

// clang-format off
constexpr std::array kFamilies{
    FamilyRow{1, MakeIspFam1},
    FamilyRow{2, MakeIspFam2},
    FamilyRow{3, MakeIspFam3},
    FamilyRow{4, MakeAvrJtagA},
    FamilyRow{5, MakeAvrJtagB},
    FamilyRow{6, MakeAvrJtagB},
    FamilyRow{7, MakeAvrJtagB},
    FamilyRow{8, MakeFlashRegister8},
    FamilyRow{9, MakeFlashRegister9},
    FamilyRow{10, MakeFlashRegister10},
    FamilyRow{11, MakeFlashRegister11},
    FamilyRow{12, MakeTwoWire12},
    FamilyRow{13, MakeSerialPage13},
    FamilyRow{14, MakeSerialPage14},
    FamilyRow{15, MakeFramedPage},
    FamilyRow{16, MakeTwoWire16},
};
// clang-format on

}  // namespace

std::unique_ptr<Family> MakeFamily(std::uint8_t code, Run& run, WindowLines& lines) {
  const auto row = std::ranges::find(kFamilies, code, &FamilyRow::code);
  return row == kFamilies.end() ? nullptr : row->make(run, lines);
}

}  // namespace fliglaf
