#include "record/recorder.h"

#include <cmath>
#include <string>

#include <fmt/format.h>

#include "record/format.h"

namespace fliglaf::record {
namespace {

constexpr double kSecondsPerDay = 86'400;

/// The line that ends the log of a request: `>> 1.25Sec`.
constexpr std::u16string_view kElapsedHead = u">> ";
constexpr std::u16string_view kElapsedTail = u"Sec\n";
/// Follows it when the call that signals the result fails.
constexpr std::u16string_view kFailedCallHead = u">>IoHelper.";

/// Where the hundredths of seconds of that line stand in `log`, and what they are.
struct Elapsed {
  std::size_t position;
  std::size_t length;
  std::int64_t hundredths;
};

std::optional<Elapsed> FindElapsed(std::u16string_view log) {
  const std::size_t tail = log.rfind(kElapsedTail);
  if (tail == std::u16string_view::npos) return std::nullopt;
  const std::u16string_view behind = log.substr(tail + kElapsedTail.size());
  if (!behind.empty() && !behind.starts_with(kFailedCallHead)) return std::nullopt;
  const std::u16string_view number_and_before = log.substr(0, tail);
  const std::size_t head = number_and_before.rfind(kElapsedHead);
  if (head == std::u16string_view::npos) return std::nullopt;
  const std::size_t position = head + kElapsedHead.size();
  std::int64_t hundredths = 0;
  for (const char16_t c : number_and_before.substr(position)) {
    if (c == u'.') continue;
    if (c < u'0' || c > u'9' || hundredths > 1'000'000'000) return std::nullopt;
    hundredths = hundredths * 10 + (c - u'0');
  }
  return Elapsed{position, tail - position, hundredths};
}

}  // namespace

std::int32_t RecordingProgrammer::Perform(Op op, const Arguments& arguments) {
  const Operation& row = Row(op);
  return traffic_.Record({.operation = &row, .arguments = arguments},
                         [&] { return row.perform(inner_, arguments); });
}

void RecordingProgrammer::usbcomwrite(std::span<const std::uint8_t> packet) {
  traffic_.Record(PacketCall(packet), [&] {
    inner_.usbcomwrite(packet);
    return 0;
  });
}

void RecordingProgrammer::usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) {
  traffic_.RecordBulkRead(destination, status, [&] { inner_.usbbulkread(destination, status); });
}

std::u16string RecordingProgrammer::datstr(std::int32_t value, std::int32_t digits) {
  return inner_.datstr(value, digits);
}

int RecordingDesktop::MsgBox(int style, std::u16string_view title, std::u16string_view prompt) {
  return traffic_.Record(BoxCall(style, title, prompt),
                         [&] { return inner_.MsgBox(style, title, prompt); });
}

void RecordingDesktop::DoEvents() {
  const std::uint8_t result_before = vars_.quorinprgresult[0];
  watchdog_ticked_ = false;
  traffic_.BeginTurn();
  inner_.DoEvents();
  traffic_.Turned(result_before, watchdog_ticked_);
}

std::u16string RecordingDesktop::LoadText(std::int64_t number) { return inner_.LoadText(number); }

double RecordingDesktop::SecondsSinceMidnight() {
  const double now = inner_.SecondsSinceMidnight();
  if (!first_time_) first_time_ = now;
  last_time_ = now;
  return now;
}

std::u16string RecordingDesktop::AtStandingClock(std::u16string_view log) const {
  std::u16string text(log);
  const std::optional<Elapsed> elapsed = FindElapsed(log);
  if (!elapsed || !first_time_) return text;
  double passed = *last_time_ - *first_time_;
  if (passed < 0) passed += kSecondsPerDay;
  const std::int64_t standing = elapsed->hundredths - std::llround(passed * 100);
  if (standing < 0) return text;  // not the line of this run
  const std::string seconds = fmt::format("{}.{:02}", standing / 100, standing % 100);
  return text.replace(elapsed->position, elapsed->length,
                      std::u16string(seconds.begin(), seconds.end()));
}

void RecordingDesktop::StartTimer(platform::Timer& timer) {
  Stand* stand = Find(timer);
  if (stand == nullptr) {
    // A stand is kept while the desktop lives: it may be stopped in the middle of its own tick.
    stand = &stands_.emplace_back(timer, inner_, [this, &timer] {
      if (timer.name() == kWatchdog) watchdog_ticked_ = true;
      timer.Tick();
    });
  }
  stand->inner.Enable(timer.interval_ms());
}

void RecordingDesktop::StopTimer(platform::Timer& timer) {
  if (Stand* stand = Find(timer)) stand->inner.Disable();
}

RecordingDesktop::Stand* RecordingDesktop::Find(const platform::Timer& timer) {
  for (Stand& stand : stands_) {
    if (stand.timer == &timer) return &stand;
  }
  return nullptr;
}

Recorder::Recorder(Programmer& programmer, platform::Desktop& desktop, SharedVariables& vars,
                   std::string& out)
    : vars_(vars),
      out_(out),
      traffic_(vars, out),
      programmer_(programmer, traffic_),
      desktop_(desktop, vars, traffic_) {}

void Recorder::Begin(std::string_view call) {
  before_ = Snapshot(vars_);
  out_ += fmt::format("{}\n{}\n", kFirstLine, Name(Section::kBefore));
  before_.WriteContents(out_);
  out_ += fmt::format("{}\n{}\n{}\n", Name(Section::kCall), call, Name(Section::kTraffic));
  desktop_.StartClock();
  traffic_.Start();
}

bool Recorder::End() {
  traffic_.Finish();
  out_ += fmt::format("{}\n", Name(Section::kAfter));
  Snapshot(vars_).WriteChanges(out_, before_, desktop_.AtStandingClock(vars_.quorinMainRtstr[0]));
  problem_ = traffic_.problem();
  return problem_.empty();
}

}  // namespace fliglaf::record
