#include "replay/playback.h"

#include <algorithm>

#include <fmt/format.h>

namespace fliglaf::record {
namespace {

/// No routine turns the message loop this often without a call, unless it waits for something.
constexpr std::uint64_t kMostIdleTurns = 100'000;
constexpr std::size_t kCallsKept = 10;
constexpr std::string_view kEndOfRun = "the end of the run";

std::string Times(std::uint64_t times, const Call& call) {
  return times == 1 ? Format(call) : fmt::format("{} * {}", times, Format(call));
}

std::string LastLine(std::u16string_view log) {
  if (log.ends_with(u'\n')) log.remove_suffix(1);
  const std::size_t start = log.rfind(u'\n');
  return Quote(start == std::u16string_view::npos ? log : log.substr(start + 1));
}

}  // namespace

Playback::Playback(Reader& reader, SharedVariables& vars, bool keep_calls)
    : reader_(reader), vars_(vars), keep_calls_(keep_calls) {
  reader_.Next(next_);
}

std::int32_t Playback::Numbers(Op op, const Arguments& arguments) {
  if (!Load() || current_.call.operation->op != op || current_.call.arguments != arguments) {
    Differ({.operation = &Row(op), .arguments = arguments});
  }
  return Made().result;
}

void Playback::Packet(std::span<const std::uint8_t> packet) {
  if (!Load() || current_.call.operation->op != Op::kUsbComWrite ||
      !std::ranges::equal(current_.call.packet, packet)) {
    Differ(PacketCall(packet));
  }
  Made();
}

void Playback::BulkRead(std::span<std::uint8_t> destination, std::uint8_t& status) {
  const Call call = BulkReadCall(*targets_, destination);
  if (!Load() || current_.call != call) Differ(call);
  const Answer& answer = Made();
  std::ranges::copy(answer.data, destination.begin());
  if (answer.end) destination.back() = *answer.end;
  status = static_cast<std::uint8_t>(answer.result);
}

int Playback::Box(int style, std::u16string_view title, std::u16string_view prompt) {
  const Call call = BoxCall(style, title, prompt);
  if (!Load() || current_.call != call) Differ(call);
  return Made().result;
}

std::optional<Event> Playback::Turn() {
  if (difference_ || error_) Stop();
  std::optional<Event> event;
  if (!waiting_.empty()) {
    event = waiting_.front();
    waiting_.pop_front();
  } else if (remaining_ == 0 && next_.kind == Item::Kind::kEvent) {
    event = next_.event;
    Advance();
  } else if (++idle_turns_ > kMostIdleTurns) {
    static_cast<void>(Load());
    Report(remaining_ > 0 ? current_.line : next_.line,
           remaining_ > 0 ? Format(current_.call) : std::string(kEndOfRun),
           "no call: the run waits in the message loop, and nothing is left to happen");
    Stop();
  }
  if (event) idle_turns_ = 0;
  return event;
}

void Playback::Finish() {
  if (difference_) return;
  if (error_) throw RecordError(*error_);
  try {
    if (Load()) return Report(current_.line, Format(current_.call), std::string(kEndOfRun));
  } catch (const ComponentError&) {
    throw RecordError(*error_);
  }
  CheckAfter();
}

/// Makes the next call of the record the current one, unless it is to be made again; false when
/// there is none left.
bool Playback::Load() {
  if (difference_ || error_) Stop();
  if (remaining_ > 0) return true;
  LeaveEvents();
  if (next_.kind != Item::Kind::kCall) return false;
  if (keep_calls_ && calls_ > 0) Remember(current_);
  std::swap(current_, next_);
  remaining_ = current_.repeat;
  sets_.clear();
  for (Advance(); next_.kind == Item::Kind::kSet; Advance()) {
    if (!sets_.Add(next_)) Refuse(next_.line, "too many lines \"set\" under one call");
  }
  return true;
}

void Playback::Advance() {
  try {
    reader_.Next(next_);
  } catch (const RecordError& error) {
    error_ = error;
    Stop();
  }
}

/// The run went on before these events had a turn; they wait for the next one. An event that no
/// turn ever comes for does not happen, on a bench as here.
void Playback::LeaveEvents() {
  for (; next_.kind == Item::Kind::kEvent; Advance()) {
    waiting_.push_back(next_.event);
    if (waiting_.size() > kMostWaitingEvents) Refuse(next_.line, "too many events");
  }
  if (next_.kind == Item::Kind::kSet) {
    Refuse(next_.line, "\"set\" must stand directly below the call that wrote it");
  }
}

/// The current call has been made as the record says.
const Answer& Playback::Made() {
  --remaining_;
  ++calls_;
  idle_turns_ = 0;
  for (const auto& [line, set] : sets_) {
    try {
      Store(set);
    } catch (const TextError& error) {
      Refuse(line, error.what());
    }
  }
  if (current_.answer.hresult != 0) {
    throw Failure(*current_.call.operation, current_.answer.hresult);
  }
  return current_.answer;
}

void Playback::Remember(const Item& item) {
  if (remembered_.size() == kCallsKept) remembered_.pop_front();
  remembered_.push_back({item.line, item.repeat - remaining_, item.call});
}

void Playback::Differ(const Call& actual) {
  if (remaining_ > 0) {
    Report(current_.line, Format(current_.call), Format(actual));
  } else {
    Report(next_.line, std::string(kEndOfRun), Format(actual));
  }
  Stop();
}

void Playback::Report(std::uint64_t line, std::string expected, std::string actual) {
  // A call of which a part has been made is one of those before the difference.
  if (keep_calls_ && calls_ > 0 && remaining_ < current_.repeat) Remember(current_);
  difference_ = Difference{.line = line,
                           .expected = std::move(expected),
                           .actual = std::move(actual),
                           .element = {},
                           .calls_before = {},
                           .last_log_line = LastLine(vars_.quorinMainRtstr[0]),
                           .progress = vars_.quorinprgmode[1]};
  for (const Remembered& made : remembered_) {
    difference_->calls_before.push_back(
        fmt::format("{}: {}", made.line, Times(made.times, made.call)));
  }
}

void Playback::CheckAfter() {
  for (reader_.Next(next_); next_.kind != Item::Kind::kEnd; reader_.Next(next_)) {
    try {
      const std::optional<Mismatch> mismatch = Compare(next_.assignment);
      if (!mismatch) continue;
      Report(next_.line, mismatch->expected, mismatch->actual);
      difference_->element =
          fmt::format("{}({})", next_.assignment.variable->row().name, mismatch->index);
      return;
    } catch (const TextError& error) {
      throw reader_.Error(next_.line, error.what());
    }
  }
}

void Playback::Refuse(std::uint64_t line, std::string_view reason) {
  error_ = reader_.Error(line, reason);
  Stop();
}

void Playback::Stop() const {
  throw ComponentError(error_ ? "the record cannot be read" : "the run left the record");
}

}  // namespace fliglaf::record
