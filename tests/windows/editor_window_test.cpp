// The configuration editors as windows, driven through their controls by a host whose message loop
// knows nothing of dialogs.
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/win32/message_font.h"
#include "tests/windows/registered_library.h"
#include "tests/windows/window_search.h"

namespace fliglaf::test {
namespace {

constexpr int kLow = 2 * 1000 - 32;
constexpr int kHigh = kLow + 2;
constexpr int kLock = kLow + 3;

class EditorWindow : public RegisteredLibrary {
 protected:
  void SetUp() override {
    RegisteredLibrary::SetUp();
    vars_.quorintlength[0] = 1000;
    vars_.quorinbvcch[0] = 0;
    vars_.quorinpagelength[0] = 16;
    std::ranges::fill(Image(), std::uint8_t{0xFF});
  }
  void TearDown() override {
    if (window() != nullptr) Press(VK_ESCAPE);
    vars_.quorinLanguage[0] = 0;
    RegisteredLibrary::TearDown();
  }

  HWND Open(int mode, int variant) {
    vars_.quorinprgmode[0] = static_cast<std::uint8_t>(mode);
    vars_.quorinwoption[0] = static_cast<std::uint8_t>(variant);
    EXPECT_EQ(object_->editfigmpu40(), S_OK);
    Pump();
    return window();
  }

  /// The dialog of this thread that can be seen.
  static HWND window() {
    HWND found = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), TakeDialog, reinterpret_cast<LPARAM>(&found));
    return found;
  }

  static std::vector<HWND> Controls() {
    std::vector<HWND> controls;
    EnumChildWindows(window(), TakeControls, reinterpret_cast<LPARAM>(&controls));
    return controls;
  }
  /// The control behind the label of that name.
  static HWND Named(const std::wstring& name) {
    const auto controls = Controls();
    for (std::size_t i = 0; i + 1 < controls.size(); ++i) {
      if (CaptionOf(controls[i]) == name && ClassOf(controls[i]) == L"Static")
        return controls[i + 1];
    }
    ADD_FAILURE() << "no such label";
    return nullptr;
  }

  /// A key for the control that has the focus, through the message loop.
  static void Press(WPARAM key) {
    PostMessageW(GetFocus(), WM_KEYDOWN, key, 1);
    Pump();
    if (window() == nullptr) return;
    PostMessageW(GetFocus(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    Pump();
  }
  static void Click(int button) {
    SendMessageW(GetDlgItem(window(), button), BM_CLICK, 0, 0);
    Pump();
  }

  static HRESULT CanUnload() {
    using Ask = HRESULT(WINAPI*)();
    const auto ask = reinterpret_cast<Ask>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"fliglaf.dll"), "DllCanUnloadNow")));
    return ask();
  }
};

TEST_F(EditorWindow, StoresWhatItsControlsShow) {
  Image()[kLow] = 0x62;
  Image()[kLow + 1] = 0x9C;
  const HWND dialog = Open(4, 4);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(TextOf(dialog), L"Edit Configuration");
  EXPECT_EQ(GetWindow(dialog, GW_OWNER), nullptr);
  EXPECT_EQ(SendMessageW(Named(L"CKSEL1:"), CB_GETCURSEL, 0, 0), 1);
  EXPECT_EQ(SendMessageW(Named(L"CKDIV8:"), CB_GETCURSEL, 0, 0), 0);
  EXPECT_EQ(TextOf(Named(L"CKDIV8:")), L" Enable(0)");
  EXPECT_EQ(TextOf(Named(L"Calibration Byte:")), L"9C");
  EXPECT_FALSE(IsWindowEnabled(Named(L"Calibration Byte:")));
  EXPECT_FALSE(IsWindowEnabled(Named(L"JTAGEN:")));

  SetFocus(Named(L"CKSEL1:"));
  Press(VK_UP);
  SendMessageW(Named(L"SPIEN:"), CB_SETCURSEL, 0, 0);
  SendMessageW(Named(L"Lock Bit"), CB_SETCURSEL, 2, 0);
  EXPECT_EQ(Image()[kLow], 0x62) << "before OK";
  Click(IDOK);
  EXPECT_EQ(window(), nullptr);
  EXPECT_EQ(Image()[kLow], 0x60);
  EXPECT_EQ(Image()[kHigh], 0xDF);
  EXPECT_EQ(Image()[kLock], 0xFC);
}

