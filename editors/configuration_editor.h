// What the two configuration editors have in common: they show bytes of the data buffer bit by bit,
// and put them back when the user presses OK.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "editors/page.h"
#include "platform/desktop.h"
#include "platform/form.h"
#include "shared/shared_variables.h"

namespace fliglaf {

/// What an editor asks of the library that opens it.
struct EditorServices {
  platform::Desktop& desktop;
  /// The programmer's hexadecimal text.
  std::function<std::u16string(std::int32_t value, std::int32_t digits)> datstr;
  /// Carries out an action now, or when the request that is running has ended.
  std::function<void(std::function<void()> action)> when_idle;
};

class ConfigurationEditor {
 public:
  virtual ~ConfigurationEditor() = default;
  ConfigurationEditor(const ConfigurationEditor&) = delete;
  ConfigurationEditor& operator=(const ConfigurationEditor&) = delete;

  /// Loads or reloads the form from the buffer. What the user has changed is kept while the device is
  /// the same, or OK is still waiting. The variables are kept open until the form is unloaded. Throws
  /// RangeError when the buffer does not hold the bytes; the form then stays as it was.
  void Open(const std::shared_ptr<SharedVariables>& variables);
  /// The same for a user, who gets a message box in place of the exception; then false.
  [[nodiscard]] bool OpenForUser(const std::shared_ptr<SharedVariables>& variables);

  [[nodiscard]] platform::Form& form() { return form_; }
  /// The rows of the page shown, hidden ones included.
  [[nodiscard]] std::span<const PageRow> rows() const { return rows_; }

  /// Stores the bytes and unloads the form. If the buffer no longer holds them, a message box says
  /// so and the form stays.
  platform::Button OKButton;
  /// Unloads the form.
  platform::Button CancelButton;

 protected:
  explicit ConfigurationEditor(EditorServices services);

  /// Reads the bytes, then sets every control. Throws RangeError before it has changed one.
  virtual void Form_Load() = 0;
  /// Writes all bytes, or throws RangeError and writes none.
  virtual void Store() = 0;

  [[nodiscard]] SharedVariables& vars() { return *vars_; }
  [[nodiscard]] platform::Desktop& desktop() { return services_.desktop; }
  [[nodiscard]] const EditorServices& services() const { return services_; }
  /// A text of the user's language.
  [[nodiscard]] std::u16string Text(int number);
  /// Puts a frame with its rows on the form, without rows that have no control.
  void Add(platform::Frame& frame, std::span<const PageRow> rows);

  platform::Form form_;
  std::vector<PageRow> rows_;

 private:
  /// What the layout and the place of the bytes follow from.
  struct Device {
    std::uint8_t family = 0;
    std::uint8_t variant = 0;
    std::int64_t start = 0;
    bool operator==(const Device&) const = default;
  };

  [[nodiscard]] static Device DeviceOf(const SharedVariables& variables);
  /// What the lists and text boxes hold.
  [[nodiscard]] std::u16string Entries() const;
  void ReportShortBuffer(const SharedVariables& variables);
  void OKButton_Click();
  void Unload();

  EditorServices services_;
  std::shared_ptr<SharedVariables> vars_;
  Device device_;           ///< as it was loaded
  std::u16string entries_;  ///< as they were loaded
  bool ok_waits_ = false;   ///< OK has been pressed, and a request is still running
};

}  // namespace fliglaf
