#include "parallel/device_id.h"

#include "parallel/start_programmer.h"
#include "usb/request/signature_notes.h"

namespace fliglaf::parallel {
namespace {

constexpr std::int32_t kReadSignature = 0x28;

/// The bytes and their texts; zeros and no texts in a mode without a device.
struct DeviceId {
  Signature bytes{};
  std::array<std::u16string, 3> texts;
};

DeviceId ReadDeviceId(EngineRun& run) {
  DeviceId id;
  if (!ReachesDevice(run)) return id;
  for (std::size_t i = 0; i < id.bytes.size(); ++i) {
    SendInstruction(run, {kReadSignature, static_cast<std::int32_t>(i), 0x00});
    id.bytes[i] = TakeByte(run);
    id.texts[i] = run.io.datstr(id.bytes[i], 2);
  }
  return id;
}

/// What a line that nobody drives reads as.
bool IsIdle(std::uint8_t byte) { return byte == 0x00 || byte == 0xFF; }

}  // namespace

std::int16_t CheckDeviceId(EngineRun& run) {
  if (!SignatureExpected(run)) return 0;
  for (;;) {
    const auto& [bytes, texts] = ReadDeviceId(run);
    const std::u16string text = SignatureText(run, texts[0], texts[1] + texts[2]);
    if (SignatureMatches(run, bytes)) {
      NoteSignature(run, text);
      return 0;
    }
    if (IsIdle(bytes[0]) && run.vars.quorincompid[0] == 0) return 0;
    switch (AskAboutSignature(run, text)) {
      case platform::box_answer::kRetry:
        continue;
      case platform::box_answer::kAbort:
        run.io.EndRun();
        return 1;
      default:
        return 0;
    }
  }
}

}  // namespace fliglaf::parallel