TEST_F(EditorWindow, HandlesTheKeysOfADialog) {
  Open(4, 4);
  EXPECT_EQ(GetFocus(), Named(L"CKSEL0:"));
  Press(VK_TAB);
  EXPECT_EQ(GetFocus(), Named(L"CKSEL1:"));
  std::vector<HWND> visited;
  for (int i = 0; i < 40 && GetFocus() != GetDlgItem(window(), IDCANCEL); ++i) {
    visited.push_back(GetFocus());
    Press(VK_TAB);
  }
  EXPECT_EQ(visited.back(), GetDlgItem(window(), IDOK));
  EXPECT_EQ(std::ranges::count(visited, Named(L"JTAGEN:")), 0);
  EXPECT_EQ(std::ranges::count(visited, Named(L"OCDEN:")), 1);
  Press(VK_TAB);
  EXPECT_EQ(GetFocus(), Named(L"CKSEL0:")) << "round again";

  const auto controls = Controls();
  const auto label = std::ranges::find(controls, std::wstring(L"BOOTRST:"), CaptionOf);
  ASSERT_NE(label, controls.end());
  const std::wstring text = TextOf(*label);
  PostMessageW(GetFocus(), WM_SYSCHAR, text[text.find(L'&') + 1], 1 << 29);
  Pump();
  EXPECT_EQ(GetFocus(), Named(L"BOOTRST:"));
  Press(VK_UP);
  Press(VK_RETURN);
  EXPECT_EQ(window(), nullptr);
  EXPECT_EQ(Image()[kHigh], 0xFE);

  Open(4, 4);
  SetFocus(Named(L"CKSEL0:"));
  Press(VK_UP);
  Press(VK_ESCAPE);
  EXPECT_EQ(window(), nullptr);
  EXPECT_EQ(Image()[kLow], 0xFF);
  Open(4, 4);
  SendMessageW(window(), WM_CLOSE, 0, 0);
  Pump();
  EXPECT_EQ(window(), nullptr);
}

void CALLBACK EndTheMenu(HWND /*window*/, UINT /*message*/, UINT_PTR timer, DWORD /*time*/) {
  EXPECT_TRUE(KillTimer(nullptr, timer) && EndMenu());
}

TEST_F(EditorWindow, LeavesTheKeysOfAMenuAndOfAMoveAlone) {
  Open(4, 4);
  const HWND focus = GetFocus();
  // Alt with the space bar: the menu is opened by a key that Wine sends it.
  SetTimer(nullptr, 0, 200, EndTheMenu);
  SendMessageW(focus, WM_SYSCHAR, L' ', 1 << 29);
  Pump();
  ASSERT_NE(window(), nullptr);
  PostMessageW(window(), WM_SYSCOMMAND, SC_MOVE, 0);
  PostMessageW(focus, WM_KEYDOWN, VK_RETURN, 1);
  Pump();
  EXPECT_NE(window(), nullptr);
}

TEST_F(EditorWindow, TakesNoKeyThatWasPressedElsewhere) {
  const int place = 1000 - 16 - 1;
  Image()[place] = 0xA5;
  Open(12, 0);
  const HWND text = GetFocus();
  for (const LPARAM repeats : {0, 1}) {  // of the key that opened the window
    if (repeats != 0) PostMessageW(text, WM_KEYDOWN, VK_RETURN, 0x40000001);
    Pump();
    PostMessageW(text, WM_KEYUP, VK_RETURN, static_cast<LPARAM>(0xC0000001));
    Pump();
    EXPECT_EQ(GetFocus(), text);
    EXPECT_EQ(TextOf(text), L"A5");
  }
  Press(VK_RETURN);
  Press(VK_RETURN);
  EXPECT_EQ(Image()[place], 0xA5);
}

TEST_F(EditorWindow, FiltersTheKeysOfItsTexts) {
  Image()[kLow + 1] = 0x9C;
  Open(14, 16);
  const HWND text = Named(L"Calibration Byte:");
  SetFocus(text);
  SendMessageW(text, EM_SETSEL, 0, 0);
  for (const wchar_t key : std::wstring(L"G\b3")) SendMessageW(text, WM_CHAR, key, 1);
  EXPECT_EQ(TextOf(text), L"3C");
  SendMessageW(text, EM_SETSEL, 0, 0);
  Press(VK_DELETE);
  EXPECT_EQ(TextOf(text), L"3C");
  SendMessageW(Named(L"Cal Buffer Addr:"), WM_CHAR, L'0', 1);
  EXPECT_EQ(TextOf(Named(L"Cal Buffer Addr:")), L"0FFFFF");
  Press(VK_RETURN);
  EXPECT_EQ(Image()[kLow + 1], 0x9C);
}

