// Writes the traffic of a record while a run makes it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "record/calls.h"
#include "record/late_transfer.h"
#include "shared/shared_variables.h"

namespace fliglaf::record {

class Traffic {
 public:
  Traffic(SharedVariables& vars, std::string& out) : vars_(vars), out_(out) {}

  /// Calls are written between Start and Finish only; outside they are merely handed on.
  void Start();
  void Finish();
  [[nodiscard]] bool active() const { return active_; }
  /// What kept the record from being complete; empty when nothing did.
  [[nodiscard]] const std::string& problem() const { return problem_; }

  /// Makes a call with `perform` and writes it with its result and with what it wrote into the
  /// shared variables. Hands a ComponentError on.
  template <class Perform>
  std::int32_t Record(const Call& call, const Perform& perform) {
    if (!active_) return perform();
    const Watched before = Watch(call);
    Answer answer;
    try {
      answer.result = perform();
    } catch (const ComponentError& error) {
      answer.hresult = Failed(*call.operation, error);
      Write(call, answer, before);
      throw;
    }
    Write(call, answer, before);
    return answer.result;
  }

  /// Starts a bulk read with `perform`. It is written when the next call or the end comes, as the
  /// transfer has left it.
  template <class Perform>
  void RecordBulkRead(std::span<std::uint8_t> destination, std::uint8_t& status,
                      const Perform& perform) {
    if (!active_) return perform();
    OpenBulkRead(destination, status);
    try {
      perform();
    } catch (const ComponentError& error) {
      FailBulkRead(error);
      throw;
    }
    EndLateTransfer();
  }

  /// A turn of the message loop comes.
  void BeginTurn();
  /// The turn has passed, at the beginning of which quorinprgresult(0) was
  /// `result_before`; `watchdog` tells whether it ticked.
  void Turned(std::uint8_t result_before, bool watchdog);

 private:
  /// What a component may write: the outcome, the log and the listing; BlockTransfer the buffer.
  struct Watched {
    std::uint8_t outcome;
    std::array<std::u16string_view, 2> notes;
    std::array<std::int64_t, 2> indexes;
    std::array<std::uint8_t, 2> bytes;
  };

  /// A bulk read that has been started, until it is written. In replay everything is in place when
  /// the call returns, so the library then needs one turn to see the status and a second one to see
  /// the end mark; turns that it waited longer on the bench must not be counted.
  struct BulkReadInProgress {
    enum class Waits : std::uint8_t { kForStatus, kForEndMark, kNoMore };

    Call call;
    std::span<std::uint8_t> destination;
    const std::uint8_t* status;
    std::vector<std::uint8_t> before;
    Waits waits = Waits::kForStatus;
    /// Taken when the end mark came, before the library takes the mark out.
    std::optional<Answer> complete;
    /// What the transfer before it stored while it was being started.
    std::string sets{};
  };

  [[nodiscard]] Watched Watch(const Call& call);
  [[nodiscard]] std::uint32_t Failed(const Operation& operation, const ComponentError& error);
  [[nodiscard]] std::u16string_view Note(std::size_t i) const;
  void Write(const Call& call, const Answer& answer, const Watched& before);
  void WriteSets(const Call& call, const Watched& before);
  void OpenBulkRead(std::span<std::uint8_t> destination, std::uint8_t& status);
  void FailBulkRead(const ComponentError& error);
  void EndLateTransfer();
  [[nodiscard]] std::string TakeLateChanges();
  void CloseBulkRead();
  [[nodiscard]] Answer Transferred(const BulkReadInProgress& bulk) const;
  void CountTurn();
  void AddEvent(std::string_view event, std::uint8_t result_before);
  void Put(const Call& call, const Answer& answer);
  void PutSets(std::string_view sets);
  void FlushCalls();

  SharedVariables& vars_;
  std::string& out_;
  bool active_ = false;
  std::string problem_;
  std::optional<BulkReadInProgress> bulk_;
  /// The last bulk read, when it was given up and may still store something.
  std::optional<LateTransfer> late_;
  /// The last call and how often it was made, not written yet.
  Call last_call_;
  Answer last_answer_;
  std::uint64_t last_times_ = 0;
  /// Turns since the last call as a replay will need them, the events among them, and their lines.
  std::uint64_t turns_ = 0;
  std::uint64_t events_ = 0;
  std::string event_lines_;
};

}  // namespace fliglaf::record
