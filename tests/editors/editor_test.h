// An editor over variables of its own, on a desktop without a screen.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "editors/configuration_editor.h"
#include "platform/portable/portable_desktop.h"
#include "platform/portable/time_source.h"
#include "shared/shared_variables.h"
#include "shared/text.h"

namespace fliglaf::test {

template <class Editor>
class EditorTest : public testing::Test {
 protected:
  static constexpr std::int32_t kBytes = 2048;

  EditorTest() {
    vars.OpenMainGroup(3, [] { FAIL(); });
    vars.quorinbuflength[0] = kBytes;
    vars.OpenDataBuffers(vars.DataBufferLength(), [] { FAIL(); });
  }

  /// A freshly opened editor.
  Editor& Open() {
    editor_ = std::make_unique<Editor>(
        EditorServices{.desktop = desktop,
                       .datstr = [](auto value, auto digits) { return HexDigits(value, digits); },
                       .when_idle = [](const std::function<void()>& action) { action(); }});
    editor_->Open(shared_);
    return *editor_;
  }
  Editor& Open(int mode, int variant) {
    vars.quorinprgmode[0] = static_cast<std::uint8_t>(mode);
    vars.quorinwoption[0] = static_cast<std::uint8_t>(variant);
    return Open();
  }

  std::vector<std::uint8_t> buffer() {
    const auto bytes = vars.quorinibuffer.Range(0, vars.quorinibuffer.count());
    return {bytes.begin(), bytes.end()};
  }
  /// The bits in which the buffer differs from `before`, as "INDEX.BIT" with blanks between them.
  std::string Changed(const std::vector<std::uint8_t>& before) {
    std::string changed;
    const auto now = buffer();
    for (std::size_t i = 0; i < now.size(); ++i) {
      for (int bit = 0; bit < 8; ++bit) {
        if (((now[i] ^ before[i]) >> bit & 1) == 0) continue;
        changed += (changed.empty() ? "" : " ") + std::to_string(i) + "." + std::to_string(bit);
      }
    }
    return changed;
  }

  /// No visible control of the form lies outside the window or its frame, or over another one, and
  /// every text has the room that it needs.
  void ExpectTidy() {
    const auto& controls = editor_->form().controls;
    for (const platform::Control* const one : controls) {
      if (!Shown(*one)) continue;
      const auto [width, height] = Room(*one);
      EXPECT_GE(one->left, 0);
      EXPECT_GE(one->top, 0);
      EXPECT_LE(one->left + one->width, width);
      EXPECT_LE(one->top + one->height, height);
      if (one->kind == platform::Control::Kind::kLabel) {
        const auto& label = static_cast<const platform::Label&>(*one);
        EXPECT_LE(desktop.TextSize(label.caption).width, label.width);
      }
      for (const platform::Control* const other : controls) {
        if (other == one || !Shown(*other) || other->container != one->container) continue;
        EXPECT_TRUE(one->left + one->width <= other->left ||
                    other->left + other->width <= one->left ||
                    one->top + one->height <= other->top || other->top + other->height <= one->top);
      }
    }
  }

  std::shared_ptr<SharedVariables> shared_ = std::make_shared<SharedVariables>();
  SharedVariables& vars = *shared_;
  platform::StandingTime time_;
  platform::PortableDesktop desktop{time_};

 private:
  static bool Shown(const platform::Control& control) {
    return control.visible && (control.container == nullptr || control.container->visible);
  }
  [[nodiscard]] platform::Size Room(const platform::Control& control) const {
    if (control.container == nullptr) return editor_->form().InnerSize();
    return {control.container->width, control.container->height};
  }

  std::unique_ptr<Editor> editor_;
};

}  // namespace fliglaf::test
