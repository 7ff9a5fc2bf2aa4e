#include "shared/shared_variables.h"

#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fliglaf {
namespace {

class SharedBlocks : public testing::Test {
 protected:
  std::function<void()> CountFailures() {
    return [this] { ++failures_; };
  }
  int failures_ = 0;
};

std::int32_t WidthOf(const SharedVariable& variable) {
  switch (variable.type()) {
    case ElementType::kByte:
      return 1;
    case ElementType::kLong:
    case ElementType::kString:
      return 4;
    default:
      return 2;
  }
}

TEST_F(SharedBlocks, TableIsCompleteAndEveryElementFitsItsBlock) {
  SharedVariables vars;
  EXPECT_EQ(vars.table().size(), 59U);
  EXPECT_EQ(vars.main_group().size(), 57U);
  std::set<std::string_view> names;
  vars.OpenMainGroup(3, CountFailures());
  for (const SharedVariable* variable : vars.main_group()) {
    EXPECT_TRUE(names.insert(variable->row().name).second) << variable->row().name;
    EXPECT_EQ(variable->count(), variable->row().elements) << variable->row().name;
    EXPECT_GE(variable->block().ViewSize(),
              static_cast<std::size_t>(variable->count() * WidthOf(*variable)));
    EXPECT_EQ(variable->block().MappedFile(), std::string(variable->row().name) + "3");
  }
  EXPECT_EQ(failures_, 0);
}

TEST_F(SharedBlocks, TwoSidesShareAndTheNameLivesAsLongAsOneOfThem) {
  SharedVariables host;
  host.OpenMainGroup(-2, CountFailures());
  host.quorinpwte[0] = -40;
  host.quorinMainRtstr.Set(0, u"log");
  {
    SharedVariables library;
    library.OpenMainGroup(-2, CountFailures());
    EXPECT_EQ(library.quorinpwte[0], -40);
    library.quorinMainRtstr.Append(0, u" and more");
    library.ReleaseMainGroup();
    EXPECT_EQ(library.quorinpwte[0], 0) << "a private element again";
    EXPECT_THROW(library.quorinpwte[1], RangeError);
  }
  EXPECT_EQ(host.quorinMainRtstr[0], u"log and more");
  host.quorinMainRtstr.Set(0, u"");
  host.ReleaseMainGroup();
  host.OpenMainGroup(-2, CountFailures());
  EXPECT_EQ(host.quorinpwte[0], 0) << "the block went with its last view";
}

TEST_F(SharedBlocks, ViewOfASmallerBlockBoundsTheIndex) {
  clsMemMapped small;
  clsMemMapped large;
  ASSERT_TRUE(small.OpenAndMapMemoryBlock("quorinibuffer", 4096));  // a view is whole pages
  ASSERT_TRUE(large.OpenAndMapMemoryBlock("quorinwltbigendbuf5", 4000));
  SharedVariables vars;
  vars.OpenMainGroup(5, CountFailures());
  vars.OpenDataBuffers(9000, CountFailures());
  EXPECT_NO_THROW(vars.quorinibuffer[4095] = 6);
  EXPECT_THROW(vars.quorinibuffer[4096], RangeError);
  EXPECT_EQ(vars.quorinwltbigendbuf.count(), 4);
  EXPECT_THROW(vars.quorinwltbigendbuf[4], RangeError);
  EXPECT_THROW(vars.quorinwltbigendbuf[-1], RangeError);
}

TEST_F(SharedBlocks, DataBuffersFollowTheirLengthAndBadOnesAreReported) {
  SharedVariables vars;
  vars.OpenDataBuffers(200, CountFailures());
  EXPECT_EQ(vars.quorinibuffer.count(), 200);
  vars.OpenDataBuffers(5000, CountFailures());
  EXPECT_EQ(vars.quorinibuffer.count(), 5000);
  EXPECT_EQ(vars.quorinibuffer.Range(4998, 2).size(), 2U);
  EXPECT_THROW(static_cast<void>(vars.quorinibuffer.Range(4998, 3)), RangeError);
  EXPECT_THROW(static_cast<void>(vars.quorinibuffer.Range(4998, 0)), RangeError);
  EXPECT_EQ(failures_, 0);
  vars.OpenDataBuffers(-200, CountFailures());
  EXPECT_EQ(failures_, 1);
  EXPECT_EQ(vars.quorinibuffer.count(), 1) << "a private element";
}

TEST(MappedBlock, PropertiesAndFreeInstanceNumber) {
  clsMemMapped block;
  EXPECT_FALSE(block.UnMapFile());
  ASSERT_TRUE(block.OpenAndMapMemoryBlock("quorinibuf10", 400));
  EXPECT_NE(block.hFile(), 0U);
  EXPECT_EQ(block.MappedSize(), 400);
  clsMemMapped second;
  ASSERT_TRUE(second.OpenAndMapMemoryBlock("quorinibuf11", 5000));
  clsMemMapped probe;
  EXPECT_EQ(probe.findnum(), 2);
  EXPECT_EQ(probe.hFile(), 0U);
  ASSERT_TRUE(block.OpenAndMapMemoryBlock("quorinibuf11", 8));
  EXPECT_GE(block.ViewSize(), 5000U) << "the existing block, whatever the size";
  static_cast<std::uint8_t*>(second.BaseAddress())[4999] = 7;
  EXPECT_EQ(static_cast<std::uint8_t*>(block.BaseAddress())[4999], 7);
  EXPECT_EQ(probe.findnum(), 0) << "the first view was unmapped";
  std::vector<clsMemMapped> all(101);
  for (std::size_t i = 0; i < all.size(); ++i) {
    ASSERT_TRUE(all[i].OpenAndMapMemoryBlock("quorinibuf1" + std::to_string(i), 400));
  }
  EXPECT_EQ(probe.findnum(), 101) << "none of those it looks at is free";
  EXPECT_TRUE(block.UnMapFile());
  EXPECT_EQ(block.MappedFile(), "");
  EXPECT_FALSE(block.OpenAndMapMemoryBlock("x", 0));
}

}  // namespace
}  // namespace fliglaf
