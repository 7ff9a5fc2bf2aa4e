#include "cli/fuse_page.h"

#include <algorithm>
#include <functional>
#include <ranges>
#include <utility>

#include <fmt/format.h>

#include "cli/configuration.h"
#include "cli/usage_error.h"
#include "devices/nearest_names.h"
#include "editors/edit_figmpu40.h"
#include "editors/edit_figmpu41.h"
#include "shared/text.h"
#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

using platform::ComboBox;
using platform::Control;
using platform::TextBox;

constexpr std::string_view kBlanks = " ";

std::string_view Trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text.remove_suffix(text.size() - 1 - std::min(text.find_last_not_of(kBlanks), text.size() - 1));
  return text;
}

std::string NameOf(const PageRow& row) {
  const std::string caption = ToUtf8(row.label->caption);
  std::string_view name = Trimmed(caption);
  if (name.ends_with(':')) name.remove_suffix(1);
  return std::string(name);
}

std::string BitOf(const PageRow& row) {
  if (row.bits == 8) return std::string(row.byte);
  if (row.bits == 1) return fmt::format("{}.{}", row.byte, row.first_bit);
  return fmt::format("{}.{}-{}", row.byte, row.first_bit + row.bits - 1, row.first_bit);
}

/// An entry of a list without its digit: " Enable(0)", "0 Enable", "0 (locked)".
std::string MeaningOf(const std::u16string& entry) {
  const std::string text = ToUtf8(entry);
  std::string_view meaning = Trimmed(text);
  if (meaning.ends_with("(0)") || meaning.ends_with("(1)")) meaning.remove_suffix(3);
  if (meaning.starts_with("0 ") || meaning.starts_with("1 ")) meaning.remove_prefix(2);
  if (meaning.starts_with('(') && meaning.ends_with(')')) {
    meaning = meaning.substr(1, meaning.size() - 2);
  }
  return std::string(Trimmed(meaning));
}

/// The bits that an entry stands for.
std::size_t BitsOf(const PageRow& row, std::size_t entry) {
  return row.values.empty() ? entry : row.values[entry];
}

std::string DigitsOf(const PageRow& row, std::size_t entry) {
  return fmt::format("{:0{}b}", BitsOf(row, entry), row.bits);
}

/// Binary digits, or a hexadecimal one after 0x.
bool Stands(std::string_view value, const PageRow& row, std::size_t entry) {
  const std::string_view digits = WithoutHexPrefix(value);
  if (digits.size() == value.size()) return value == DigitsOf(row, entry);
  const std::size_t bits = BitsOf(row, entry);
  return digits == fmt::format("{:X}", bits) || digits == fmt::format("{:02X}", bits);
}

bool IsChangeable(const PageRow& row) { return row.control->enabled && row.byte != "calibration"; }

FuseLine LineOf(const PageRow& row) {
  FuseLine line{.bit = BitOf(row), .name = NameOf(row), .value = {}, .meaning = {}};
  if (row.control->kind == Control::Kind::kComboBox) {
    const auto& list = static_cast<const ComboBox&>(*row.control);
    const auto chosen = static_cast<std::size_t>(list.chosen);
    line.value = DigitsOf(row, chosen);
    line.meaning = MeaningOf(list.entries[chosen]);
  } else {
    line.value = ToUtf8(static_cast<const TextBox&>(*row.control).text);
  }
  line.changeable = IsChangeable(row);
  return line;
}

void Choose(const PageRow& row, const std::string& assignment, std::string_view value) {
  auto& list = static_cast<ComboBox&>(*row.control);
  std::string known;
  for (std::size_t i = 0; i < list.entries.size(); ++i) {
    const std::string meaning = MeaningOf(list.entries[i]);
    if (Stands(value, row, i) || SameIgnoringCase(value, meaning)) {
      return list.Choose(static_cast<int>(i));
    }
    known += fmt::format("{}{} ({})", i == 0 ? "" : ", ", DigitsOf(row, i), meaning);
  }
  throw UsageError(fmt::format("{}: {} must be one of {}", assignment, NameOf(row), known));
}

