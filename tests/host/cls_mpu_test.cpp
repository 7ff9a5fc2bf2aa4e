#include "host/cls_mpu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/automation_string.h"
#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::Narrow;
using test::TestHost;
using testing::Each;
using testing::ElementsAre;

TEST(Object, FollowsTheBufferLengthAndFreesTheBuffers) {
  TestHost host(test::Known("isp51-4k"), {}, 4);
  EXPECT_EQ(host.mpu->buflg, 4096);
  host.vars.ReleaseDataBuffers();
  host.vars.quorinbuflength[0] = 8000;
  std::int16_t instance = 4;
  host.mpu->bufcommpu4(instance);
  EXPECT_EQ(host.mpu->buflg, 8000);
  clsMemMapped probe;
  ASSERT_TRUE(probe.OpenAndMapMemoryBlock("quorinibuffer", 8));
  EXPECT_GE(probe.ViewSize(), 8200U);
  probe.UnMapFile();
  host.mpu->freesharebuffermpu4();
  ASSERT_TRUE(probe.OpenAndMapMemoryBlock("quorinibuffer", 8));
  EXPECT_LE(probe.ViewSize(), 4096U) << "the name was free";
}

TEST(Object, ReportsBlocksThatCannotBeMadeAndGoesOn) {
  TestHost host;
  host.vars.ReleaseDataBuffers();
  host.mpu->freesharebuffermpu4();
  std::vector<std::string> boxes;
  host.desktop.on_box = [&](int style, std::u16string_view, std::u16string_view prompt) {
    EXPECT_EQ(style, 0);
    boxes.push_back(Narrow(prompt));
    return 1;
  };
  host.vars.quorinbuflength[0] = -1000;
  std::int16_t instance = 7;
  host.mpu->bufcommpu4(instance);
  EXPECT_THAT(boxes, ElementsAre("Unable to create memory mapped file"));
  EXPECT_EQ(host.mpu->buflg, -1000);
}

TEST(Object, WorksOnPrivateElementsBeforeItsBlocksAreOpen) {
  TestHost host;
  clsMPU fresh(host.library);
  std::int16_t usb = -1;
  fresh.runMpu4Prg(usb);
  EXPECT_EQ(host.tap.calls.back().operation, "EndRun") << "no second ground pin: an index error";
  std::uint8_t map = 158;
  fresh.mpu4warn(map);
  EXPECT_EQ(map, 30);
  fresh.sinitmpu4();
  EXPECT_EQ(host.bench.programmer().NextEvent(), std::nullopt);
}

TEST(Object, CallsFromWithinARunWaitOrReturnAtOnce) {
  TestHost host;
  bool called = false;
  host.desktop.on_turn = [&] {
    if (std::exchange(called, true)) return false;
    std::int16_t usb = -1;
    std::int16_t instance = 9;
    const std::size_t calls = host.tap.calls.size();
    host.mpu->runMpu4Prg(usb);
    EXPECT_EQ(host.tap.calls.size(), calls);
    host.mpu->bufcommpu4(instance);
    host.mpu->freesharebuffermpu4();
    EXPECT_EQ(clsMemMapped().findnum(), 0) << "nothing of it is open yet";
    return true;
  };
  EXPECT_EQ(host.Run(4), 0) << host.log();
  const platform::Handle block =
      platform::OpenFileMappingA(platform::kFileMapAllAccess, false, "quorinibuf19");
  EXPECT_NE(block, 0U) << "opened when the run had ended";
  platform::CloseHandle(block);
}

TEST(Object, StopsItsRunEvenWhenAskedForAnotherInstance) {
  TestHost host;
  host.desktop.on_turn = [&] {
    std::int16_t instance = 9;
    host.mpu->bufcommpu4(instance);
    host.mpu->Stop();
    return true;
  };
  EXPECT_EQ(host.Run(4), 2);
}

