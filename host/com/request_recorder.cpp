#include "host/com/request_recorder.h"

#include <string>

#include "platform/win32/module.h"
#include "platform/win32/replace_file.h"
#include "record/recorder.h"
#include "shared/text.h"

namespace fliglaf {
namespace {

/// Tells apart the records of one process that were to go into the same file.
std::wstring Numbered(const std::wstring& file) {
  static std::wstring last;
  static int count = 0;
  count = file == last ? count + 1 : 1;
  last = file;
  if (count == 1) return file;
  const std::size_t name = file.find_last_of(L"\\/:") + 1;
  const std::size_t dot = file.rfind(L'.');
  const bool has_ending = dot != std::wstring::npos && dot > name;
  return std::wstring(file).insert(has_ending ? dot : file.size(), L"." + std::to_wstring(count));
}

void Complain(SharedVariables& variables, std::u16string_view problem) {
  std::u16string log(variables.quorinMainRtstr[0]);
  log.append(kNotRecorded).append(problem).append(u"\n");
  variables.quorinMainRtstr.Set(0, log);
}

}  // namespace

void RecordRequest(std::string_view call, SharedVariables& variables, Programmer& programmer,
                   platform::Desktop& desktop, const Library::CarryOut& carry_out) {
  const std::wstring wanted = platform::EnvironmentText(L"FLIGLAF_RECORD");
  if (wanted.empty()) return carry_out(programmer, desktop);

  std::string text;
  record::Recorder recorder(programmer, desktop, variables, text);
  recorder.Begin(call);
  carry_out(recorder.programmer(), recorder.desktop());
  if (!recorder.End()) return Complain(variables, Widen(recorder.problem()));

  const std::wstring file = Numbered(wanted);
  const DWORD error = platform::ReplaceFileContents(file, text);
  if (error == ERROR_SUCCESS) return;
  Complain(variables, std::u16string(file.begin(), file.end()) +
                          Widen(": error " + std::to_string(error) + " of Windows"));
}

}  // namespace fliglaf