TEST_F(EditorWindow, EditsAFlashInBlocks) {
  Open(8, 14);
  const auto controls = Controls();
  const auto written = std::ranges::find(controls, std::wstring(L"Edit"), ClassOf);
  ASSERT_NE(written, controls.end());
  SetFocus(Named(L"0x2000 - 0x3FFF"));
  Press(VK_UP);
  EXPECT_EQ(TextOf(*written), L"FD");
  SetFocus(Named(L"No effect"));
  Press(VK_UP);
  EXPECT_EQ(TextOf(*written), L"ED");
  Click(IDOK);
  EXPECT_EQ(Image()[1000 - 16 - 2], 0xED);
  EXPECT_EQ(Image()[1000 - 16 - 1], 0xFF);
}

TEST_F(EditorWindow, EditsTheLockByte) {
  const int place = 1000 - 16 - 1;
  Image()[place] = 0xA5;
  Open(12, 0);
  const HWND text = Named(L"Address \"3D7\" Value: ");
  EXPECT_EQ(GetFocus(), text);
  EXPECT_EQ(TextOf(text), L"A5");
  SetWindowTextW(text, L"3C");
  Press(VK_RETURN);
  EXPECT_EQ(TextOf(text), L"3C");
  EXPECT_EQ(GetFocus(), GetDlgItem(window(), IDOK));
  Press(VK_RETURN);
  EXPECT_EQ(Image()[place], 0x3C);

  Open(12, 0);
  const HWND again = Named(L"Address \"3D7\" Value: ");
  SetWindowTextW(again, L"G1");
  Press(VK_TAB);
  EXPECT_EQ(TextOf(again), L"FF") << "the focus went elsewhere";
  SetWindowTextW(again, L"1FF");
  Click(IDOK);
  EXPECT_EQ(Image()[place], 0xFF);

  Open(15, 0);
  EXPECT_FALSE(IsWindowEnabled(Named(L"Bit 0 ISP Enable")));
  SetFocus(Named(L"Bit 1 Lock Bit 2"));
  Press(VK_UP);
  Press(VK_RETURN);
  EXPECT_EQ(Image()[1000 - 31], 0xFD);
}

TEST_F(EditorWindow, OutlivesTheObjectThatOpenedIt) {
  const HWND dialog = Open(4, 4);
  SendMessageW(Named(L"CKSEL0:"), CB_SETCURSEL, 0, 0);
  Image()[kLow] = 0x0F;
  EXPECT_EQ(Open(4, 4), dialog) << "one window";
  EXPECT_EQ(SendMessageW(Named(L"CKSEL0:"), CB_GETCURSEL, 0, 0), 0) << "as the user chose";
  EXPECT_EQ(Open(4, 14), dialog);
  EXPECT_EQ(SendMessageW(Named(L"CKSEL0:"), CB_GETCURSEL, 0, 0), 1) << "another device";
  EXPECT_EQ(SendMessageW(Named(L"BOOTRST:"), CB_GETCURSEL, 0, 0), 0);

  object_.Reset();
  EXPECT_EQ(CanUnload(), S_FALSE);
  SendMessageW(Named(L"BOOTRST:"), CB_SETCURSEL, 1, 0);
  Click(IDOK);
  EXPECT_EQ(Image()[kLow], 0x4F);
  EXPECT_EQ(CanUnload(), S_OK);

  Create();
  Open(12, 0);
  object_.Reset();
  CoUninitialize();
  Pump();
  RedrawWindow(window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
  Click(IDCANCEL);
  EXPECT_EQ(window(), nullptr);
  ASSERT_EQ(CoInitialize(nullptr), S_OK);
}

std::wstring g_said;

void CALLBACK CloseTheBox(HWND /*window*/, UINT /*message*/, UINT_PTR /*timer*/, DWORD /*time*/) {
  const HWND box = FindWindowW(nullptr, L"fliglaf");
  if (box == nullptr) return;
  g_said = TextOf(GetDlgItem(box, 0xFFFF));
  PostMessageW(box, WM_CLOSE, 0, 0);
}

TEST_F(EditorWindow, SaysThatTheBufferIsTooShort) {
  vars_.quorinLanguage[0] = 21000;
  vars_.quorintlength[0] = kFlashBytes;
  const UINT_PTR timer = SetTimer(nullptr, 0, 100, CloseTheBox);
  EXPECT_EQ(Open(4, 4), nullptr);
  KillTimer(nullptr, timer);
  EXPECT_EQ(g_said.substr(0, 27), L"De databuffer is te kort: h");
}

/// Width of a text in the font of its control.
LONG WidthOf(HWND control, const std::wstring& text) {
  const HDC context = GetDC(control);
  SelectObject(context, reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0)));
  SIZE size = {};
  GetTextExtentPoint32W(context, text.data(), static_cast<int>(text.size()), &size);
  ReleaseDC(control, context);
  return size.cx;
}

