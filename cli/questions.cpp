#include "cli/questions.h"

#include <iostream>

#include "cli/prompt.h"
#include "platform/desktop.h"
#include "platform/terminal.h"
#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

namespace answer = platform::box_answer;
namespace style = platform::box_style;

/// How often a mismatch is tried again without anybody looking at the socket.
constexpr int kUnattendedRetries = 3;

}  // namespace

int Questions::Answer(int box, std::u16string_view title, std::u16string_view prompt) {
  switch (box) {
    case style::kWarningAbortRetryIgnore:
      return AnswerMismatch(ToUtf8(title), ToUtf8(prompt));
    case style::kQuestionOkCancel:
      return AskToGoOn(ToUtf8(title) + ": " + ToUtf8(prompt));
    default:
      std::cerr << Printable(ToUtf8(title) + ": " + ToUtf8(prompt)) << "\n";
      return answer::kOk;
  }
}

int Questions::AnswerMismatch(const std::string& title, const std::string& prompt) {
  int chosen = answer::kAbort;
  switch (on_mismatch_) {
    case MismatchAnswer::kAsk:
      // Once ignored, it stays ignored: a command may take more than one request.
      chosen = ignored_ ? answer::kIgnore
                        : AskMismatch(title + " " + prompt + ", expected " + expected_ +
                                      "\n(A)bort, (R)etry or (I)gnore? ");
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

int Questions::AskMismatch(const std::string& question) {
  if (!terminal_) return answer::kAbort;
  for (;;) {
    const auto typed = Ask(question);
    stopped_ = platform::StopRequested();
    if (!typed || typed == "a" || typed == "abort") return answer::kAbort;
    if (typed == "r" || typed == "retry") return answer::kRetry;
    if (typed == "i" || typed == "ignore") return answer::kIgnore;
  }
}

int Questions::AskToGoOn(const std::string& question) {
  if (!terminal_) return answer::kCancel;
  const bool go_on = AskYesNo(question);
  stopped_ = platform::StopRequested();
  return go_on ? answer::kOk : answer::kCancel;
}

}  // namespace fliglaf::cli
