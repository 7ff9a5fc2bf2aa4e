#include "devices/nearest_names.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace fliglaf {
namespace {

constexpr std::size_t kMostNames = 3;

/// Insertions, deletions and replacements that make one word of the other.
std::size_t EditDistance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);  // from no letter of `from` to each start of `to`
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

char LowerLetter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), LowerLetter);
  return lower;
}

bool SameIgnoringCase(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, LowerLetter, LowerLetter);
}

std::vector<std::string> NearestNames(std::string_view word,
                                      std::span<const std::string_view> names) {
  const std::string wanted = LowerCase(word);
  if (wanted.empty()) return {};

  std::vector<std::pair<std::size_t, std::string_view>> near;
  for (const std::string_view name : names) {
    const std::string candidate = LowerCase(name);
    if (wanted.size() > 2 * candidate.size()) continue;  // too far, and costly to measure
    const std::size_t distance = EditDistance(wanted, candidate);
    if (candidate.find(wanted) != std::string::npos || distance * 3 <= candidate.size()) {
      near.emplace_back(distance, name);
    }
  }
  std::ranges::sort(near);
  if (near.size() > kMostNames) near.resize(kMostNames);

  std::vector<std::string> nearest;
  nearest.reserve(near.size());
  for (const auto& [distance, name] : near) nearest.emplace_back(name);
  return nearest;
}

}  // namespace fliglaf
