// The smallest pieces of a run record: quoted texts, and a line that is taken apart.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fliglaf::record {

/// What is wrong with a line of a record; whoever knows the line adds file and number.
class TextError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// `text` as UTF-8, in double quotes, with quotes, backslashes, line feeds, carriage returns and
/// tabs escaped. A surrogate without its partner, which a string of the host may hold, is written
/// as three bytes like any other character of its size, so that nothing is lost.
[[nodiscard]] std::string Quote(std::u16string_view text);

/// The text of UTF-8 bytes; throws TextError when they are none.
[[nodiscard]] std::u16string Utf16(std::string_view bytes);

/// Takes a line apart from left to right; spaces between its pieces do not matter. Every member
/// throws TextError when the line goes on with something else.
class Scanner {
 public:
  explicit Scanner(std::string_view line) : rest_(line) {}

  [[nodiscard]] bool AtEnd() {
    SkipSpaces();
    return rest_.empty();
  }
  /// The next character; 0 at the end.
  [[nodiscard]] char Peek() {
    SkipSpaces();
    return rest_.empty() ? '\0' : rest_.front();
  }
  /// Takes `character` when it is the next one.
  bool Take(char character) {
    if (Peek() != character) return false;
    rest_.remove_prefix(1);
    return true;
  }
  void Expect(char character);
  void ExpectEnd();

  /// Letters and digits; empty when there are none.
  [[nodiscard]] std::string_view Word();
  /// Decimal or 0x hexadecimal, with an optional minus sign.
  [[nodiscard]] std::int64_t Integer();
  /// An integer from `least` to `most`; `what` names it in the message.
  [[nodiscard]] std::int64_t Integer(std::int64_t least, std::int64_t most, std::string_view what);
  /// True, with the byte, when two hexadecimal digits follow.
  bool TakeHexByte(std::uint8_t& byte);
  [[nodiscard]] std::u16string QuotedText();

 private:
  void SkipSpaces() {
    while (!rest_.empty() && rest_.front() == ' ') rest_.remove_prefix(1);
  }

  std::string_view rest_;
};

}  // namespace fliglaf::record
