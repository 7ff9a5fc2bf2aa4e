// COM classes that are known by a manifest instead of the registry. Windows-free, as its users are.
#pragma once

#include <cstdint>
#include <filesystem>

namespace fliglaf::platform {

/// The classes and libraries of a manifest are known to this thread while it lives. Those of an
/// earlier one are then not; they are again afterwards.
class Activation {
 public:
  /// Throws std::system_error, its text naming the file, when that is missing or no manifest.
  explicit Activation(const std::filesystem::path& manifest);
  ~Activation();
  Activation(const Activation&) = delete;
  Activation& operator=(const Activation&) = delete;

 private:
  void* context_;
  std::uintptr_t cookie_ = 0;
};

}  // namespace fliglaf::platform
