#include "record/traffic.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "record/assignment.h"
#include "record/format.h"
#include "record/text.h"
#include "usb/request/run.h"

namespace fliglaf::record {
namespace {

/// Operations that move data to and from the device come by the hundred thousand and have no reason
/// to touch the host's texts, so those are not looked at around them.
bool MayNote(Op op) {
  switch (op) {
    case Op::kWriteRegister:
    case Op::kReadRegister:
    case Op::kWriteLatch:
    case Op::kQueueRegisterWrite:
    case Op::kQueueDelay:
      return false;
    default:
      return true;
  }
}

/// A text counts as changed when it has another length or lies elsewhere.
bool Same(std::u16string_view a, std::u16string_view b) {
  return a.data() == b.data() && a.size() == b.size();
}

}  // namespace

void Traffic::Start() {
  active_ = true;
  problem_.clear();
  bulk_.reset();
  late_.reset();
  last_times_ = turns_ = events_ = 0;
  event_lines_.clear();
}

void Traffic::Finish() {
  CloseBulkRead();
  FlushCalls();
  active_ = false;
}

Traffic::Watched Traffic::Watch(const Call& call) {
  CloseBulkRead();
  if (late_) late_->Look();
  Watched watched{
      .outcome = vars_.quorinprgresult[0], .notes = {}, .indexes = {-1, -1}, .bytes = {}};
  if (!MayNote(call.operation->op)) return watched;
  for (std::size_t i = 0; i < watched.notes.size(); ++i) {
    watched.notes[i] = Note(i);
  }
  if (call.operation->op != Op::kBlockTransfer) return watched;
  // The byte is stored at its address, or where the range of the operation puts that address.
  const std::int64_t address = call.arguments[1];
  watched.indexes = {address, address - vars_.quorinwltbigendbuf[0] + vars_.quorinwltbigendbuf[2]};
  for (std::size_t i = 0; i < watched.indexes.size(); ++i) {
    std::int64_t& index = watched.indexes[i];
    if (index < 0 || index >= vars_.quorinibuffer.count()) index = -1;
    if (index >= 0) watched.bytes[i] = vars_.quorinibuffer[index];
  }
  if (watched.indexes[0] == watched.indexes[1]) watched.indexes[1] = -1;
  return watched;
}

/// The log or the listing; empty where the host's block is too small for it.
std::u16string_view Traffic::Note(std::size_t i) const {
  const auto index = static_cast<std::int32_t>(i);
  if (index >= vars_.quorinMainRtstr.count()) return {};
  return vars_.quorinMainRtstr[index];
}

std::uint32_t Traffic::Failed(const Operation& operation, const ComponentError& error) {
  const std::uint32_t code = FailureCode(operation, error);
  if (std::string_view(Failure(operation, code).what()) != error.what()) {
    problem_ = fmt::format("{} failed in a way that a record cannot hold: {}", operation.name,
                           error.what());
  }
  return code;
}

void Traffic::Write(const Call& call, const Answer& answer, const Watched& before) {
  Put(call, answer);
  WriteSets(call, before);
}

void Traffic::WriteSets(const Call& call, const Watched& before) {
  std::string sets = TakeLateChanges();
  const auto set = [&sets](std::string_view name, std::int64_t index, const std::string& value) {
    sets += fmt::format("{} {}({}) = {}\n", kSetWord, name, index, value);
  };
  for (std::size_t i = 0; i < before.indexes.size(); ++i) {
    const std::int64_t index = before.indexes[i];
    if (index < 0 || vars_.quorinibuffer[index] == before.bytes[i]) continue;
    set("quorinibuffer", index, std::to_string(vars_.quorinibuffer[index]));
  }
  if (vars_.quorinprgresult[0] != before.outcome) {
    set("quorinprgresult", 0, std::to_string(vars_.quorinprgresult[0]));
  }
  const std::size_t notes = MayNote(call.operation->op) ? before.notes.size() : 0;
  for (std::size_t i = 0; i < notes; ++i) {
    const std::u16string_view note = Note(i);
    if (!Same(note, before.notes[i])) {
      set("quorinMainRtstr", static_cast<std::int64_t>(i), Quote(note));
    }
  }
  PutSets(sets);
}

void Traffic::OpenBulkRead(std::span<std::uint8_t> destination, std::uint8_t& status) {
  CloseBulkRead();
  FlushCalls();
  if (late_) late_->Look();
  turns_ = events_ = 0;
  bulk_.emplace(BulkReadInProgress{.call = BulkReadCall(vars_, destination),
                                   .destination = destination,
                                   .status = &status,
                                   .before = {destination.begin(), destination.end()},
                                   .waits = BulkReadInProgress::Waits::kForStatus,
                                   .complete = {}});
  if (bulk_->call.target.empty()) {
    problem_ = "a bulk read went to memory that is not part of a shared variable";
  }
}

void Traffic::FailBulkRead(const ComponentError& error) {
  Put(bulk_->call, {.hresult = Failed(*bulk_->call.operation, error)});
  PutSets(TakeLateChanges());
  bulk_.reset();
}

/// A bulk read has been started. It ends the one before, which may have stored something in the
/// meantime; what lies where both store is in the answer of the new one.
void Traffic::EndLateTransfer() {
  if (!late_) return;
  late_->LeaveOut(bulk_->destination);
  late_->LeaveOut({bulk_->status, 1});
  bulk_->sets = late_->TakeChanges();
  late_.reset();
}

/// What a transfer that was given up has stored since it was last looked at.
std::string Traffic::TakeLateChanges() {
  if (!late_) return {};
  std::string changes = late_->TakeChanges();
  if (late_->over()) late_.reset();
  return changes;
}

/// Writes the bulk read that is open, with the events of the turns in which the library waited for
/// it.
void Traffic::CloseBulkRead() {
  if (!bulk_) return;
  const BulkReadInProgress bulk = std::move(*bulk_);
  bulk_.reset();
  std::string events = std::exchange(event_lines_, {});
  Put(bulk.call, bulk.complete ? *bulk.complete : Transferred(bulk));
  PutSets(bulk.sets);
  event_lines_ = std::move(events);
  if (bulk.complete || bulk.call.target.empty()) return;
  late_.emplace(vars_, bulk.destination, *bulk.status);
  if (late_->over()) late_.reset();
}

/// What the transfer has done so far. Bytes at the end that are as they were before are not told,
/// of a complete transfer those that are 0.
Answer Traffic::Transferred(const BulkReadInProgress& bulk) const {
  const bool complete = *bulk.status == bulk_status::kDone && bulk.destination.back() == kEndMark;
  const auto inner = bulk.destination.first(bulk.destination.size() - 1);
  std::size_t stored = inner.size();
  while (stored > 0 && inner[stored - 1] == bulk.before[stored - 1] &&
         (!complete || inner[stored - 1] == 0)) {
    --stored;
  }
  const auto data = inner.first(stored);
  Answer answer{.result = *bulk.status, .data = {data.begin(), data.end()}};
  if (bulk.destination.back() != bulk.before.back()) answer.end = bulk.destination.back();
  return answer;
}

void Traffic::BeginTurn() {
  if (late_) late_->Look();
}

void Traffic::Turned(std::uint8_t result_before, bool watchdog) {
  if (!active_) return;
  CountTurn();
  PutSets(TakeLateChanges());
  const std::uint8_t now = vars_.quorinprgresult[0];
  if (watchdog && now == result::kTimeOut) {
    AddEvent(kWatchdog, result_before);
  } else if (now != result_before) {
    AddEvent(fmt::format("quorinprgresult(0) = {}", now), result_before);
  }
}

void Traffic::CountTurn() {
  using Waits = BulkReadInProgress::Waits;
  if (!bulk_ || bulk_->waits == Waits::kNoMore) {
    ++turns_;
    return;
  }
  const std::uint8_t outcome = vars_.quorinprgresult[0];
  const bool given_up = outcome == result::kStopped || outcome == result::kTimeOut;
  const std::uint8_t status = *bulk_->status;
  if (bulk_->waits == Waits::kForStatus) {
    turns_ = 1;
    if (status == bulk_status::kDone) bulk_->waits = Waits::kForEndMark;
    if (status > bulk_status::kLastGood || given_up) bulk_->waits = Waits::kNoMore;
    return;
  }
  if (given_up) {
    // The first turn of a replay ends the wait as well, so nothing need stand in front.
    bulk_->waits = Waits::kNoMore;
    turns_ = events_ + 1;
    return;
  }
  turns_ = 2;
  if (bulk_->destination.back() == kEndMark) {
    bulk_->waits = Waits::kNoMore;
    bulk_->complete = Transferred(*bulk_);
  }
}

/// Adds an event at the turn that has just passed. Replay takes one event a turn, so turns without
/// one get an event that changes nothing.
void Traffic::AddEvent(std::string_view event, std::uint8_t result_before) {
  for (; events_ + 1 < turns_; ++events_) {
    event_lines_ += fmt::format("{} quorinprgresult(0) = {}\n", kEventWord, result_before);
  }
  event_lines_ += fmt::format("{} {}\n", kEventWord, event);
  ++events_;
  turns_ = std::max(turns_, events_);
}

/// Counts the call when it is the last one again, else makes it the last one.
void Traffic::Put(const Call& call, const Answer& answer) {
  const bool same =
      last_times_ > 0 && event_lines_.empty() && call == last_call_ && answer == last_answer_;
  if (!same) {
    FlushCalls();
    last_call_ = call;
    last_answer_ = answer;
  }
  ++last_times_;
  turns_ = events_ = 0;
}

/// Writes the last call with what it set, which other calls like it did not set.
void Traffic::PutSets(std::string_view sets) {
  if (sets.empty()) return;
  const std::string events = std::exchange(event_lines_, {});
  if (last_times_ > 1) {
    --last_times_;
    FlushCalls();
    last_times_ = 1;
  }
  FlushCalls();
  out_ += sets;
  event_lines_ = events;
}

/// Writes the last call and the events behind it.
void Traffic::FlushCalls() {
  if (last_times_ > 0) {
    if (last_times_ > 1) out_ += std::to_string(last_times_) + " * ";
    out_ += Format(last_call_) + Format(*last_call_.operation, last_answer_) + '\n';
    last_times_ = 0;
  }
  out_ += event_lines_;
  event_lines_.clear();
}

}  // namespace fliglaf::record