TEST(Object, MayBeReleasedDuringARun) {
  TestHost host;
  auto second = std::make_unique<clsMPU>(host.library);
  std::int16_t instance = 7;
  second->bufcommpu4(instance);
  host.desktop.on_turn = [&] {
    if (second) second->freesharebuffermpu4();
    second.reset();
    return false;
  };
  EXPECT_EQ(host.Run(4), 0);
  EXPECT_EQ(second, nullptr);
}

TEST(Editors, OpenByTheDeviceFamily) {
  TestHost host;
  host.vars.quorintlength[0] = 1024;
  for (int mode = 0; mode <= 17; ++mode) {
    host.vars.quorinprgmode[0] = static_cast<std::uint8_t>(mode);
    host.mpu->editfigmpu40();
    auto* const fuses = host.library.open_edit_figmpu40();
    auto* const locks = host.library.open_edit_figmpu41();
    EXPECT_EQ(fuses != nullptr, (mode >= 4 && mode <= 11) || mode == 13 || mode == 14) << mode;
    EXPECT_EQ(locks != nullptr, mode == 12 || mode == 15) << mode;
    if (fuses != nullptr) fuses->CancelButton.Click();
    if (locks != nullptr) locks->CancelButton.Click();
  }
}

TEST(Editors, AreReloadedAndOutliveTheObject) {
  TestHost host;
  host.vars.quorintlength[0] = 1024;
  host.vars.quorinprgmode[0] = 4;
  host.vars.quorinibuffer[2048 - 32] = 0xFE;
  host.mpu->editfigmpu40();
  edit_figmpu40* const editor = host.library.open_edit_figmpu40();
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->Combo1[0].chosen, 0);
  host.vars.quorinibuffer[2048 - 32] = 0xFD;
  host.mpu->editfigmpu40();
  EXPECT_EQ(host.library.open_edit_figmpu40(), editor);
  EXPECT_EQ(editor->Combo1[0].chosen, 1);

  host.mpu.reset();
  editor->Combo1[7].Choose(0);
  editor->OKButton.Click();
  EXPECT_EQ(host.library.open_edit_figmpu40(), nullptr);
  EXPECT_EQ(host.vars.quorinibuffer[2048 - 32], 0x7D);

  clsMPU fresh(host.library);
  fresh.editfigmpu40();
  EXPECT_EQ(host.library.open_edit_figmpu40(), nullptr) << "its own family is 0";
}

TEST(Editors, WaitForTheEndOfARun) {
  TestHost host;
  host.vars.quorintlength[0] = 4096;
  host.desktop.on_turn = [&] {
    host.vars.quorinprgmode[0] = 15;
    host.mpu->editfigmpu40();
    EXPECT_EQ(host.library.open_edit_figmpu41(), nullptr);
    host.desktop.on_turn = nullptr;
    return true;
  };
  static_cast<void>(host.Run(4));
  edit_figmpu41* editor = host.library.open_edit_figmpu41();
  ASSERT_NE(editor, nullptr);

  host.vars.quorinprgmode[0] = 1;
  editor->Combo3[0].Choose(0);
  host.desktop.on_turn = [&] {
    host.vars.quorinprgmode[0] = 15;
    editor->OKButton.Click();
    host.desktop.on_turn = nullptr;
    EXPECT_TRUE(editor->form().loaded) << "stores nothing into a run";
    return true;
  };
  static_cast<void>(host.Run(4));
  EXPECT_EQ(host.library.open_edit_figmpu41(), nullptr);
  EXPECT_EQ(host.vars.quorinibuffer[4096 - 31], 0xFC);
}

