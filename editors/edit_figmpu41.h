#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "editors/configuration_editor.h"
#include "image_layout/image_layout.h"
#include "platform/form.h"

namespace fliglaf {

/// The editor of the lock byte of family 12, a hexadecimal number, and of the fuse and lock bits of
/// family 15.
class edit_figmpu41 : public ConfigurationEditor {
 public:
  explicit edit_figmpu41(EditorServices services);

  /// Whether it has a page for a device family.
  [[nodiscard]] static bool Serves(std::uint8_t mode);

  /// What ParseHex returns for a text that is not a hexadecimal number.
  static constexpr std::int32_t kNoNumber = -1;
  /// The value of a hexadecimal text, 0 for an empty one; one beyond 2^31 - 1 as that.
  [[nodiscard]] static std::int32_t ParseHex(std::u16string_view text);

  // Page of the lock byte.
  platform::Frame Frame1;
  std::array<platform::Label, 1> Label1;
  std::array<platform::TextBox, 1> Text1;  ///< lock byte

  // Page of fuse and lock bits.
  platform::Frame Frame2;
  std::array<platform::Label, 4> Label2;
  std::array<platform::ComboBox, 4> Combo2;  ///< fuse byte, bit i in element i
  platform::Frame Frame3;
  std::array<platform::Label, 2> Label3;
  std::array<platform::ComboBox, 2> Combo3;  ///< lock byte

 private:
  void Form_Load() override;
  void Store() override;

  void Text1_KeyPress(char16_t& character);
  void Text1_KeyUp(int pressed);
  void Text1_LostFocus();

  void LoadLockByte();
  void LoadBits();
  void LayOut(platform::Frame& page, platform::Frame* below);

  std::vector<PageRow> lock_byte_rows_;
  std::vector<PageRow> bit_rows_;
  ConfigArea page_ = ConfigArea::kNone;
  /// Of fuse and lock bits, from load to OK.
  std::int64_t bits_start_ = 0;
};

}  // namespace fliglaf
