// The families of devices by their code.
#pragma once

#include <cstdint>
#include <memory>

#include "families/family.h"
#include "families/lines.h"

namespace fliglaf {

/// The family with `code`, on the window's lines; null for a code without one.
[[nodiscard]] std::unique_ptr<Family> MakeFamily(std::uint8_t code, Run& run, WindowLines& lines);

}  // namespace fliglaf
