// A host of its own: creates the registered object, early bound, and works with it on the
// simulated programmer that stands in for the components.
#include <windows.h>

#include <algorithm>
#include <fliglaf_type_library.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/win32/com_object.h"
#include "shared/shared_variables.h"

namespace fliglaf {
namespace {

using platform::ComPtr;

constexpr std::int32_t kFlashBytes = 4096;
constexpr SHORT kInstance = 7;

/// The environment of the stand-ins while a test runs.
class Setting {
 public:
  Setting(const wchar_t* name, const wchar_t* value) : name_(name) {
    SetEnvironmentVariableW(name, value);
  }
  ~Setting() { SetEnvironmentVariableW(name_, nullptr); }
  Setting(const Setting&) = delete;
  Setting& operator=(const Setting&) = delete;

 private:
  const wchar_t* name_;
};

SharedVariables* stopped_by_timer = nullptr;  // a timer's callback carries no context

void CALLBACK PressStop(HWND /*window*/, UINT /*message*/, UINT_PTR timer, DWORD /*time*/) {
  KillTimer(nullptr, timer);
  stopped_by_timer->quorinprgresult[0] = 2;
}

class RegisteredLibrary : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
    // The host's own block, larger than the library would make it.
    ASSERT_TRUE(larger_.OpenAndMapMemoryBlock("quorinwltbigendbuf7", 100'000));
    vars_.OpenMainGroup(kInstance, [] { FAIL(); });
    vars_.quorinbuflength[0] = kFlashBytes;
    vars_.OpenDataBuffers(vars_.DataBufferLength(), [] { FAIL(); });
    vars_.quorinprgmode[0] = 1;
    vars_.quorintlength[0] = kFlashBytes;
    vars_.quorinwltbigendbuf[0] = 0;
    vars_.quorinwltbigendbuf[1] = kFlashBytes - 1;
    vars_.quorinpwte[0] = 42;
    vars_.quorinbvcc[0] = 500;
    vars_.quorinbvccpin[0] = 40;
    vars_.quorinbgndpin[0] = 20;
    vars_.quorinprgnote.Set(2, u" ok");
    vars_.quorinMainmnuPrg.Set(6, u"Program");
    Create();
  }
  void TearDown() override {
    object_.Reset();
    for (int i = 0; i < 3; ++i) vars_.quorinMainRtstr.Set(i, u"");
    vars_.quorinprgnote.Set(2, u"");
    vars_.quorinMainmnuPrg.Set(6, u"");
    CoUninitialize();
  }

  void Create() {
    CLSID id = {};
    ASSERT_EQ(CLSIDFromProgID(L"fliglaf.clsMPU", &id), S_OK);
    ASSERT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object_)), S_OK);
    SHORT instance = kInstance;
    ASSERT_EQ(object_->bufcommpu4(&instance), S_OK);
  }
  int Run(std::uint8_t operation) {
    vars_.quorinprgresult[0] = 0;
    vars_.quorinprgresult[1] = operation;
    VARIANT_BOOL usb = VARIANT_TRUE;
    EXPECT_EQ(object_->runMpu4Prg(&usb), S_OK);
    return vars_.quorinprgresult[0];
  }
  std::string Log() {
    const auto text = vars_.quorinMainRtstr[0];
    return {text.begin(), text.end()};
  }
  std::span<std::uint8_t> Image() { return vars_.quorinibuffer.Range(0, kFlashBytes); }

  Setting instance_{L"FLIGLAF_SIM_INSTANCE", L"7"};
  clsMemMapped larger_;
  SharedVariables vars_;
  ComPtr<_clsMPU> object_;
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
    stopped_by_timer = &vars_;
    SetTimer(nullptr, 0, 100, PressStop);
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

TEST_F(RegisteredLibrary, SaysWhichComponentIsMissing) {
  object_.Reset();
  const Setting missing(L"FLIGLAF_IOHELPER", L"There.IsNone");
  Create();
  EXPECT_EQ(Run(6), 1);
  EXPECT_EQ(Log(), ">>IoHelper is missing\n");
}

TEST_F(RegisteredLibrary, ManyRoundsLeaveNothingBehind) {
  const auto rounds = [this](int count) {
    for (int i = 0; i < count; ++i) {
      object_.Reset();
      Create();
      EXPECT_EQ(Run(1), 0);
      vars_.quorinMainRtstr.Set(0, u"");
    }
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return handles;
  };
  const DWORD before = rounds(10);
  EXPECT_EQ(rounds(1'000), before);

  const auto can_unload = reinterpret_cast<HRESULT(WINAPI*)()>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"fliglaf.dll"), "DllCanUnloadNow")));
  ASSERT_NE(can_unload, nullptr);
  EXPECT_EQ(can_unload(), S_FALSE);
  object_.Reset();
  EXPECT_EQ(can_unload(), S_OK);
}

}  // namespace
}  // namespace fliglaf
