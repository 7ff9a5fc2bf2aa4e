#include "usb/request/notes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "resources/string_table.h"
#include "shared/text.h"
#include "usb/request/socket_supply.h"

namespace fliglaf {
namespace {

constexpr std::size_t kLongestLogKept = 500;  // UTF-16 units
constexpr double kSecondsPerDay = 86'400;
/// Largest backward clock adjustment tolerated, in seconds.
constexpr double kClockSetBack = 60;

/// Elements of quorinprgnote.
namespace note {
constexpr int kBeforeName = 0;
constexpr int kAfterName = 1;
constexpr int kSuccess = 2;
constexpr int kFailure = 3;
constexpr int kStopped = 4;
constexpr int kListingHeader1 = 5;
constexpr int kListingHeader2 = 6;
constexpr int kReadBackFails = 12;
}  // namespace note

/// The host's fragments around a name, as they stand in captions and start lines.
std::u16string Framed(const EngineRun& run, std::u16string_view name) {
  std::u16string text(run.vars.quorinprgnote[note::kBeforeName]);
  text += name;
  text += run.vars.quorinprgnote[note::kAfterName];
  return text;
}

void Announce(EngineRun& run, std::u16string_view name) {
  const std::u16string caption = Framed(run, name);
  run.Log(u">>" + caption + u"\n");
  run.window.caption = caption;
}

/// Hundredths of a volt as volts, without trailing zeros: 550 gives "5.5".
std::u16string Volts(std::int32_t hundredths) {
  const std::int64_t magnitude = std::abs(std::int64_t{hundredths});
  std::string text = hundredths < 0 ? "-" : "";
  text += std::to_string(magnitude / 100);
  if (const auto fraction = magnitude % 100; fraction != 0) {
    text += '.';
    text += static_cast<char>('0' + fraction / 10);
    if (fraction % 10 != 0) text += static_cast<char>('0' + fraction % 10);
  }
  return Widen(text);
}

}  // namespace

void NoteStart(EngineRun& run, std::int16_t code) {
  if (run.vars.quorinMainRtstr[0].size() > kLongestLogKept) run.vars.quorinMainRtstr.Set(0, u"");
  Announce(run, run.vars.quorinMainmnuPrg[code]);
}

void NoteResult(EngineRun& run, std::int16_t code) {
  const auto named = [&run, code](int ending) {
    return u">>" + std::u16string(run.vars.quorinMainmnuPrg[code]) +
           std::u16string(run.vars.quorinprgnote[ending]) + u"\n";
  };
  switch (run.outcome()) {
    case result::kSuccess:
      return run.Log(named(note::kSuccess));
    case result::kFailure:
      return run.Log(named(note::kFailure));
    case result::kStopped:
      return run.Log(std::u16string(run.vars.quorinprgnote[note::kStopped]) + u"\n");
    default:
      return;
  }
}

void NoteReadBackFails(EngineRun& run) {
  run.Log(std::u16string(run.vars.quorinprgnote[note::kReadBackFails]) + u"\n");
}

void NoteListing(EngineRun& run) {
  std::u16string text(run.vars.quorinprgnote[note::kListingHeader1]);
  text += u"\n";
  text += run.vars.quorinprgnote[note::kListingHeader2];
  text += u"\n";
  text += run.vars.quorinMainRtstr[1];
  run.vars.quorinMainRtstr.Set(0, text);
  run.vars.quorinMainRtstr.Set(1, u"");
}

void prgnote1(EngineRun& run, std::uint8_t pass) {
  std::u16string supply;
  if (pass == 1 || pass == 2) {
    supply = u"(VCC:" + Volts(SetMarginSupply(run, pass == 1 ? 1 : -1)) + u"V) ";
  }
  run.io.DelayMs(100);
  run.vars.quorinprgmode[1] = 0;
  Announce(run, run.Text(resources::text::kVerify) + supply);
  run.desktop.DoEvents();
}

void NoteBlankCheck(EngineRun& run) { Announce(run, run.Text(resources::text::kBlankCheck)); }

void NoteElapsedTime(EngineRun& run, double start) {
  double elapsed = run.desktop.SecondsSinceMidnight() + run.ExtraMs / 1000.0 - start;
  if (elapsed < -kClockSetBack) elapsed += kSecondsPerDay;  // the run went over midnight
  elapsed = std::max(elapsed, 0.0);
  const auto hundredths = std::llround(elapsed * 100);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), ">> %lld.%02lldSec\n", hundredths / 100,
                hundredths % 100);
  run.Log(Widen(text.data()));
}

}  // namespace fliglaf
