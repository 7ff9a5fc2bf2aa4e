#include "platform/file_mapping.h"

#include <windows.h>

namespace fliglaf::platform {
namespace {

HANDLE Native(Handle handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

Handle OpenFileMappingA(std::uint32_t access, bool inherit, const char* name) {
  return reinterpret_cast<Handle>(::OpenFileMappingA(access, inherit ? TRUE : FALSE, name));
}

Handle CreateFileMappingA(Handle file, std::uint32_t protection, std::uint32_t size_high,
                          std::uint32_t size_low, const char* name) {
  return reinterpret_cast<Handle>(
      ::CreateFileMappingA(Native(file), nullptr, protection, size_high, size_low, name));
}

void* MapViewOfFile(Handle mapping, std::uint32_t access, std::uint32_t offset_high,
                    std::uint32_t offset_low, std::size_t length) {
  return ::MapViewOfFile(Native(mapping), access, offset_high, offset_low, length);
}

bool UnmapViewOfFile(const void* address) { return ::UnmapViewOfFile(address) != FALSE; }

bool CloseHandle(Handle mapping) { return ::CloseHandle(Native(mapping)) != FALSE; }

std::size_t ViewSize(const void* address) {
  MEMORY_BASIC_INFORMATION region = {};
  if (VirtualQuery(address, &region, sizeof region) == 0 || region.State != MEM_COMMIT) return 0;
  const auto* const start = static_cast<const char*>(region.BaseAddress);
  return region.RegionSize - static_cast<std::size_t>(static_cast<const char*>(address) - start);
}

}  // namespace fliglaf::platform
