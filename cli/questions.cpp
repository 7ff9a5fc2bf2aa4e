#include "cli/questions.h"

#include <cctype>
#include <iostream>

#include "platform/desktop.h"
#include "platform/terminal.h"
#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

namespace answer = platform::box_answer;
namespace style = platform::box_style;

/// How often a mismatch is tried again without anybody looking at the socket.
constexpr int kUnattendedRetries = 3;

/// The first letter of what the user types, in lower case; 'x' when there is nobody, or a stop is
/// wanted.
char AskLetter(const std::string& question) {
  std::cerr << question << std::flush;
  std::string line;
  if (!std::getline(std::cin, line) || platform::StopRequested()) return 'x';
  return line.empty() ? ' ' : static_cast<char>(std::tolower(static_cast<unsigned char>(line[0])));
}

}  // namespace

int Questions::Answer(int box, std::u16string_view title, std::u16string_view prompt) {
  switch (box) {
    case style::kWarningAbortRetryIgnore:
      return AnswerMismatch(ToUtf8(title), ToUtf8(prompt));
    case style::kQuestionOkCancel:
      return AskToGoOn(ToUtf8(title), ToUtf8(prompt));
    default:
      std::cerr << ToUtf8(title) << ": " << ToUtf8(prompt) << "\n";
      return answer::kOk;
  }
}

int Questions::AnswerMismatch(const std::string& title, const std::string& prompt) {
  int chosen = answer::kAbort;
  switch (on_mismatch_) {
    case MismatchAnswer::kAsk:
      chosen = AskMismatch(title, prompt);
      break;
    case MismatchAnswer::kRetry:
      chosen = ++retries_ <= kUnattendedRetries ? answer::kRetry : answer::kAbort;
      break;
    case MismatchAnswer::kIgnore:
      chosen = answer::kIgnore;
      break;
    case MismatchAnswer::kAbort:
      break;
  }
  mismatch_ = chosen == answer::kAbort ? prompt : "";
  ignored_ = chosen == answer::kIgnore;
  return chosen;
}

int Questions::AskMismatch(const std::string& title, const std::string& prompt) const {
  if (!terminal_) return answer::kAbort;
  std::string question = title;
  question.append(" ").append(prompt).append("\n(A)bort, (R)etry or (I)gnore? ");
  for (;;) {
    switch (AskLetter(question)) {
      case 'a':
      case 'x':
        return answer::kAbort;
      case 'r':
        return answer::kRetry;
      case 'i':
        return answer::kIgnore;
      default:
        break;
    }
  }
}

int Questions::AskToGoOn(const std::string& title, const std::string& prompt) const {
  if (!terminal_) return answer::kCancel;
  return AskLetter(title + ": " + prompt + " (y/N) ") == 'y' ? answer::kOk : answer::kCancel;
}

}  // namespace fliglaf::cli
