// The library as a host on Windows uses it: its object, made through COM. Windows-free, as its user
// is.
#pragma once

#include <cstdint>
#include <memory>

namespace fliglaf {

/// An object `clsMPU` of the installed library, or of the one that an activation names. Lives on
/// one thread, in whose apartment the object is.
class MpuClient {
 public:
  /// Throws std::runtime_error when the object cannot be made.
  MpuClient();
  ~MpuClient();
  MpuClient(const MpuClient&) = delete;
  MpuClient& operator=(const MpuClient&) = delete;

  void bufcommpu4(std::int16_t instance);
  /// Returns when the request has run; the thread's messages are handled meanwhile.
  void runMpu4Prg(std::int16_t usbenable);

 private:
  struct Object;
  std::unique_ptr<Object> object_;
};

}  // namespace fliglaf
