#include "shared/cls_mem_mapped.h"

namespace fliglaf {
namespace {

constexpr std::int16_t kLastInstanceProbed = 100;

}  // namespace

clsMemMapped::~clsMemMapped() {
  if (file_ != 0) UnMapFile();
}

std::size_t clsMemMapped::ViewSize() const {
  return base_address_ == nullptr ? 0 : platform::ViewSize(base_address_);
}

bool clsMemMapped::UnMapFile() {
  const bool unmapped = base_address_ != nullptr && platform::UnmapViewOfFile(base_address_);
  if (file_ != 0) platform::CloseHandle(file_);
  file_ = 0;
  base_address_ = nullptr;
  mapped_file_.clear();
  mapped_size_ = 0;
  return unmapped;
}

bool clsMemMapped::OpenAndMapMemoryBlock(const std::string& name, std::int32_t size) {
  UnMapFile();
  file_ = platform::OpenFileMappingA(platform::kFileMapAllAccess, false, name.c_str());
  if (file_ == 0) {
    file_ = platform::CreateFileMappingA(platform::kInvalidHandleValue, platform::kPageReadWrite, 0,
                                         static_cast<std::uint32_t>(size), name.c_str());
  }
  if (file_ == 0) return false;
  base_address_ = platform::MapViewOfFile(file_, platform::kFileMapAllAccess, 0, 0, 0);
  if (base_address_ == nullptr) return false;
  mapped_file_ = name;
  mapped_size_ = size;
  return true;
}

std::int16_t clsMemMapped::findnum() const {
  for (std::int16_t instance = 0; instance <= kLastInstanceProbed; ++instance) {
    const std::string name = "quorinibuf1" + std::to_string(instance);
    const platform::Handle probe =
        platform::OpenFileMappingA(platform::kFileMapAllAccess, false, name.c_str());
    if (probe == 0) return instance;
    platform::CloseHandle(probe);
  }
  return kLastInstanceProbed + 1;
}

}  // namespace fliglaf
