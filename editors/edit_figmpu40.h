#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "editors/configuration_editor.h"
#include "image_layout/image_layout.h"
#include "platform/form.h"

namespace fliglaf {

/// The editor of fuse and lock bytes (families 4 to 7, 13 and 14) and of the two bytes that protect
/// a flash in eight blocks (families 8 to 11).
class edit_figmpu40 : public ConfigurationEditor {
 public:
  explicit edit_figmpu40(EditorServices services);

  /// Whether it has a page for a device family.
  [[nodiscard]] static bool Serves(std::uint8_t mode);

  // Fuse page.
  platform::Frame Frame1;
  std::array<platform::Label, 8> Label1;  ///< low fuse byte, bit i in element i
  std::array<platform::ComboBox, 8> Combo1;
  std::array<platform::Label, 8> Label4;  ///< high fuse byte
  std::array<platform::ComboBox, 8> Combo4;
  std::array<platform::Label, 5> Label5;  ///< extended fuse byte
  std::array<platform::ComboBox, 5> Combo5;
  std::array<platform::Label, 5> Label3;     ///< lock mode, then lock bits 2 to 5
  std::array<platform::ComboBox, 6> Combo3;  ///< lock mode, then lock bits 2 to 6
  std::array<platform::Label, 3> Label2;
  platform::TextBox Text1;  ///< calibration byte, shown only
  platform::TextBox Text3;  ///< calibration buffer address, without effect

  // Security page.
  platform::Frame Frame2;
  std::array<platform::Label, 2> Label8;
  std::array<platform::TextBox, 2> Text8;  ///< write/erase lock byte and read lock byte
  std::array<platform::Label, 8> Label6;   ///< write/erase lock, block i in element i
  std::array<platform::ComboBox, 8> Combo6;
  std::array<platform::Label, 8> Label7;  ///< read lock
  std::array<platform::ComboBox, 8> Combo7;

 private:
  void Form_Load() override;
  void Store() override;

  void AddFusePage();
  void AddSecurityPage();
  void Design();
  void LoadFuses();
  void LoadSecurity();
  void CaptionFuses(std::uint8_t variant);
  void StoreFuses();
  void StoreSecurity();
  void LayOut(platform::Frame& frame);
  /// The configuration bytes of the page in the data buffer. Throws RangeError where it has none.
  [[nodiscard]] std::span<std::uint8_t> Bytes(ConfigArea page);

  std::vector<PageRow> fuse_rows_;
  std::vector<PageRow> security_rows_;
  ConfigArea page_ = ConfigArea::kNone;
};

}  // namespace fliglaf
