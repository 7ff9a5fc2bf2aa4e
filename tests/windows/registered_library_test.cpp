#include "tests/windows/registered_library.h"

#include <windows.h>

#include <algorithm>
#include <fliglaf_type_library.h>
#include <functional>
#include <psapi.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace fliglaf {
namespace {

using test::kFlashBytes;
using test::kInstance;
using test::RegisteredLibrary;
using test::Setting;

/// Calls back in the turns of the message loop, every 10 ms: something else that the host does.
class OtherWork {
 public:
  explicit OtherWork(std::function<void()> work) {
    TheWork() = std::move(work);
    timer_ = SetTimer(nullptr, 0, 10, Tick);
  }
  ~OtherWork() { KillTimer(nullptr, timer_); }
  OtherWork(const OtherWork&) = delete;
  OtherWork& operator=(const OtherWork&) = delete;

 private:
  /// A timer's callback carries no context.
  static std::function<void()>& TheWork() {
    static std::function<void()> work;
    return work;
  }
  static void CALLBACK Tick(HWND /*window*/, UINT /*message*/, UINT_PTR /*timer*/, DWORD /*time*/) {
    TheWork()();
  }
  UINT_PTR timer_;
};

TEST_F(RegisteredLibrary, ProgramsVerifiesAndReadsBackTheChip) {
  LONG length = 0;
  EXPECT_EQ(object_->get_buflg(&length), S_OK);
  EXPECT_EQ(length, kFlashBytes);

  std::vector<std::uint8_t> written(kFlashBytes);
  for (std::size_t i = 0; i < written.size(); ++i) {
    written[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
  }
  std::ranges::copy(written, Image().begin());
  EXPECT_EQ(Run(6), 0) << Log();
  EXPECT_EQ(Log().find(">>"), 0U) << Log();
  EXPECT_NE(Log().find("Program"), std::string::npos) << Log();
  EXPECT_NE(Log().find("Verify"), std::string::npos) << Log();

  std::ranges::fill(Image(), std::uint8_t{0});
  EXPECT_EQ(Run(2), 0) << Log();
  EXPECT_TRUE(std::ranges::equal(Image(), written));

  Image()[1234] ^= 1;
  EXPECT_EQ(Run(3), 1) << Log();
}

TEST_F(RegisteredLibrary, StopsForATimerAndForAQuitThatIsPassedOn) {
  object_.Reset();
  {
    const Setting real_time(L"FLIGLAF_SIM_REALTIME", L"1");
    Create();
    const OtherWork stop([this] { vars_.quorinprgresult[0] = 2; });
    EXPECT_EQ(Run(6), 2) << Log();
  }
  object_.Reset();
  Create();
  PostQuitMessage(42);
  EXPECT_EQ(Run(6), 2) << Log();
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT) {
  }
  EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
  EXPECT_EQ(message.wParam, 42U);
}

TEST_F(RegisteredLibrary, CallsFromWithinARunDoNoHarm) {
  object_.Reset();
  const Setting real_time(L"FLIGLAF_SIM_REALTIME", L"1");
  Create();
  int calls = 0;
  {
    const OtherWork calling([&] {
      ++calls;
      VARIANT_BOOL usb = VARIANT_TRUE;
      SHORT instance = kInstance;
      EXPECT_EQ(object_->runMpu4Prg(&usb), S_OK);
      EXPECT_EQ(object_->bufcommpu4(&instance), S_OK);
      EXPECT_EQ(object_->freesharebuffermpu4(), S_OK);
      Create();  // and releases the object that runs
    });
    EXPECT_EQ(Run(4), 0) << Log();
  }
  EXPECT_GT(calls, 0);
  EXPECT_EQ(Run(4), 0) << "the next request works: " << Log();
}

TEST_F(RegisteredLibrary, SaysWhichComponentIsMissing) {
  object_.Reset();
  const Setting missing(L"FLIGLAF_IOHELPER", L"There.IsNone");
  Create();
  EXPECT_EQ(Run(6), 1);
  EXPECT_EQ(Log(), ">>IoHelper is missing\n");
}

/// Knows the names of the helper's operations and nothing of its interface.
class NamesOnly final : public platform::ComObject<IDispatch> {
 public:
  static HRESULT Create(REFIID iid, void** object) {
    return platform::MakeObject<NamesOnly>()->QueryInterface(iid, object);
  }
  static int calls;

