#include "platform/file_mapping.h"

#include <algorithm>
#include <cstdlib>
#include <list>
#include <memory>
#include <string>

namespace fliglaf::platform {
namespace {

/// What one process can map on the 32-bit system that the blocks are made for.
constexpr std::uint32_t kLargestBlock = 0x7FFFFFFF;

struct FreeMemory {
  void operator()(std::uint8_t* memory) const { std::free(memory); }
};

struct Block {
  std::string name;
  std::size_t size = 0;
  std::unique_ptr<std::uint8_t, FreeMemory> memory;
  int handles = 0;
  int views = 0;
};

/// The blocks of the process, in the place of the kernel's name space. A handle is the address of
/// its block's record, so one record serves all handles on a name.
std::list<Block>& Blocks() {
  static std::list<Block> blocks;
  return blocks;
}

Block* FindByName(const std::string& name) {
  auto& blocks = Blocks();
  const auto found = std::ranges::find(blocks, name, &Block::name);
  return found == blocks.end() ? nullptr : &*found;
}

Block* FindByHandle(Handle handle) {
  for (Block& block : Blocks()) {
    if (reinterpret_cast<Handle>(&block) == handle && block.handles > 0) return &block;
  }
  return nullptr;
}

Block* FindByView(const void* address) {
  for (Block& block : Blocks()) {
    if (block.memory.get() == address && block.views > 0) return &block;
  }
  return nullptr;
}

Handle NewHandle(Block& block) {
  ++block.handles;
  return reinterpret_cast<Handle>(&block);
}

void DropUnused(const Block& block) {
  if (block.handles > 0 || block.views > 0) return;
  Blocks().remove_if([&block](const Block& other) { return &other == &block; });
}

}  // namespace

Handle OpenFileMappingA(std::uint32_t /*access*/, bool /*inherit*/, const char* name) {
  Block* block = FindByName(name);
  return block == nullptr ? 0 : NewHandle(*block);
}

Handle CreateFileMappingA(Handle file, std::uint32_t protection, std::uint32_t size_high,
                          std::uint32_t size_low, const char* name) {
  if (file != kInvalidHandleValue || protection != kPageReadWrite) return 0;
  if (Block* block = FindByName(name)) return NewHandle(*block);
  if (size_high != 0 || size_low == 0 || size_low > kLargestBlock) return 0;
  // calloc hands out untouched pages, so that a large block costs what is used of it.
  std::unique_ptr<std::uint8_t, FreeMemory> memory(
      static_cast<std::uint8_t*>(std::calloc(size_low, 1)));
  if (!memory) return 0;
  return NewHandle(
      Blocks().emplace_back(Block{.name = name, .size = size_low, .memory = std::move(memory)}));
}

void* MapViewOfFile(Handle mapping, std::uint32_t /*access*/, std::uint32_t offset_high,
                    std::uint32_t offset_low, std::size_t length) {
  Block* block = FindByHandle(mapping);
  if (block == nullptr || offset_high != 0 || offset_low != 0 || length != 0) return nullptr;
  ++block->views;
  return block->memory.get();
}

bool UnmapViewOfFile(const void* address) {
  Block* block = FindByView(address);
  if (block == nullptr) return false;
  --block->views;
  DropUnused(*block);
  return true;
}

bool CloseHandle(Handle mapping) {
  Block* block = FindByHandle(mapping);
  if (block == nullptr) return false;
  --block->handles;
  DropUnused(*block);
  return true;
}

std::size_t ViewSize(const void* address) {
  const Block* block = FindByView(address);
  return block == nullptr ? 0 : block->size;
}

}  // namespace fliglaf::platform
