// Named, page-file-backed memory blocks: the five kernel calls that the library uses, under the
// kernel's own names and constants. On Windows they are the real ones; elsewhere a registry of the
// process stands in, with the same lifetime rule: a name lives as long as a handle or a view does.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fliglaf::platform {

/// A file-mapping handle; 0 is none.
using Handle = std::uintptr_t;

/// Stands for the page file where a file handle is asked for.
inline constexpr Handle kInvalidHandleValue = ~Handle{0};
/// FILE_MAP_ALL_ACCESS.
inline constexpr std::uint32_t kFileMapAllAccess = 0x000F001F;
/// PAGE_READWRITE.
inline constexpr std::uint32_t kPageReadWrite = 4;

/// The existing mapping of that name, or 0.
[[nodiscard]] Handle OpenFileMappingA(std::uint32_t access, bool inherit, const char* name);

/// The mapping of that name, created zero-filled with the given size in bytes when it does not
/// exist yet; 0 when it cannot be made (size 0, or more than an address space of 2 GiB holds).
[[nodiscard]] Handle CreateFileMappingA(Handle file, std::uint32_t protection,
                                        std::uint32_t size_high, std::uint32_t size_low,
                                        const char* name);

/// The address of the whole mapping, or null. Only offset 0 and length 0 (all of it) are used.
[[nodiscard]] void* MapViewOfFile(Handle mapping, std::uint32_t access, std::uint32_t offset_high,
                                  std::uint32_t offset_low, std::size_t length);

/// True when `address` was the start of a view.
bool UnmapViewOfFile(const void* address);

/// True when `mapping` was an open handle.
bool CloseHandle(Handle mapping);

/// Bytes that can be reached from the start of a view; 0 when `address` is none.
[[nodiscard]] std::size_t ViewSize(const void* address);

}  // namespace fliglaf::platform
