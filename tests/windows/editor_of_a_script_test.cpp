// The configuration editor as a script opens it, driven from another process.
#include <windows.h>

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/windows/window_search.h"

namespace fliglaf::test {
namespace {

/// A program that runs beside this one.
class Beside {
 public:
  explicit Beside(std::wstring command) {
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &start, &process_));
  }
  ~Beside() {
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }
  Beside(const Beside&) = delete;
  Beside& operator=(const Beside&) = delete;

  [[nodiscard]] bool Ends() const {
    return WaitForSingleObject(process_.hProcess, 30'000) == WAIT_OBJECT_0;
  }

 private:
  PROCESS_INFORMATION process_ = {};
};

/// The window of that title, of whatever process, when it is there.
HWND WaitFor(const wchar_t* title) {
  HWND found = nullptr;
  for (int i = 0; i < 600 && !IsWindowVisible(found); ++i) {
    Sleep(50);
    found = FindWindowW(nullptr, title);
  }
  return found;
}

TEST(EditorOfAScript, StoresWhatTheUserChooses) {
  const Beside script(L"cscript //nologo editor.vbs editor.txt");
  const HWND box = WaitFor(L"fliglaf script");
  const HWND dialog = WaitFor(L"Edit Configuration");
  ASSERT_NE(box, nullptr);
  ASSERT_NE(dialog, nullptr);
  std::vector<HWND> lists;
  EnumChildWindows(dialog, TakeControls, reinterpret_cast<LPARAM>(&lists));
  std::erase_if(lists, [](HWND control) { return ClassOf(control) != L"ComboBox"; });
  ASSERT_EQ(lists.size(), 6U);
  SendMessageW(lists[2], CB_SETCURSEL, 0, 0);
  SendMessageW(lists[5], CB_SETCURSEL, 0, 0);
  SendMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
  EXPECT_FALSE(IsWindow(dialog));
  PostMessageW(box, WM_CLOSE, 0, 0);
  ASSERT_TRUE(script.Ends());
  std::ifstream report("editor.txt");
  std::string bytes;
  std::getline(report, bytes);
  EXPECT_EQ(bytes, "FA FD");
}

}  // namespace
}  // namespace fliglaf::test
