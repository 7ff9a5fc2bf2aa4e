#include "platform/win32/control_window.h"

namespace fliglaf::platform {

WindowKind KindOf(const Control& control) {
  switch (control.kind) {
    case Control::Kind::kLabel:
      return {L"STATIC", SS_LEFT, 0};
    case Control::Kind::kFrame:
      return {L"BUTTON", BS_GROUPBOX, 0};
    case Control::Kind::kButton: {
      const bool is_default = static_cast<const Button&>(control).is_default;
      const auto style = static_cast<DWORD>(is_default ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON);
      return {L"BUTTON", WS_TABSTOP | style, 0};
    }
    case Control::Kind::kTextBox: {
      const bool lines = static_cast<const TextBox&>(control).takes_return;
      DWORD style = WS_TABSTOP | ES_AUTOHSCROLL;
      if (lines) style |= ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL;
      return {L"EDIT", style, WS_EX_CLIENTEDGE};
    }
    default:
      return {L"COMBOBOX", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, 0};
  }
}

void SetClosedHeight(HWND list, LONG height) {
  RECT now = {};
  GetWindowRect(list, &now);
  const auto item = static_cast<LONG>(SendMessageW(list, CB_GETITEMHEIGHT, WPARAM(-1), 0));
  SendMessageW(list, CB_SETITEMHEIGHT, WPARAM(-1), height - (now.bottom - now.top - item));
}

}  // namespace fliglaf::platform
