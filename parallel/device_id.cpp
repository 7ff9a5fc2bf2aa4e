#include "parallel/device_id.h"

#include "parallel/start_programmer.h"

namespace fliglaf::parallel {
namespace {

constexpr std::int32_t kReadSignature = 0x28;

/// Zeros and no texts in a mode without a device.
SignatureRead ReadDeviceId(EngineRun& run) {
  SignatureRead id;
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

SignatureOutcome CheckDeviceId(EngineRun& run) {
  if (!SignatureExpected(run)) return SignatureOutcome::kGoOn;
  return CheckSignature(
      run, [&run] { return ReadDeviceId(run); },
      [&run](const Signature& bytes) { return IsIdle(bytes[0]) && run.vars.quorincompid[0] == 0; });
}

}  // namespace fliglaf::parallel
