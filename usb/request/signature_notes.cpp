#include "usb/request/signature_notes.h"

#include "resources/string_table.h"

namespace fliglaf {
namespace {

/// Elements of quorinprgnote: labels of the manufacturer code and of the device code.
constexpr int kMakerLabel = 9;
constexpr int kDeviceLabel = 10;

}  // namespace

bool SignatureExpected(const EngineRun& run) {
  return run.vars.quorintypeid[0] != 0 || run.vars.quorincompid[0] != 0;
}

bool SignatureMatches(const EngineRun& run, const Signature& bytes) {
  return run.vars.quorintypeid[0] == bytes[1] && run.vars.quorincompid[0] == bytes[0];
}

std::u16string SignatureText(const EngineRun& run, const std::u16string& maker,
                             const std::u16string& device) {
  std::u16string text(run.vars.quorinprgnote[kMakerLabel]);
  text += maker;
  text += u"   ";
  text += run.vars.quorinprgnote[kDeviceLabel];
  text += device;
  return text;
}

void NoteSignature(EngineRun& run, const std::u16string& text) { run.Log(u">>" + text + u"\n"); }

int AskAboutSignature(EngineRun& run, const std::u16string& text) {
  return run.desktop.MsgBox(
      platform::box_style::kWarningAbortRetryIgnore,
      run.Text(resources::text::kWarning) + run.Text(resources::text::kDeviceCodeError), text);
}

}  // namespace fliglaf
