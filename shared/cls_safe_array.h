#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "shared/range_error.h"

namespace fliglaf {

/// A one-dimensional array with lower bound 0 over memory that somebody else owns. Detached it is a
/// private array of one element, so that a variable whose block is not open can still be used.
template <class T>
class clsSafeArray {
 public:
  clsSafeArray() = default;
  clsSafeArray(const clsSafeArray&) = delete;
  clsSafeArray& operator=(const clsSafeArray&) = delete;

  /// Lays the array over `bytes` bytes at `base`: `count` elements, or as many as fit.
  void AttachToArray(void* base, std::int32_t count, std::size_t bytes) {
    data_ = static_cast<T*>(base);
    const auto fitting = static_cast<std::int32_t>(std::min<std::size_t>(
        bytes / sizeof(T), static_cast<std::size_t>(std::max(count, std::int32_t{0}))));
    count_ = fitting;
  }

  /// Back to the private element, which is reset; the memory attached before is left as it is.
  void ReleaseArray() {
    own_ = T{};
    data_ = &own_;
    count_ = 1;
  }

  [[nodiscard]] bool attached() const { return data_ != &own_; }
  [[nodiscard]] std::int32_t CountOfElements() const { return count_; }
  [[nodiscard]] T* PointerToData() { return data_; }
  [[nodiscard]] std::span<const T> elements() const {
    return {data_, static_cast<std::size_t>(count_)};
  }

  /// Throws RangeError when there is no such element.
  template <class Index>
  T& operator[](Index index) {
    if (std::cmp_less(index, 0) || std::cmp_greater_equal(index, count_)) throw RangeError();
    return data_[index];
  }
  template <class Index>
  const T& operator[](Index index) const {
    return const_cast<clsSafeArray&>(*this)[index];
  }

 private:
  T own_{};
  T* data_ = &own_;
  std::int32_t count_ = 1;
};

}  // namespace fliglaf
