#include "simulator/waveform.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace fliglaf::simulator {
namespace {

/// How much text is handed over at a time.
constexpr std::size_t kPiece = 65'536;

/// The identifiers of signals are single letters, from this one on.
constexpr char kFirstIdentifier = 'a';

}  // namespace

Waveform::Waveform(const Clock& clock, std::span<const Signal> signals, std::string_view title,
                   std::function<void(std::string_view)> sink)
    : clock_(clock), signals_(signals.begin(), signals.end()), sink_(std::move(sink)) {
  signals_.push_back({"vcc", kVcc});
  signals_.push_back({"vpp", kVpp});
  for (const Signal& signal : signals_) watched_ |= signal.line;
  unknown_ = watched_;
  WriteHeader(title);
}

void Waveform::WriteHeader(std::string_view title) {
  text_.append("$version fliglaf $end\n$comment ").append(title).append(" $end\n");
  text_ += "$timescale " + std::to_string(kTick) + " ns $end\n$scope module socket $end\n";
  char identifier = kFirstIdentifier;
  for (const Signal& signal : signals_) {
    text_.append("$var wire 1 ").append(1, identifier++).append(" ").append(signal.role);
    text_ += " $end\n";
  }
  text_ += "$upscope $end\n$enddefinitions $end\n";
}

void Waveform::Show(Lines levels) {
  const Lines changed = ((levels ^ shown_) & watched_) | unknown_;
  if (changed == 0) return;
  shown_ = levels;
  unknown_ = 0;
  WriteTime(clock_.now() / kTick);
  for (std::size_t signal = 0; signal < signals_.size(); ++signal) {
    if ((changed & signals_[signal].line) != 0) WriteLevel(signal);
  }
  if (text_.size() >= kPiece) HandOver();
}

void Waveform::End() {
  WriteTime(std::max(clock_.now() / kTick, tick_ + 1));
  HandOver();
}

void Waveform::WriteTime(std::int64_t tick) {
  if (tick == tick_) return;
  tick_ = tick;
  char digits[20];
  text_ += '#';
  text_.append(digits, std::to_chars(digits, digits + sizeof digits, tick).ptr);
  text_ += '\n';
}

void Waveform::WriteLevel(std::size_t signal) {
  text_ += (shown_ & signals_[signal].line) != 0 ? '1' : '0';
  text_ += static_cast<char>(kFirstIdentifier + signal);
  text_ += '\n';
}

void Waveform::HandOver() {
  sink_(text_);
  text_.clear();
}

}  // namespace fliglaf::simulator
