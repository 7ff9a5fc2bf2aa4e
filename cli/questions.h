#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace fliglaf::cli {

enum class MismatchAnswer { kAsk, kAbort, kRetry, kIgnore };

/// Answers the library's message boxes: at the terminal where there is one, else with what the user
/// said beforehand or the answer that does nothing to the chip.
class Questions {
 public:
  /// `expected`: the device's signature, as a question shows it.
  Questions(MismatchAnswer on_mismatch, bool terminal, std::string expected)
      : on_mismatch_(on_mismatch), terminal_(terminal), expected_(std::move(expected)) {}

  int Answer(int style, std::u16string_view title, std::u16string_view prompt);

  /// The signature that was read when it was not the expected one and the run was aborted; else
  /// empty.
  [[nodiscard]] const std::string& mismatch() const { return mismatch_; }
  /// True when the user stopped the program at a question.
  [[nodiscard]] bool stopped() const { return stopped_; }
  /// True when a wrong signature was ignored.
  [[nodiscard]] bool ignored() const { return ignored_; }

 private:
  int AnswerMismatch(const std::string& title, const std::string& prompt);
  int AskMismatch(const std::string& question);
  int AskToGoOn(const std::string& question);

  MismatchAnswer on_mismatch_;
  bool terminal_;
  std::string expected_;
  int retries_ = 0;
  bool ignored_ = false;
  bool stopped_ = false;
  std::string mismatch_;
};

}  // namespace fliglaf::cli