void ExpectRoom(HWND control) {
  RECT inside = {};
  GetClientRect(control, &inside);
  if (ClassOf(control) != L"ComboBox") {
    EXPECT_LE(WidthOf(control, CaptionOf(control)), inside.right);
    return;
  }
  COMBOBOXINFO info = {};
  info.cbSize = sizeof info;
  GetComboBoxInfo(control, &info);
  for (int i = 0; i < static_cast<int>(SendMessageW(control, CB_GETCOUNT, 0, 0)); ++i) {
    std::wstring entry(64, L'\0');
    entry.resize(static_cast<std::size_t>(SendMessageW(
        control, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(entry.data()))));
    EXPECT_LE(WidthOf(control, entry), info.rcItem.right - info.rcItem.left);
  }
}

/// Whether all of a window is in the inside of another one.
bool IsWithin(HWND around, HWND window) {
  RECT inside = {};
  GetClientRect(around, &inside);
  MapWindowPoints(around, nullptr, reinterpret_cast<POINT*>(&inside), 2);
  RECT place = {};
  GetWindowRect(window, &place);
  RECT common = {};
  IntersectRect(&common, &place, &inside);
  return EqualRect(&common, &place) != FALSE;
}

/// The wheel over a list moves the page, and leaves what is chosen alone.
void ExpectWheelScrolls(HWND list) {
  const auto chosen = SendMessageW(list, CB_GETCURSEL, 0, 0);
  std::vector<RECT> places;
  for (const int turn : {WHEEL_DELTA, -WHEEL_DELTA, WHEEL_DELTA}) {
    SendMessageW(list, WM_MOUSEWHEEL, MAKEWPARAM(0, 8 * turn), 0);
    GetWindowRect(list, &places.emplace_back());
  }
  EXPECT_FALSE(EqualRect(&places[0], &places[1]));
  EXPECT_TRUE(EqualRect(&places[0], &places[2]));
  EXPECT_EQ(SendMessageW(list, CB_GETCURSEL, 0, 0), chosen);
}

TEST_F(EditorWindow, HasRoomForItsTextsAndFitsTheScreenInEveryLanguage) {
  const platform::SystemResolution resolution;
  for (int language = 0; language <= 21000; language += 3000) {
    vars_.quorinLanguage[0] = language;
    for (const auto& [mode, variant] :
         {std::pair{4, 4}, {5, 99}, {14, 16}, {9, 15}, {12, 0}, {15, 0}}) {
      SCOPED_TRACE(testing::Message() << language << ' ' << mode);
      const HWND dialog = Open(mode, variant);
      EXPECT_TRUE(IsWithin(GetDesktopWindow(), dialog));
      const HWND pane = GetWindow(dialog, GW_CHILD);
      for (const HWND control : Controls()) {
        ExpectRoom(control);
        if (!IsWindowEnabled(control) || !(GetWindowLongW(control, GWL_STYLE) & WS_TABSTOP))
          continue;
        SetFocus(control);
        EXPECT_TRUE(IsWithin(GetParent(control), control));
      }
      EXPECT_TRUE(IsWithin(dialog, GetDlgItem(dialog, IDCANCEL)) && IsWithin(dialog, pane));
      if (GetWindowLongW(pane, GWL_STYLE) & (WS_HSCROLL | WS_VSCROLL)) {
        ExpectWheelScrolls(Named(mode == 9 ? L"0x04000 - 0x07FFF" : L"Lock Bit"));
      }
      Press(VK_ESCAPE);
    }
  }
}

}  // namespace
}  // namespace fliglaf::test
