#include "cli/host_session.h"

#include <algorithm>

#include <fmt/format.h>

#include "cli/usage_error.h"
#include "devices/host_variables.h"
#include "devices/kinds/device_kind.h"
#include "shared/text.h"
#include "usb/request/operation.h"

namespace fliglaf::cli {
namespace {

constexpr std::int16_t kTrue = -1;

/// Values of quorinprgresult(1).
constexpr std::uint8_t kRequestSequence = 0;

void CheckReaches(Engine engine, const DeviceProfile& device) {
  if (engine == Engine::kParallel && !RunsOverParallelPort(device)) {
    throw UsageError(
        fmt::format("{}: the parallel engine reaches devices of family 1 only, not of "
                    "family {}; leave out --parallel",
                    device.name, device.family));
  }
  if (engine == Engine::kUsb && device.config_words > 0) {
    throw UsageError(
        device.name +
        ": configuration words are written by the parallel engine only; add --parallel");
  }
}

}  // namespace

HostSession::HostSession(std::int16_t instance, const DeviceProfile& device, Engine engine)
    : instance_(instance), device_(device), engine_(engine) {
  CheckReaches(engine, device);
  const auto fail = [] { throw std::runtime_error("a shared memory block cannot be created"); };
  vars_.OpenMainGroup(instance, fail);
  vars_.quorinbuflength[0] = device.image_bytes;
  vars_.OpenDataBuffers(vars_.DataBufferLength(), fail);
  std::ranges::fill(image(), device.erased);
  DescribeDevice(device, engine == Engine::kParallel, vars_);
  DescribeTexts();
}

/// The blocks go with their last owner, the texts in them only when somebody frees them.
HostSession::~HostSession() { vars_.EmptyTexts(); }

std::int16_t HostSession::FreeInstance() { return clsMemMapped().findnum(); }

std::span<std::uint8_t> HostSession::image() {
  return vars_.quorinibuffer.Range(0, device_.image_bytes);
}

void HostSession::DescribeTexts() {
  const auto set = [](StringVariable& variable, int index, std::string_view text) {
    variable.Set(index, Widen(text));
  };
  StringVariable& notes = vars_.quorinprgnote;
  set(notes, 0, kNameStart);
  set(notes, 1, kNameEnd);
  set(notes, 2, " ok");
  set(notes, 3, " failed");
  set(notes, 4, ">>Stopped");
  set(notes, 5, ">>Differences");
  set(notes, 6, ">>Device     Data     Buffer     Data");
  set(notes, 7, "The device is not blank. Go on all the same?");
  set(notes, 8, "Blank Check");
  set(notes, 9, "Maker ");
  set(notes, 10, "Device ");
  set(notes, 12, ">>The data could not be read back from the programmer");

  StringVariable& names = vars_.quorinMainmnuPrg;
  set(names, operation::kRead, "Read");
  set(names, operation::kVerify, "Verify");
  set(names, operation::kBlankCheck, "Blank Check");
  set(names, operation::kCompare, "Compare");
  set(names, operation::kProgram, "Program");
  const DeviceOperations& operations = device_.operations;
  for (std::size_t level = 0; level < operations.lock.size(); ++level) {
    set(names, operations.lock[level], "Lock " + std::to_string(level + 1));
  }
  if (operations.config) set(names, *operations.config, "Configuration");
  if (operations.erase) set(names, *operations.erase, "Erase");
}

void HostSession::CheckSignature(const Signature& expected) {
  vars_.quorinchipidtestmode[0] = kTrue;
  vars_.quorincompid[0] = expected[signature_byte::kMaker];
  vars_.quorintypeid[0] = expected[signature_byte::kDevice];
}

void HostSession::Request(std::span<const std::uint8_t> codes) {
  if (codes.size() == 1) {
    vars_.quorinprgresult[1] = codes.front();
  } else {
    vars_.quorinprgresult[1] = kRequestSequence;
    vars_.quorinwautonum[0] = static_cast<std::uint8_t>(codes.size());
    std::ranges::copy(codes, vars_.quorinautoprg.Range(0, std::ssize(codes)).begin());
  }
  vars_.quorinprgresult[0] = 0;
  vars_.quorinubuflg[1] = 0;
}

void HostSession::Open(clsMPU& object) const {
  std::int16_t instance = instance_;
  object.bufcommpu4(instance);
}

void HostSession::Run(clsMPU& object) {
  std::int16_t engine = usbenable();
  object.runMpu4Prg(engine);
}

}  // namespace fliglaf::cli
