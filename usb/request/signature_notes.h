// The check of a signature that has been read, the same on both engines.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "usb/request/engine_run.h"

namespace fliglaf {

/// Manufacturer, device and a third byte.
using Signature = std::array<std::uint8_t, 3>;

/// Whether the host expects any signature: quorincompid(0) or quorintypeid(0).
[[nodiscard]] bool SignatureExpected(const EngineRun& run);
[[nodiscard]] bool SignatureMatches(const EngineRun& run, const Signature& bytes);

/// The host's labels with the bytes' texts.
[[nodiscard]] std::u16string SignatureText(const EngineRun& run, const std::u16string& maker,
                                           const std::u16string& device);
/// Notes a match.
void NoteSignature(EngineRun& run, const std::u16string& text);
/// Asks what to do about a mismatch: Abort, Retry or Ignore of platform::box_answer.
[[nodiscard]] int AskAboutSignature(EngineRun& run, const std::u16string& text);

}  // namespace fliglaf
