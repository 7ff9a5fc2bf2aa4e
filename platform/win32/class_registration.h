// A COM class in the registry.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace fliglaf::platform {

/// For whom something is registered: everybody (needs administrator rights), or the user alone.
enum class RegisteredFor { kEverybody, kUser };

struct ComClass {
  CLSID id;
  std::wstring name;
  /// The first is the class's own. One that belongs to another class already is left to it.
  std::vector<std::wstring> prog_ids;
  GUID type_library;
  std::wstring version;  ///< of the type library, "major.minor"
};

/// Registers the class with this module as its in-process server, for one apartment. What was
/// written is taken back when it fails.
[[nodiscard]] HRESULT RegisterComClass(const ComClass& com_class, RegisteredFor whom);
/// Removes what RegisterComClass writes; what is not there is let pass.
[[nodiscard]] HRESULT UnregisterComClass(const ComClass& com_class, RegisteredFor whom);

/// Registers the type library in this module's resources.
[[nodiscard]] HRESULT RegisterModuleTypeLibrary(RegisteredFor whom);
[[nodiscard]] HRESULT UnregisterModuleTypeLibrary(RegisteredFor whom);

}  // namespace fliglaf::platform
