// Opens pages of the configuration editors through the registered library and saves a picture of
// each into the folder that is named: of every page, or of the one page for a small screen.
#include <windows.h>

#include <algorithm>
#include <fliglaf_type_library.h>
#include <gdiplus.h>
#include <iostream>
#include <span>
#include <string>

#include "platform/win32/com_object.h"
#include "shared/shared_variables.h"

namespace fliglaf {
namespace {

constexpr CLSID kPng = {
    0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
constexpr SHORT kInstance = 7;

struct Page {
  const wchar_t* name;
  std::uint8_t family;
  std::uint8_t variant;
  std::int32_t language;
};

constexpr Page kPages[] = {
    {L"fuses-4", 4, 4, 0},         {L"fuses-14", 13, 14, 0},
    {L"fuses-16", 14, 16, 0},      {L"fuses-4-polish", 4, 4, 12000},
    {L"flash-security", 8, 12, 0}, {L"lock-byte", 12, 0, 0},
    {L"fuse-bits", 15, 0, 0},
};

void Pump() {
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

BOOL CALLBACK TakeDialog(HWND window, LPARAM found) {
  if (!IsWindowVisible(window)) return TRUE;
  *reinterpret_cast<HWND*>(found) = window;
  return FALSE;
}

/// Wider than a screen of 1,024 pixels when an inch has 144.
constexpr Page kSmallScreenPages[] = {{L"fuses-4-small-screen", 4, 4, 18000}};

bool Save(HWND window, const std::wstring& file) {
  RECT place = {};
  GetWindowRect(window, &place);
  const int width = place.right - place.left;
  const int height = place.bottom - place.top;
  const HDC screen = GetDC(nullptr);
  const HDC memory = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
  SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, width, height, screen, place.left, place.top, SRCCOPY);
  Gdiplus::Bitmap picture(bitmap, nullptr);
  const bool saved = picture.Save(file.c_str(), &kPng, nullptr) == Gdiplus::Ok;
  DeleteDC(memory);
  DeleteObject(bitmap);
  ReleaseDC(nullptr, screen);
  return saved;
}

bool TakeAll(const std::wstring& folder, std::span<const Page> pages) {
  SharedVariables vars;
  vars.OpenMainGroup(kInstance, [] {});
  vars.quorinbuflength[0] = 4096;
  vars.OpenDataBuffers(vars.DataBufferLength(), [] {});
  vars.quorintlength[0] = 2000;
  vars.quorinpagelength[0] = 64;
  CLSID id = {};
  platform::ComPtr<_clsMPU> object;
  CLSIDFromProgID(L"fliglaf.clsMPU", &id);
  if (FAILED(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)))) {
    return false;
  }
  SHORT instance = kInstance;
  object->bufcommpu4(&instance);
  bool all = true;
  for (const Page& page : pages) {
    vars.quorinprgmode[0] = page.family;
    vars.quorinwoption[0] = page.variant;
    vars.quorinLanguage[0] = page.language;
    object->sinitmpu4();
    object->editfigmpu40();
    Pump();
    HWND window = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), TakeDialog, reinterpret_cast<LPARAM>(&window));
    if (window == nullptr) return false;
    RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    all = Save(window, folder + L"\\" + page.name + L".png") && all;
    SendMessageW(window, WM_CLOSE, 0, 0);
    Pump();
  }
  return all;
}

}  // namespace
}  // namespace fliglaf

int wmain(int argc, wchar_t** argv) {
  if (argc < 2 || FAILED(CoInitialize(nullptr))) return 2;
  ULONG_PTR token = 0;
  const Gdiplus::GdiplusStartupInput input;
  Gdiplus::GdiplusStartup(&token, &input, nullptr);
  const bool small_screen = argc == 3 && std::wstring(argv[2]) == L"small-screen";
  const auto pages = small_screen ? std::span<const fliglaf::Page>(fliglaf::kSmallScreenPages)
                                  : std::span<const fliglaf::Page>(fliglaf::kPages);
  const bool taken = fliglaf::TakeAll(argv[1], pages);
  Gdiplus::GdiplusShutdown(token);
  CoUninitialize();
  return taken ? 0 : 1;
}