void Type(const PageRow& row, const std::string& assignment, std::string_view value) {
  const std::u16string digits = HexDigits(ByteValue(assignment, value), 2);
  auto& box = static_cast<TextBox&>(*row.control);
  box.selection_start = 0;
  box.selection_length = box.text.size();
  for (const char16_t digit : digits) box.Type(digit);
}

}  // namespace

void FusePage::RequirePage(const DeviceProfile& device) {
  if (edit_figmpu40::Serves(device.family) || edit_figmpu41::Serves(device.family)) return;
  throw UsageError(device.name + ": devices of its family have no fuses or lock bytes to edit");
}

FusePage::FusePage(const DeviceProfile& device, SharedVariables& vars) : device_(device) {
  EditorServices services{
      .desktop = desktop_,
      .datstr = [](auto value, auto digits) { return HexDigits(value, digits); },
      .when_idle = [](const std::function<void()>& action) { action(); }};
  if (edit_figmpu40::Serves(device.family)) {
    editor_ = std::make_unique<edit_figmpu40>(std::move(services));
  } else {
    editor_ = std::make_unique<edit_figmpu41>(std::move(services));
  }
  editor_->Open(std::shared_ptr<SharedVariables>(std::shared_ptr<void>(), &vars));
}

std::vector<const PageRow*> FusePage::VisibleRows() const {
  std::vector<const PageRow*> rows;
  for (const PageRow& row : editor_->rows()) {
    if (!row.byte.empty() && row.label != nullptr && row.control->visible) rows.push_back(&row);
  }
  return rows;
}

std::vector<FuseLine> FusePage::Lines() const {
  std::vector<FuseLine> lines;
  for (const PageRow* const row : VisibleRows()) lines.push_back(LineOf(*row));
  return lines;
}

const PageRow& FusePage::Find(std::string_view name) const {
  std::vector<const PageRow*> found;
  std::vector<std::string> names;
  for (const PageRow* const row : VisibleRows()) {
    if (SameIgnoringCase(name, BitOf(*row))) return *row;
    if (SameIgnoringCase(name, NameOf(*row))) found.push_back(row);
    if (std::ranges::find(names, NameOf(*row)) == names.end()) names.push_back(NameOf(*row));
  }
  if (found.size() == 1) return *found.front();
  if (found.empty()) {
    const auto nearest =
        NearestNames(name, std::vector<std::string_view>(names.begin(), names.end()));
    throw UsageError(fmt::format("{}: {} has no such bit; {}", name, device_.name,
                                 nearest.empty()
                                     ? fmt::format("it has {}", fmt::join(names, ", "))
                                     : fmt::format("did you mean {}?", fmt::join(nearest, ", "))));
  }
  const auto bits = std::views::transform(found, [](const PageRow* row) { return BitOf(*row); });
  throw UsageError(
      fmt::format("{}: more than one bit has this name; use {}", name, fmt::join(bits, " or ")));
}

void FusePage::Set(const std::string& assignment) {
  const auto [name, value] = SplitAssignment(assignment, "CKDIV8=1 or low.7=Disable");
  const PageRow& row = Find(name);
  if (!IsChangeable(row)) {
    throw UsageError(
        fmt::format("{}: {} is shown only and keeps its value", assignment, NameOf(row)));
  }
  const std::string before = LineOf(row).value;
  if (row.control->kind == Control::Kind::kComboBox) {
    Choose(row, assignment, value);
  } else {
    Type(row, assignment, value);
  }
  const auto [given, is_new] = given_.emplace(BitOf(row), assignment);
  if (!is_new && LineOf(row).value != before) {
    throw UsageError(fmt::format("{} contradicts {}; give only one", assignment, given->second));
  }
}

}  // namespace fliglaf::cli
