// Answers the library from the traffic of a record and compares what it does, until the first
// difference.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "record/reader.h"

namespace fliglaf::record {

/// The first thing that went another way than the record says.
struct Difference {
  std::uint64_t line = 0;
  std::string expected;
  std::string actual;
  /// The element, in [after]; empty in the traffic.
  std::string element;
  /// Where in the run it was. The calls before it, oldest first, each with its line in front.
  std::vector<std::string> calls_before;
  std::string last_log_line;
  /// Percent.
  int progress = 0;
};

class Playback {
 public:
  /// Goes on reading at the first item of [traffic]. With `keep_calls` a difference tells the calls
  /// before it.
  Playback(Reader& reader, SharedVariables& vars, bool keep_calls);

  /// The library's own variables: bulk reads are recognised by their address in these. Until then
  /// they are those that the playback was made with.
  void RecogniseTargetsIn(SharedVariables& library) { targets_ = &library; }

  // What the library does. These throw ComponentError where the record says that the call failed,
  // and from the first difference on, so that the run ends whatever it was doing.

  std::int32_t Numbers(Op op, const Arguments& arguments);
  void Packet(std::span<const std::uint8_t> packet);
  void BulkRead(std::span<std::uint8_t> destination, std::uint8_t& status);
  int Box(int style, std::u16string_view title, std::u16string_view prompt);
  /// A turn of the message loop: what happens at it, if anything.
  [[nodiscard]] std::optional<Event> Turn();

  /// The host's call has returned: nothing may be left over, and the variables must be as [after]
  /// says. Throws RecordError when the record turned out not to be readable.
  void Finish();

  [[nodiscard]] const std::optional<Difference>& difference() const { return difference_; }
  /// Component calls and message boxes that agreed.
  [[nodiscard]] std::uint64_t calls() const { return calls_; }

 private:
  bool Load();
  void Advance();
  void LeaveEvents();
  const Answer& Made();
  void Remember(const Item& item);
  void Differ(const Call& actual);
  void Report(std::uint64_t line, std::string expected, std::string actual);
  void CheckAfter();
  [[noreturn]] void Refuse(std::uint64_t line, std::string_view reason);
  [[noreturn]] void Stop() const;

  struct Remembered {
    std::uint64_t line;
    std::uint64_t times;
    Call call;
  };

  Reader& reader_;
  SharedVariables& vars_;
  SharedVariables* targets_ = &vars_;
  bool keep_calls_;
  /// The call that is being answered; `remaining_` more calls of it are expected.
  Item current_;
  std::uint64_t remaining_ = 0;
  /// What each making of it writes.
  HeldAssignments sets_;
  /// The item behind `current_` and its sets.
  Item next_;
  /// Events that no turn has come for yet.
  std::deque<Event> waiting_;
  std::uint64_t idle_turns_ = 0;
  std::uint64_t calls_ = 0;
  std::deque<Remembered> remembered_;
  std::optional<Difference> difference_;
  std::optional<RecordError> error_;
};

}  // namespace fliglaf::record
