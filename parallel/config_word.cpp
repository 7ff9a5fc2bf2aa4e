#include "parallel/config_word.h"

#include <array>
#include <string>
#include <string_view>

#include "resources/string_table.h"

namespace fliglaf {
namespace {

namespace text = resources::text;

constexpr std::uint8_t kModeWithSettings = 1;

// Bits of the low byte, and of the high one.
constexpr int kOscillator2 = 0x10;  // the third bit of the type
constexpr int kOscillator = 0x03;
constexpr int kWatchdog = 0x04;
constexpr int kNoPowerUpTimer = 0x08;
constexpr int kBrownOut = 0x40;
constexpr int kNotProtected = 0x20;

/// A type's name: what stands before the word for oscillator, and after it, if it is there.
struct Oscillator {
  std::u16string_view name;
  std::u16string_view pins;
};

constexpr std::array<Oscillator, 8> kOscillators{{{u"LP   ", {}},
                                                  {u"XT   ", {}},
                                                  {u"HS   ", {}},
                                                  {u"ExtClk ", u" PORT I/Oon RA6 "},
                                                  {u"INTRC ", u" PORT I/Oon RA6  "},
                                                  {u"INTRC ", u" CLKO on RA6   "},
                                                  {u"EXTRC ", u" PORT I/O on RA6   "},
                                                  {u"EXTRC ", u" CLKO on RA6   "}}};

std::u16string OscillatorText(const EngineRun& run, std::size_t type) {
  const Oscillator& oscillator = kOscillators[type];
  std::u16string name(oscillator.name);
  if (!oscillator.pins.empty()) name += run.Text(text::kOscillator);
  return name += oscillator.pins;
}

std::u16string Enabled(const EngineRun& run, bool enabled) {
  return run.Text(enabled ? text::kEnable : text::kDisable);
}

std::u16string Settings(const EngineRun& run, int low, int high) {
  const std::size_t type =
      static_cast<unsigned>(low & kOscillator) + ((low & kOscillator2) != 0 ? 4U : 0U);
  return OscillatorText(run, type) + run.Text(text::kWatchdog) +
         Enabled(run, (low & kWatchdog) != 0) + u" " + run.Text(text::kBlockProtect) +
         Enabled(run, (high & kNotProtected) == 0) + u" " + u"  /PWRTE :" +
         Enabled(run, (low & kNoPowerUpTimer) == 0) + u"  BODEN :" +
         Enabled(run, (low & kBrownOut) != 0) + u" ";
}

}  // namespace

void DescribeConfigWord(EngineRun& run, std::int16_t low, std::int16_t high) {
  run.Log(u"\n>>FIG:" + run.io.datstr(high, 2) + run.io.datstr(low, 2) + u"H    " +
          run.Text(text::kOscillatorType) +
          (run.vars.quorinprgmode[0] == kModeWithSettings ? Settings(run, low, high)
                                                          : OscillatorText(run, 0)) +
          u"\n\n");
}

}  // namespace fliglaf