  NamesOnly() {
    CLSID id = {};
    EXPECT_EQ(CLSIDFromProgID(L"IoHelper.IoHelper", &id), S_OK);
    EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&next_)), S_OK);
  }
  STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                             DISPID* ids) noexcept override {
    return next_->GetIDsOfNames(iid, names, count, locale, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD kind, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT* bad) noexcept override {
    ++calls;
    return next_->Invoke(id, iid, locale, kind, parameters, result, exception, bad);
  }

 private:
  platform::ComPtr<IDispatch> next_;
};
int NamesOnly::calls = 0;

TEST_F(RegisteredLibrary, DrivesAHelperThatKnowsOnlyNames) {
  constexpr CLSID kClass = {0x5e2c1b04, 0x3f5d, 0x4a09, {0x91, 7, 1, 2, 3, 4, 5, 6}};
  constexpr wchar_t kKey[] = L"fliglaf.NamesOnly\\CLSID";
  constexpr wchar_t kText[] = L"{5E2C1B04-3F5D-4A09-9107-010203040506}";
  RegSetKeyValueW(HKEY_CLASSES_ROOT, kKey, nullptr, REG_SZ, kText, sizeof kText);
  DWORD cookie = 0;
  const auto factory = platform::MakeObject<platform::ClassFactory>(NamesOnly::Create);
  ASSERT_EQ(CoRegisterClassObject(kClass, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                  &cookie),
            S_OK);
  object_.Reset();
  const Setting late(L"FLIGLAF_IOHELPER", L"fliglaf.NamesOnly");
  Create();
  std::ranges::fill(Image(), std::uint8_t{0x5A});
  EXPECT_EQ(Run(6), 0) << Log();
  EXPECT_GT(NamesOnly::calls, kFlashBytes) << "a queued byte each";
  Image()[7] = 0;
  EXPECT_EQ(Run(3), 1) << Log();
  CoRevokeClassObject(cookie);
  RegDeleteTreeW(HKEY_CLASSES_ROOT, L"fliglaf.NamesOnly");
}

struct Used {
  DWORD handles = 0;
  SIZE_T bytes = 0;
};

Used UsedByTheProcess() {
  Used used;
  GetProcessHandleCount(GetCurrentProcess(), &used.handles);
  PROCESS_MEMORY_COUNTERS memory = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
  used.bytes = memory.PagefileUsage;
  return used;
}

TEST_F(RegisteredLibrary, ManyRoundsLeaveNothingBehind) {
  const auto rounds = [this](int count) {
    for (int i = 0; i < count; ++i) {
      object_.Reset();
      Create();
      EXPECT_EQ(Run(1), 0);
      vars_.quorinMainRtstr.Set(0, u"");
    }
    return UsedByTheProcess();
  };
  const Used before = rounds(50);
  const Used after = rounds(1'000);
  EXPECT_EQ(after.handles, before.handles);
  EXPECT_LT(after.bytes, before.bytes + 100'000) << "100 bytes a round would be a leak";

  const auto can_unload = reinterpret_cast<HRESULT(WINAPI*)()>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"fliglaf.dll"), "DllCanUnloadNow")));
  ASSERT_NE(can_unload, nullptr);
  EXPECT_EQ(can_unload(), S_FALSE);
  object_.Reset();
  EXPECT_EQ(can_unload(), S_OK);
  EXPECT_EQ(FindWindowExW(HWND_MESSAGE, nullptr, L"fliglaf.desktop", nullptr), nullptr);
}

}  // namespace
}  // namespace fliglaf
