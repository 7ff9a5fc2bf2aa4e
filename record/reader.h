// Reads a run record item by item. Memory is needed for the longest line, not for the record.
#pragma once

#include <cstdint>
#include <istream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "record/assignment.h"
#include "record/calls.h"
#include "record/format.h"
#include "shared/shared_variables.h"

namespace fliglaf::record {

/// A record that cannot be read: "FILE:LINE: reason".
class RecordError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What happens at a turn of the message loop.
struct Event {
  /// The time of the watchdog has passed; otherwise the host writes `result`.
  bool watchdog = false;
  /// Into quorinprgresult(0).
  std::uint8_t result = 0;
};

/// What a line of a record says.
struct Item {
  enum class Kind : std::uint8_t {
    kSection,     ///< a section begins
    kAssignment,  ///< in [before] and [after]
    kHostCall,    ///< in [call]; as text
    kCall,        ///< in [traffic]
    kSet,         ///< under a call: what it wrote
    kEvent,
    kEnd,
  };

  Kind kind = Kind::kEnd;
  /// From 1 on; of the end, the last line.
  std::uint64_t line = 0;
  Section section = Section::kBefore;
  Assignment assignment;
  std::string host_call;
  /// How often the call was made.
  std::uint64_t repeat = 1;
  Call call;
  Answer answer;
  Event event;
};

/// Assignments that wait, each with its line.
class HeldAssignments {
 public:
  /// False when they take more than kMostHeldBytes.
  [[nodiscard]] bool Add(const Item& item);
  void clear();
  [[nodiscard]] auto begin() const { return held_.begin(); }
  [[nodiscard]] auto end() const { return held_.end(); }

 private:
  std::vector<std::pair<std::uint64_t, Assignment>> held_;
  std::size_t bytes_ = 0;
};

class Reader {
 public:
  /// Reads the first line and the heading of the first section. `name` stands in messages; names
  /// of variables are looked up in `vars`, which need not be open. Both the stream and the
  /// variables outlive the reader. Throws RecordError, as Next does.
  Reader(std::istream& in, std::string name, const SharedVariables& vars);

  /// Reads the next item; `item` may hold an earlier one, whose memory is used again.
  void Next(Item& item);

  /// An error at `line` of this record.
  [[nodiscard]] RecordError Error(std::uint64_t line, std::string_view reason) const;
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  [[nodiscard]] RecordError TooLong(std::string_view what, std::uint64_t most) const;
  bool ReadLine();
  bool ReadItemLine();
  bool Refill();
  void ReadFirstLine();
  void TakeSection(std::string_view line, Item& item);
  void TakeEnd(Item& item) const;
  void TakeTraffic(Scanner& scanner, Item& item);
  void TakeCall(Scanner& scanner, Item& item);

  std::istream& in_;
  std::string name_;
  const SharedVariables& vars_;
  /// What has been read of the file, and the piece of it that has not been handed out.
  std::vector<char> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::string_view line_;
  std::uint64_t line_number_ = 0;
  std::uint64_t bytes_read_ = 0;
  Section section_ = Section::kBefore;
  bool host_call_read_ = false;
};

}  // namespace fliglaf::record
