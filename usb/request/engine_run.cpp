#include "usb/request/engine_run.h"

#include <algorithm>
#include <limits>

namespace fliglaf {

std::u16string EngineRun::Text(int number) const {
  return desktop.LoadText(std::int64_t{vars.quorinLanguage[0]} + number);
}

void EngineRun::Progress(std::int64_t done, std::int64_t whole) {
  const std::int64_t percent = whole == 0 ? 0 : done * 100 / whole;
  vars.quorinprgmode[1] =
      static_cast<std::uint8_t>(std::clamp(percent, std::int64_t{0}, std::int64_t{100}));
}

std::int32_t EngineRun::WriteTime(std::int32_t factor) const {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      std::int64_t{vars.quorinpwte[0]} * factor, Limits::min(), Limits::max()));
}

void RequireData(const EngineRun& run, std::int64_t first, std::int64_t last) {
  constexpr std::int64_t kLargestDevice = 0x4'0000;  // bytes
  const auto most = std::max<std::int64_t>(run.vars.quorinibuffer.count(), kLargestDevice);
  if (last - first >= most) throw RangeError();
}

void ProgressAt(EngineRun& run, std::int64_t address) {
  const std::int64_t first = run.vars.quorinwltbigendbuf[0];
  run.Progress(address - first, run.vars.quorintlength[0] - first + 1);
}

}  // namespace fliglaf
