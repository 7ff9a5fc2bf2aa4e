#include "usb/signature.h"

#include "families/family_table.h"

namespace fliglaf {

SignatureOutcome CheckSignature(Run& run, WindowLines& lines) {
  const auto family = MakeFamily(run.vars.quorinprgmode[0], run, lines);
  const bool has_signature = family == nullptr || family->HasSignature();
  if (!SignatureExpected(run) || !has_signature) return SignatureOutcome::kGoOn;
  return CheckSignature(run, [&] {
    SignatureRead read;
    if (family != nullptr) read.bytes = family->ReadSignature();
    for (std::size_t i = 0; i < read.bytes.size(); ++i) {
      read.texts[i] = run.io.datstr(read.bytes[i], 2);
    }
    return read;
  });
}

}  // namespace fliglaf
