// One shared variable: a named block and the typed array over it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/automation_string.h"
#include "shared/cls_mem_mapped.h"
#include "shared/cls_safe_array.h"

namespace fliglaf {

/// Element types of shared variables, all little-endian.
enum class ElementType : std::uint8_t {
  kByte,     ///< 1 byte, unsigned
  kBoolean,  ///< 2 bytes, 0 false, -1 true
  kInteger,  ///< 2 bytes, signed
  kLong,     ///< 4 bytes, signed
  kString,   ///< 4 bytes, reference to an automation string
};

/// What the table says of a variable. The number of elements and of bytes are independent: what the
/// overlay exposes, and what the block is created with.
struct VariableRow {
  std::string_view name;
  std::int32_t elements;
  std::int32_t bytes;
  /// What the elements are used for; "host side" where the library only keeps the block mapped.
  std::string_view meaning;
};

/// A row of the table of shared variables, with its block and its overlay.
class SharedVariable {
 public:
  /// Appends itself to `table`.
  SharedVariable(std::vector<SharedVariable*>& table, ElementType type, const VariableRow& row)
      : type_(type), row_(row) {
    table.push_back(this);
  }
  virtual ~SharedVariable() = default;
  SharedVariable(const SharedVariable&) = delete;
  SharedVariable& operator=(const SharedVariable&) = delete;

  [[nodiscard]] ElementType type() const { return type_; }
  [[nodiscard]] const VariableRow& row() const { return row_; }

  /// Opens or creates the block of the row's name plus `suffix` and overlays it, after releasing
  /// what was open. False when there is no block: the variable is then a private array of one
  /// element.
  [[nodiscard]] bool Open(const std::string& suffix);
  /// The same with another number of bytes and elements than the row's.
  [[nodiscard]] bool Open(const std::string& suffix, std::int32_t bytes, std::int32_t elements);
  /// Takes the overlay off, then unmaps and closes the block.
  void Release();

  /// Elements that can be reached: the table's count, fewer where the block is smaller; 1 when
  /// released.
  [[nodiscard]] virtual std::int32_t count() const = 0;
  [[nodiscard]] const clsMemMapped& block() const { return block_; }

 protected:
  [[nodiscard]] virtual std::int32_t width() const = 0;
  virtual void Attach(void* base, std::int32_t elements, std::size_t view_bytes) = 0;
  virtual void Detach() = 0;

 private:
  ElementType type_;
  VariableRow row_;
  clsMemMapped block_;
};

/// A variable of numbers.
template <class T, ElementType kType>
class NumberVariable : public SharedVariable {
 public:
  NumberVariable(std::vector<SharedVariable*>& table, const VariableRow& row)
      : SharedVariable(table, kType, row) {}

  /// Throws RangeError when there is no such element.
  template <class Index>
  T& operator[](Index index) {
    return array_[index];
  }
  template <class Index>
  const T& operator[](Index index) const {
    return array_[index];
  }

  [[nodiscard]] std::int32_t count() const override { return array_.CountOfElements(); }

  /// `length` elements from `first` on; throws RangeError unless there is at least one and all of
  /// them exist.
  [[nodiscard]] std::span<T> Range(std::int64_t first, std::int64_t length) {
    T* start = &array_[first];
    static_cast<void>(array_[first + length - 1]);
    if (length < 1) throw RangeError();
    return {start, static_cast<std::size_t>(length)};
  }

 protected:
  [[nodiscard]] std::int32_t width() const override { return sizeof(T); }
  void Attach(void* base, std::int32_t elements, std::size_t view_bytes) override {
    array_.AttachToArray(base, elements, view_bytes);
  }
  void Detach() override { array_.ReleaseArray(); }

 private:
  clsSafeArray<T> array_;
};

using ByteVariable = NumberVariable<std::uint8_t, ElementType::kByte>;
using BooleanVariable = NumberVariable<std::int16_t, ElementType::kBoolean>;
using IntegerVariable = NumberVariable<std::int16_t, ElementType::kInteger>;
using LongVariable = NumberVariable<std::int32_t, ElementType::kLong>;

/// A variable of texts. Whoever stores a text frees the one it replaces. All members throw
/// RangeError when there is no such element.
class StringVariable : public SharedVariable {
 public:
  StringVariable(std::vector<SharedVariable*>& table, const VariableRow& row)
      : SharedVariable(table, ElementType::kString, row) {}
  ~StringVariable() override { FreePrivateElement(); }

  /// Valid until the element is next written.
  [[nodiscard]] std::u16string_view operator[](std::int32_t index) const;
  void Set(std::int32_t index, std::u16string_view text);
  void Append(std::int32_t index, std::u16string_view text);

  [[nodiscard]] std::int32_t count() const override { return array_.CountOfElements(); }

 protected:
  [[nodiscard]] std::int32_t width() const override { return sizeof(platform::AutomationString); }
  void Attach(void* base, std::int32_t elements, std::size_t view_bytes) override;
  void Detach() override;

 private:
  void FreePrivateElement();

  clsSafeArray<platform::AutomationString> array_;
};

}  // namespace fliglaf
