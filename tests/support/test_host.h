// A host for tests: its own view of the shared blocks, one object, and a simulated bench with a
// chip in the socket, an isp51-4k unless told otherwise.
#pragma once

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "devices/catalogue/device_catalogue.h"
#include "devices/host_variables.h"
#include "devices/kinds/device_kind.h"
#include "host/cls_mpu.h"
#include "platform/portable/portable_desktop.h"
#include "simulator/bench/bench.h"
#include "usb/components/forwarding_programmer.h"

namespace fliglaf {

inline void PrintTo(const DeviceProfile& device, std::ostream* out) { *out << device.name; }

}  // namespace fliglaf

namespace fliglaf::test {

inline std::string Narrow(std::u16string_view text) { return {text.begin(), text.end()}; }

inline std::vector<std::uint8_t> RandomBytes(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::uint8_t> bytes(count);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

/// Sits between the library and the bench. `before` sees every call and keeps it from going on by
/// returning false; `calls` counts by name.
class Tap : public ForwardingProgrammer {
 public:
  using ForwardingProgrammer::ForwardingProgrammer;

  struct Call {
    std::string_view operation;
    std::int32_t value = 0;   ///< the first argument; of a transfer, its bytes
    std::int32_t target = 0;  ///< the second: register, latch, state; 0 if the call has none
  };
  std::function<bool(const Call&)> before;
  std::vector<Call> calls;

  [[nodiscard]] std::size_t Count(std::string_view operation) const {
    if (FindOperation(operation) == nullptr) throw std::invalid_argument("no such operation");
    return static_cast<std::size_t>(std::ranges::count(calls, operation, &Call::operation));
  }

 protected:
  bool OnCall(Op op, const Arguments& arguments) override {
    calls.push_back({Row(op).name, arguments[0], arguments[1]});
    return !before || before(calls.back());
  }
};

/// A device that the program knows.
inline const DeviceProfile& Known(std::string_view name) {
  static const DeviceCatalogue catalogue = DeviceCatalogue::BuiltIn();
  const DeviceProfile* const device = catalogue.Find(name);
  if (device == nullptr) throw std::invalid_argument("no such device: " + std::string(name));
  return *device;
}

/// A known device with as many addresses.
inline DeviceProfile Sized(std::string_view name, std::int32_t size) {
  DeviceProfile device = Known(name);
  device.size = size;
  device.image_bytes = size * device.address_bytes;
  device.range = {0, size - 1};
  return device;
}

/// The byte of the image that holds the configuration byte `name`.
inline std::uint8_t& ConfigByteIn(std::vector<std::uint8_t>& image, const DeviceProfile& device,
                                  std::string_view name) {
  for (const ConfigByte& byte : ConfigBytesOf(device)) {
    if (byte.name == name) return image.at(static_cast<std::size_t>(byte.image_byte));
  }
  throw std::invalid_argument("no such configuration byte: " + std::string(name));
}

/// Sets the bits of the image that would shut the device's interface as they leave it open.
inline void LeaveOpen(std::vector<std::uint8_t>& image, const DeviceProfile& device) {
  for (const ConfigHazard& hazard : ConfigHazardsOf(device)) {
    std::uint8_t& byte = ConfigByteIn(image, device, hazard.byte);
    const auto bit = static_cast<std::uint8_t>(1U << hazard.bit);
    byte = static_cast<std::uint8_t>(hazard.value ? byte & ~bit : byte | bit);
  }
}

class TestHost {
 public:
  explicit TestHost(const DeviceProfile& device = Known("isp51-4k"),
                    const simulator::Faults& faults = {}, std::int16_t instance = 7)
      : TestHost(device, KindOf(device).make_part, faults, instance) {}
  explicit TestHost(std::string_view device, const simulator::Faults& faults = {})
      : TestHost(Known(device), faults) {}
  /// With another part in the socket than that of the device.
  TestHost(
      const DeviceProfile& device,
      const std::function<simulator::Part(const DeviceProfile&, const simulator::Clock&)>& make,
      const simulator::Faults& faults = {}, std::int16_t instance = 7)
      : bench([&](const simulator::Clock& clock) { return make(device, clock); }, instance, faults),
        tap(bench.io()),
        desktop(bench),
        library(tap, desktop),
        mpu(std::make_unique<clsMPU>(library)) {
    vars.OpenMainGroup(instance, [] {});
    vars.quorinbuflength[0] = device.image_bytes;
    vars.OpenDataBuffers(vars.DataBufferLength(), [] {});
    mpu->bufcommpu4(instance);
    DescribeDevice(device, false, vars);
    const char16_t* const notes[] = {
        u"<",     u">", u" ok", u" failed", u"stopped",        u"h1", u"h2", u"prompt",
        u"title", u"M", u"D",   u"",        u"read-back fails"};
    for (int i = 0; i < static_cast<int>(std::size(notes)); ++i)
      vars.quorinprgnote.Set(i, notes[i]);
    for (int code = 0; code < vars.quorinMainmnuPrg.count(); ++code) {
      const std::string name = "op" + std::to_string(code);
      vars.quorinMainmnuPrg.Set(code, std::u16string(name.begin(), name.end()));
    }
  }

  /// From now on requests go to the parallel engine, whose range ends behind the last address.
  void UseParallelPort() {
    usbenable_ = 0;
    bench.programmer().AttachToParallelPort();
    ++vars.quorinwltbigendbuf[1];
  }

  ~TestHost() {
    mpu.reset();
    for (SharedVariable* variable : vars.table()) {
      auto* const strings = dynamic_cast<StringVariable*>(variable);
      for (int i = 0; strings != nullptr && i < strings->count(); ++i) strings->Set(i, u"");
    }
  }

  /// Runs one operation; the result is quorinprgresult(0).
  int Run(std::uint8_t code) {
    vars.quorinprgresult[1] = code;
    return RunRequest();
  }
  /// Runs an automatic sequence.
  int Run(std::initializer_list<std::uint8_t> codes) {
    vars.quorinprgresult[1] = 0;
    vars.quorinwautonum[0] = static_cast<std::uint8_t>(codes.size());
    std::size_t step = 0;
    for (const std::uint8_t code : codes) vars.quorinautoprg[step++] = code;
    return RunRequest();
  }

  void SetImage(const std::vector<std::uint8_t>& bytes) {
    std::ranges::copy(bytes, vars.quorinibuffer.Range(0, std::ssize(bytes)).begin());
  }
  [[nodiscard]] std::vector<std::uint8_t> image() {
    const auto bytes = vars.quorinibuffer.Range(0, vars.quorinbuflength[0]);
    return {bytes.begin(), bytes.end()};
  }
  /// The cells of a memory of the chip; empty if it has none of that name.
  [[nodiscard]] std::span<std::uint8_t> cells(std::string_view area) {
    for (const simulator::MemoryArea& memory : bench.chip().Memory()) {
      if (memory.name == area) return memory.bytes;
    }
    return {};
  }
  [[nodiscard]] std::vector<std::uint8_t> flash() {
    const auto bytes = cells("flash");
    return {bytes.begin(), bytes.end()};
  }
  [[nodiscard]] std::string log() const { return Narrow(vars.quorinMainRtstr[0]); }

  simulator::Bench bench;
  Tap tap;
  platform::PortableDesktop desktop;
  Library library;
  SharedVariables vars;
  std::unique_ptr<clsMPU> mpu;

 private:
  std::int16_t usbenable_ = -1;

  int RunRequest() {
    std::int16_t usbenable = usbenable_;
    mpu->runMpu4Prg(usbenable);
    return vars.quorinprgresult[0];
  }
};

}  // namespace fliglaf::test
