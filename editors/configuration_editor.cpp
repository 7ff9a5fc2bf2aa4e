#include "editors/configuration_editor.h"

#include <utility>

#include "image_layout/image_layout.h"
#include "resources/string_table.h"
#include "shared/range_error.h"

namespace fliglaf {

ConfigurationEditor::ConfigurationEditor(EditorServices services) : services_(std::move(services)) {
  OKButton.is_default = true;
  OKButton.on_click = [this] {
    if (std::exchange(ok_waits_, true)) return;
    services_.when_idle([this] {
      if (std::exchange(ok_waits_, false)) OKButton_Click();
    });
  };
  CancelButton.is_cancel = true;
  CancelButton.on_click = [this] { Unload(); };
}

void ConfigurationEditor::Open(const std::shared_ptr<SharedVariables>& variables) {
  if (ok_waits_) return;
  if (form_.view) form_.view->TakeOver();
  const Device device = DeviceOf(*variables);
  auto before = std::exchange(vars_, variables);
  if (form_.loaded && device == device_ && Entries() != entries_) return;
  try {
    Form_Load();
  } catch (const RangeError&) {
    vars_ = std::move(before);
    throw;
  }
  device_ = device;
  entries_ = Entries();
  form_.loaded = true;
}

bool ConfigurationEditor::OpenForUser(const std::shared_ptr<SharedVariables>& variables) {
  try {
    Open(variables);
    return true;
  } catch (const RangeError&) {
    ReportShortBuffer(*variables);
    return false;
  }
}

ConfigurationEditor::Device ConfigurationEditor::DeviceOf(const SharedVariables& variables) {
  const std::uint8_t family = variables.quorinprgmode[0];
  return {.family = family,
          .variant = variables.quorinwoption[0],
          .start = LayoutOf(family, SizesOf(variables)).config_start};
}

std::u16string ConfigurationEditor::Entries() const {
  std::u16string entries;
  for (const platform::Control* const control : form_.controls) {
    if (control->kind == platform::Control::Kind::kComboBox) {
      entries += static_cast<char16_t>(static_cast<const platform::ComboBox*>(control)->chosen);
    } else if (control->kind == platform::Control::Kind::kTextBox) {
      entries += static_cast<const platform::TextBox*>(control)->text + u'\n';
    }
  }
  return entries;
}

/// In English where the language has no texts.
void ConfigurationEditor::ReportShortBuffer(const SharedVariables& variables) {
  constexpr int kText = resources::text::kBufferTooShort;
  std::u16string text = desktop().LoadText(std::int64_t{variables.quorinLanguage[0]} + kText);
  if (text.empty()) text = desktop().LoadText(kText);
  desktop().MsgBox(platform::box_style::kOkOnly, u"fliglaf", text);
}

void ConfigurationEditor::OKButton_Click() {
  if (!form_.loaded) return;
  try {
    Store();
  } catch (const RangeError&) {
    return ReportShortBuffer(*vars_);
  }
  Unload();
}

void ConfigurationEditor::Unload() {
  ok_waits_ = false;
  form_.Unload();
  vars_.reset();
}

std::u16string ConfigurationEditor::Text(int number) {
  return desktop().LoadText(std::int64_t{vars_->quorinLanguage[0]} + number);
}

void ConfigurationEditor::Add(platform::Frame& frame, std::span<const PageRow> rows) {
  form_.controls.push_back(&frame);
  for (const PageRow& row : rows) {
    for (platform::Control* const control :
         {static_cast<platform::Control*>(row.label), row.control}) {
      if (control == nullptr) continue;
      control->container = &frame;
      form_.controls.push_back(control);
    }
  }
}

}  // namespace fliglaf
