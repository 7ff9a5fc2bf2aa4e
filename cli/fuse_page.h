#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "devices/device_profile.h"
#include "editors/configuration_editor.h"
#include "platform/portable/portable_desktop.h"
#include "platform/portable/time_source.h"
#include "shared/shared_variables.h"

namespace fliglaf::cli {

/// A line of the table of bits.
struct FuseLine {
  std::string bit;      ///< "low.0", "lock.1-0"; the byte alone for all of its bits
  std::string name;     ///< the caption, without the colon
  std::string value;    ///< binary digits, or two hexadecimal ones for a byte
  std::string meaning;  ///< the entry of the list
  bool changeable = true;
};

/// The page of the configuration editors for a device, without a window: its rows by name.
class FusePage {
 public:
  /// Throws UsageError for a device without a page.
  static void RequirePage(const DeviceProfile& device);

  /// Opens it over the buffer of `vars`, which outlives it. The device has a page.
  FusePage(const DeviceProfile& device, SharedVariables& vars);

  /// The visible rows that stand for bits, in the order of the page.
  [[nodiscard]] std::vector<FuseLine> Lines() const;

  /// Changes a row as the user does: "NAME=VALUE", the name that of a caption or a bit, the value
  /// its digits or what they mean. Throws UsageError, also when the row has been set to something
  /// else before.
  void Set(const std::string& assignment);
  /// Whether Set has named the row of this line.
  [[nodiscard]] bool IsSet(const FuseLine& line) const { return given_.contains(line.bit); }

  /// Presses OK: the bytes go into the buffer.
  void Confirm() { editor_->OKButton.Click(); }

 private:
  [[nodiscard]] std::vector<const PageRow*> VisibleRows() const;
  [[nodiscard]] const PageRow& Find(std::string_view name) const;

  const DeviceProfile& device_;
  platform::StandingTime time_;
  platform::PortableDesktop desktop_{time_};
  std::unique_ptr<ConfigurationEditor> editor_;
  std::map<std::string, std::string> given_;  ///< the assignment by its bit
};

}  // namespace fliglaf::cli
