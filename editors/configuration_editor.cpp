#include "editors/configuration_editor.h"

#include <utility>

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
  auto before = std::exchange(vars_, variables);
  try {
    Form_Load();
  } catch (const RangeError&) {
    vars_ = std::move(before);
    throw;
  }
  form_.loaded = true;
}

void ConfigurationEditor::OKButton_Click() {
  if (!form_.loaded) return;
  try {
    Store();
  } catch (const RangeError&) {
    desktop().MsgBox(platform::box_style::kOkOnly, u"fliglaf",
                     u"The data buffer does not hold the configuration bytes");
    return;
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
