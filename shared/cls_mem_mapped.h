#pragma once

#include <cstdint>
#include <string>

#include "platform/file_mapping.h"

namespace fliglaf {

/// One named, page-file-backed memory block and its mapped view.
class clsMemMapped {
 public:
  clsMemMapped() = default;
  ~clsMemMapped();
  clsMemMapped(const clsMemMapped&) = delete;
  clsMemMapped& operator=(const clsMemMapped&) = delete;

  /// Start of the mapped view; null when unmapped.
  [[nodiscard]] void* BaseAddress() const { return base_address_; }
  /// The file-mapping handle; 0 when closed.
  [[nodiscard]] platform::Handle hFile() const { return file_; }
  /// Name of the mapped block; empty when closed.
  [[nodiscard]] const std::string& MappedFile() const { return mapped_file_; }
  /// The size in bytes asked for at opening, which a block that existed need not have; 0 when
  /// closed.
  [[nodiscard]] std::int32_t MappedSize() const { return mapped_size_; }
  /// Bytes that the view really has; 0 when unmapped.
  [[nodiscard]] std::size_t ViewSize() const;

  /// Unmaps and closes; true when a view was unmapped.
  bool UnMapFile();

  /// Opens the block of that name, or creates it with `size` bytes, and maps all of it. What was
  /// open before is closed first. False when there is no view; a handle got so far stays in
  /// hFile().
  [[nodiscard]] bool OpenAndMapMemoryBlock(const std::string& name, std::int32_t size);

  /// The lowest instance number from 0 to 100 whose blocks are not in use; 101 when all are.
  [[nodiscard]] std::int16_t findnum() const;

 private:
  platform::Handle file_ = 0;
  void* base_address_ = nullptr;
  std::string mapped_file_;
  std::int32_t mapped_size_ = 0;
};

}  // namespace fliglaf
