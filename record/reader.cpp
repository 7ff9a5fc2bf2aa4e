#include "record/reader.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include <fmt/format.h>

#include "shared/utf8.h"

namespace fliglaf::record {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 16;

constexpr std::int64_t kLeastLong = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMostLong = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMostByte = std::numeric_limits<std::uint8_t>::max();

void TakeNumbers(Scanner& scanner, const Operation& operation, Arguments& arguments) {
  const int takes = ArgumentCount(operation);
  int given = 0;
  while (scanner.Peek() != ')') {
    if (given > 0) scanner.Expect(',');
    const std::int64_t value = scanner.Integer();
    if (given < takes) {
      const auto i = static_cast<std::size_t>(given);
      const Argument kind = operation.arguments[i];
      const bool byte = kind == Argument::kByte || kind == Argument::kByteHex;
      if (value < (byte ? 0 : kLeastLong) || value > (byte ? kMostByte : kMostLong)) {
        throw TextError(fmt::format("argument {} of {}: {}; must be {} to {}", given + 1,
                                    operation.name, value, byte ? 0 : kLeastLong,
                                    byte ? kMostByte : kMostLong));
      }
      arguments[i] = static_cast<std::int32_t>(value);
    }
    ++given;
  }
  if (given == takes) return;
  throw TextError(fmt::format("{} takes {} argument{}, not {}", operation.name, takes,
                              takes == 1 ? "" : "s", given));
}

void TakeBytes(Scanner& scanner, std::vector<std::uint8_t>& bytes) {
  for (std::uint8_t byte = 0; scanner.TakeHexByte(byte);) bytes.push_back(byte);
}

void TakeBulkTarget(Scanner& scanner, const SharedVariables& vars, Call& call) {
  const auto [variable, index] = TakeElement(scanner, vars);
  if (variable->type() != ElementType::kByte) {
    throw TextError(
        fmt::format("a bulk read needs a variable of bytes; {} is not one", variable->row().name));
  }
  call.target = variable->row().name;
  call.arguments[0] = index;
  scanner.Expect(',');
  call.arguments[1] = static_cast<std::int32_t>(scanner.Integer(1, kMostLong, "byte count"));
}

void TakeBox(Scanner& scanner, Call& call) {
  call.arguments[0] = static_cast<std::int32_t>(scanner.Integer(kLeastLong, kMostLong, "style"));
  scanner.Expect(',');
  call.title = scanner.QuotedText();
  scanner.Expect(',');
  call.prompt = scanner.QuotedText();
}

/// Takes what is between the parentheses.
void TakeArguments(Scanner& scanner, const SharedVariables& vars, Call& call) {
  switch (FormOf(*call.operation)) {
    case Form::kNumbers:
      return TakeNumbers(scanner, *call.operation, call.arguments);
    case Form::kPacket:
      return TakeBytes(scanner, call.packet);
    case Form::kBulkRead:
      return TakeBulkTarget(scanner, vars, call);
    case Form::kBox:
      return TakeBox(scanner, call);
  }
}

/// Takes `[data BYTES] [end BYTE]` behind the status of a bulk read of `count` bytes.
void TakeTransfer(Scanner& scanner, std::int32_t count, Answer& answer) {
  std::string_view word = scanner.Word();
  if (word == "data") {
    TakeBytes(scanner, answer.data);
    word = scanner.Word();
  }
  if (word == "end") {
    std::uint8_t byte = 0;
    if (!scanner.TakeHexByte(byte)) throw TextError("\"end\" needs two hexadecimal digits");
    answer.end = byte;
  } else if (!word.empty()) {
    throw TextError(fmt::format(
        "\"{}\": expected data BYTES (two hexadecimal digits each) or end BYTE", Excerpt(word)));
  }
  if (std::cmp_greater(answer.data.size(), count)) {
    throw TextError(
        fmt::format("{} data bytes; the bulk read asks for {}", answer.data.size(), count));
  }
}

void TakeResult(Scanner& scanner, const Call& call, Answer& answer) {
  const Operation& operation = *call.operation;
  const bool bulk = FormOf(operation) == Form::kBulkRead;
  const std::int64_t result =
      scanner.Integer(bulk ? 0 : kLeastLong, bulk ? kMostByte : kMostLong, "result");
  if (operation.result == Result::kNone && result != 0) {
    throw TextError(fmt::format("{} has no result", operation.name));
  }
  answer.result = static_cast<std::int32_t>(result);
  if (bulk) TakeTransfer(scanner, call.arguments[1], answer);
}

/// Takes what stands behind a call: nothing, its result, or how it failed.
void TakeAnswer(Scanner& scanner, const Call& call, Answer& answer) {
  if (scanner.Take('=')) {
    TakeResult(scanner, call, answer);
  } else if (scanner.Take('!')) {
    if (FormOf(*call.operation) == Form::kBox) throw TextError("a message box cannot fail");
    answer.hresult = static_cast<std::uint32_t>(
        scanner.Integer(kFailureBit, std::numeric_limits<std::uint32_t>::max(), "HRESULT"));
  }
  scanner.ExpectEnd();
}

Event TakeEvent(Scanner& scanner, const SharedVariables& vars) {
  Scanner ahead = scanner;
  if (ahead.Word() == kWatchdog) {
    ahead.ExpectEnd();
    return {.watchdog = true};
  }
  Assignment assignment;
  TakeAssignment(scanner, vars, assignment);
  if (assignment.variable != &vars.quorinprgresult || assignment.index != 0 ||
      assignment.runs.size() != 1 || assignment.runs[0].count != 1) {
    throw TextError("an event must be \"Timer2\" or \"quorinprgresult(0) = V\"");
  }
  return {.result = static_cast<std::uint8_t>(assignment.runs[0].value)};
}

void Clear(Item& item) {
  item.repeat = 1;
  item.call.arguments = {};
  item.call.packet.clear();
  item.call.target = {};
  item.call.title.clear();
  item.call.prompt.clear();
  item.answer.result = 0;
  item.answer.hresult = 0;
  item.answer.data.clear();
  item.answer.end.reset();
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool HeldAssignments::Add(const Item& item) {
  held_.emplace_back(item.line, item.assignment);
  bytes_ += sizeof(held_.back()) + item.assignment.runs.size() * sizeof(EqualElements) +
            item.assignment.text.size() * sizeof(char16_t);
  return bytes_ <= kMostHeldBytes;
}

void HeldAssignments::clear() {
  held_.clear();
  bytes_ = 0;
}

Reader::Reader(std::istream& in, std::string name, const SharedVariables& vars)
    : in_(in), name_(std::move(name)), vars_(vars), buffer_(kBlock) {
  ReadFirstLine();
  if (!ReadItemLine() || line_ != Name(Section::kBefore)) {
    throw Error(line_number_, fmt::format("expected {} after the first line", kSectionNames[0]));
  }
}

RecordError Reader::Error(std::uint64_t line, std::string_view reason) const {
  return RecordError(fmt::format("{}:{}: {}", name_, line, reason));
}

RecordError Reader::TooLong(std::string_view what, std::uint64_t most) const {
  return Error(line_number_ + 1, fmt::format("the {} is longer than {} MiB", what, most >> 20));
}

void Reader::ReadFirstLine() {
  if (ReadLine() && line_ == kFirstLine) return;
  throw Error(1, fmt::format("\"{}\" is not the first line of a run record, which is \"{}\"",
                             Excerpt(line_), kFirstLine));
}

void Reader::Next(Item& item) {
  const bool more = ReadItemLine();
  item.line = line_number_;
  if (!more) return TakeEnd(item);
  if (line_.front() == '[') return TakeSection(line_, item);
  try {
    Scanner scanner(line_);
    switch (section_) {
      case Section::kBefore:
      case Section::kAfter:
        item.kind = Item::Kind::kAssignment;
        return TakeAssignment(scanner, vars_, item.assignment);
      case Section::kCall:
        if (host_call_read_) throw TextError("[call] must hold one call; this is the second");
        host_call_read_ = true;
        item.kind = Item::Kind::kHostCall;
        item.host_call = line_;
        return;
      case Section::kTraffic:
        return TakeTraffic(scanner, item);
    }
  } catch (const TextError& error) {
    throw Error(line_number_, error.what());
  }
}

void Reader::TakeSection(std::string_view line, Item& item) {
  const auto known = std::ranges::find(kSectionNames, line);
  if (known == kSectionNames.end()) {
    throw Error(line_number_, fmt::format("unknown section \"{}\"; the sections are {}",
                                          Excerpt(line), fmt::join(kSectionNames, ", ")));
  }
  const auto next = static_cast<std::size_t>(section_) + 1;
  if (next == kSectionNames.size() || *known != kSectionNames[next]) {
    throw Error(line_number_, fmt::format("{} cannot stand here: the order is {}, once each",
                                          *known, fmt::join(kSectionNames, ", ")));
  }
  if (section_ == Section::kCall && !host_call_read_) {
    throw Error(line_number_, "[call] must hold one call");
  }
  section_ = static_cast<Section>(next);
  item.kind = Item::Kind::kSection;
  item.section = section_;
}

void Reader::TakeEnd(Item& item) const {
  if (section_ != Section::kAfter) {
    throw Error(line_number_, fmt::format("the record ends in its section {}; {} is missing",
                                          Name(section_), Name(Section::kAfter)));
  }
  item.kind = Item::Kind::kEnd;
}

void Reader::TakeTraffic(Scanner& scanner, Item& item) {
  if (line_.starts_with("set ")) {
    static_cast<void>(scanner.Word());
    item.kind = Item::Kind::kSet;
    return TakeAssignment(scanner, vars_, item.assignment);
  }
  if (line_.starts_with("event ")) {
    static_cast<void>(scanner.Word());
    item.kind = Item::Kind::kEvent;
    item.event = TakeEvent(scanner, vars_);
    return;
  }
  item.kind = Item::Kind::kCall;
  TakeCall(scanner, item);
}

void Reader::TakeCall(Scanner& scanner, Item& item) {
  Clear(item);
  if (IsDigit(scanner.Peek())) {
    item.repeat = static_cast<std::uint64_t>(
        scanner.Integer(1, std::numeric_limits<std::int64_t>::max(), "number of calls"));
    scanner.Expect('*');
  }
  const std::string_view name = scanner.Word();
  item.call.operation = FindCall(name);
  if (item.call.operation == nullptr) {
    throw TextError(name == "datstr" ? std::string("datstr is computed, never recorded")
                                     : fmt::format("unknown operation \"{}\"",
                                                   Excerpt(name.empty() ? line_ : name)));
  }
  scanner.Expect('(');
  TakeArguments(scanner, vars_, item.call);
  scanner.Expect(')');
  TakeAnswer(scanner, item.call, item.answer);
}

/// Goes on to the next line that is neither empty nor a comment; false at the end of the file.
bool Reader::ReadItemLine() {
  while (ReadLine()) {
    if (!line_.empty() && line_.front() != '#') return true;
  }
  return false;
}

bool Reader::ReadLine() {
  line_ = {};
  std::size_t searched = begin_;
  for (;;) {
    const void* found = std::memchr(buffer_.data() + searched, '\n', end_ - searched);
    if (found != nullptr) {
      const auto length =
          static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data()) - begin_;
      if (length > kLongestLine) throw TooLong("line", kLongestLine);
      line_ = {buffer_.data() + begin_, length};
      begin_ += length + 1;
      if (line_.ends_with('\r')) line_.remove_suffix(1);
      ++line_number_;
      return true;
    }
    const std::size_t held = end_ - begin_;
    if (held > kLongestLine) throw TooLong("line", kLongestLine);
    if (!Refill()) break;
    searched = begin_ + held;
  }
  if (begin_ == end_) return false;
  throw Error(line_number_ + 1, "the file ends in the middle of this line");
}

/// Reads more of the file behind what is held of it; false at its end.
bool Reader::Refill() {
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  if (end_ == buffer_.size()) buffer_.resize(buffer_.size() * 2);
  in_.read(buffer_.data() + end_, static_cast<std::streamsize>(buffer_.size() - end_));
  if (in_.bad()) throw Error(line_number_ + 1, "the rest of the file cannot be read");
  const auto got = static_cast<std::size_t>(in_.gcount());
  end_ += got;
  bytes_read_ += got;
  if (bytes_read_ > kLongestRecord) throw TooLong("record", kLongestRecord);
  return got > 0;
}

}  // namespace fliglaf::record