TEST(Editors, KeepWhatTheUserChoseDuringARun) {
  TestHost host;
  host.vars.quorintlength[0] = 4096;
  host.vars.quorinprgmode[0] = 15;
  host.mpu->editfigmpu40();
  edit_figmpu41* const editor = host.library.open_edit_figmpu41();
  ASSERT_NE(editor, nullptr);
  const auto during_a_run = [&](const std::function<void()>& action) {
    host.vars.quorinprgmode[0] = 1;
    host.desktop.on_turn = [&] {
      host.vars.quorinprgmode[0] = 15;
      action();
      host.desktop.on_turn = nullptr;
      return true;
    };
    static_cast<void>(host.Run(4));
  };
  during_a_run([&] {
    host.mpu->editfigmpu40();
    editor->Combo3[0].Choose(0);
    editor->OKButton.Click();
    host.mpu->editfigmpu40();
    editor->OKButton.Click();
  });
  EXPECT_EQ(host.vars.quorinibuffer[4096 - 31], 0xFC);

  host.mpu->editfigmpu40();
  editor->Combo3[0].Choose(1);
  during_a_run([&] {
    editor->OKButton.Click();
    editor->CancelButton.Click();
  });
  EXPECT_EQ(host.vars.quorinibuffer[4096 - 31], 0xFC) << "cancelled after all";
  EXPECT_EQ(host.library.open_edit_figmpu41(), nullptr);
}

TEST(MemoryMap, ShowsWhereAreasLieInDeviceAndBuffer) {
  TestHost host;
  std::string prompt;
  host.desktop.on_box = [&](int style, std::u16string_view title, std::u16string_view text) {
    EXPECT_EQ(style, 64);
    EXPECT_EQ(title, u"Note!");
    prompt = Narrow(text);
    return 1;
  };
  host.vars.quorintlength[0] = 0x2000;
  host.vars.quorinpagelength[0] = 0;
  std::uint8_t map = 31;
  host.mpu->mpu4warn(map);
  EXPECT_EQ(
      prompt,
      "                 Device         Buffer\r\rProgram Memory:000H---1FFEH    000H---1FFEH   "
      "\r\r  Config. Word:    1FFFH         1FFFH   \r\r");
  host.vars.quorintlength[0] = 16;
  map = 30 + 128;
  host.mpu->mpu4warn(map);
  EXPECT_EQ(map, 30);
  EXPECT_THAT(prompt, testing::HasSubstr("000H---FFFFFFAFH"));
  prompt.clear();
  map = 29;
  host.mpu->mpu4warn(map);
  EXPECT_EQ(prompt, "");
}

TEST(FactorySettings, FillTheConfigurationAreaOrNothing) {
  TestHost host;
  host.vars.quorintlength[0] = 1024;
  host.SetImage(std::vector<std::uint8_t>(4096, 0x11));
  host.vars.quorinprgmode[0] = 13;
  host.vars.quorinwoption[0] = 6;
  host.mpu->sinitmpu4();
  EXPECT_THAT(host.vars.quorinibuffer.Range(2048 - 33, 7),
              ElementsAre(0x11, 0xE1, 0x00, 0x99, 0xFF, 0xFD, 0xFF));
  EXPECT_THAT(host.vars.quorinibuffer.Range(2048 - 27, 28), Each(0xFF));
  EXPECT_EQ(host.vars.quorinibuffer[2049], 0x11);

  host.vars.quorinprgmode[0] = 10;
  host.vars.quorinbvcch[0] = 128;
  host.vars.quorinpagelength[0] = 512;
  host.mpu->sinitmpu4();
  EXPECT_THAT(host.vars.quorinibuffer.Range(1024 - 128 - 512 - 3, 4),
              ElementsAre(0x11, 0xFF, 0xFF, 0x11));

  host.vars.quorinprgmode[0] = 15;
  host.mpu->sinitmpu4();
  EXPECT_THAT(host.vars.quorinibuffer.Range(1024 - 33, 3), ElementsAre(0x11, 0xFE, 0xFF));

  host.SetImage(std::vector<std::uint8_t>(4096, 0x22));
  host.vars.quorintlength[0] = 4096;  // the area would begin within the buffer and end outside
  host.vars.quorinprgmode[0] = 4;
  host.mpu->sinitmpu4();
  host.vars.quorintlength[0] = -5;
  host.mpu->sinitmpu4();
  EXPECT_THAT(host.vars.quorinibuffer.Range(0, 4096), Each(0x22));
}

}  // namespace
}  // namespace fliglaf
