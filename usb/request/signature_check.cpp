#include "usb/request/signature_check.h"

#include "resources/string_table.h"

namespace fliglaf {
namespace {

/// Elements of quorinprgnote: labels of the manufacturer code and of the device code.
constexpr int kMakerLabel = 9;
constexpr int kDeviceLabel = 10;

bool Matches(const EngineRun& run, const Signature& bytes) {
  return run.vars.quorintypeid[0] == bytes[signature_byte::kDevice] &&
         run.vars.quorincompid[0] == bytes[signature_byte::kMaker];
}

/// The host's labels with the bytes' texts.
std::u16string Described(const EngineRun& run, const SignatureRead& signature) {
  const auto& [maker, device, third] = signature.texts;
  std::u16string text(run.vars.quorinprgnote[kMakerLabel]);
  text += maker;
  text += u"   ";
  text += run.vars.quorinprgnote[kDeviceLabel];
  text += device + third;
  return text;
}

int Ask(EngineRun& run, const std::u16string& text) {
  return run.desktop.MsgBox(
      platform::box_style::kWarningAbortRetryIgnore,
      run.Text(resources::text::kWarning) + run.Text(resources::text::kDeviceCodeError), text);
}

}  // namespace

bool SignatureExpected(const EngineRun& run) {
  return run.vars.quorintypeid[0] != 0 || run.vars.quorincompid[0] != 0;
}

SignatureOutcome CheckSignature(EngineRun& run, const std::function<SignatureRead()>& read,
                                const std::function<bool(const Signature&)>& is_accepted) {
  for (;;) {
    const SignatureRead signature = read();
    const std::u16string text = Described(run, signature);
    if (Matches(run, signature.bytes)) {
      run.Log(u">>" + text + u"\n");
      return SignatureOutcome::kGoOn;
    }
    if (is_accepted(signature.bytes)) return SignatureOutcome::kGoOn;
    switch (Ask(run, text)) {
      case platform::box_answer::kRetry:
        continue;
      case platform::box_answer::kAbort:
        run.io.EndRun();
        return SignatureOutcome::kAbort;
      default:
        return SignatureOutcome::kGoOn;
    }
  }
}

}  // namespace fliglaf
