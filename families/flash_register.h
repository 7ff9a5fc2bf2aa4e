// Families 8 to 11: microcontrollers whose flash is reached through four registers behind a test
// access port of IEEE 1149.1. The numbers are those of the data sheets of such parts.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

// The second memory area of families 8 and 9 lies behind the main array, in one address space of
// 64 KiB.
[[nodiscard]] std::unique_ptr<Family> MakeFlashRegister8(Run& run, WindowLines& lines);
/// Also programs the page between the main array and the second area.
[[nodiscard]] std::unique_ptr<Family> MakeFlashRegister9(Run& run, WindowLines& lines);

// The second area of families 10 and 11 has addresses of its own.
[[nodiscard]] std::unique_ptr<Family> MakeFlashRegister10(Run& run, WindowLines& lines);
/// Has no operation for the lock bytes.
[[nodiscard]] std::unique_ptr<Family> MakeFlashRegister11(Run& run, WindowLines& lines);

}  // namespace fliglaf
