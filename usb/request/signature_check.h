// The check of a device's signature, the same on both engines but for how it is read.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "shared/signature.h"
#include "usb/request/engine_run.h"

namespace fliglaf {

/// A signature as it was read, with the texts of its bytes.
struct SignatureRead {
  Signature bytes{};
  std::array<std::u16string, 3> texts;
};

enum class SignatureOutcome : std::int16_t {
  kGoOn = 0,  ///< a match, or the user ignored the difference
  kAbort = 1  ///< the user aborted; the run has been ended
};

/// Whether the host expects any signature: quorincompid(0) or quorintypeid(0).
[[nodiscard]] bool SignatureExpected(const EngineRun& run);

/// Reads with `read` until the signature matches what the host expects, or the user has chosen what
/// to do about the difference. `is_accepted` passes over what differs without a question.
[[nodiscard]] SignatureOutcome CheckSignature(
    EngineRun& run, const std::function<SignatureRead()>& read,
    const std::function<bool(const Signature&)>& is_accepted = [](const Signature&) {
      return false;
    });

}  // namespace fliglaf
