// Hosts that know no rules: whatever they ask for ends, in time, and leaves nothing powered. What
// they make the library touch is the sanitizers' business.
#include "tests/support/hostile_host.h"

#include <cstdlib>
#include <iostream>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace fliglaf {
namespace {

class RandomValues : public test::Values {
 public:
  explicit RandomValues(std::uint32_t seed) : random_(seed) {}
  std::uint8_t Byte() override { return static_cast<std::uint8_t>(random_()); }

 private:
  std::mt19937 random_;
};

TEST(HostileHost, GetsAResultWhateverItAsksFor) {
  const char* const extended = std::getenv("FLIGLAF_EXTENDED");
  const std::uint32_t sessions = extended != nullptr && *extended != '\0' ? 26'000 : 300;
  std::uint64_t most_calls = 0;
  for (std::uint32_t seed = 0; seed < sessions; ++seed) {
    RandomValues values(seed);
    test::HostileHost host(values);
    EXPECT_EQ(host.Play(), "") << "seed " << seed << ", " << host.device();
    most_calls = std::max(most_calls, host.most_calls());
  }
  std::cout << sessions << " hosts; " << most_calls << " calls at most in one request\n";
}

/// A blank check needs nothing of the image and would go through two thousand million addresses; an
/// erase through as many pages.
TEST(HostileHost, ARangeThatNoBufferHoldsIsRefusedBeforeItIsWalked) {
  constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();
  for (const test::SmallDevice& device : test::SmallDevices()) {
    for (const std::uint8_t code : device.codes) {
      test::TestHost host(device.device);
      test::Prepare(host, device);
      host.vars.quorintlength[0] = kHuge;
      host.vars.quorinwltbigendbuf[1] = kHuge - 1;
      host.vars.quorinpagelength[0] = 1;
      std::size_t calls = 0;
      host.tap.before = [&calls](const test::Tap::Call&) {
        if (++calls == 100'000) throw std::runtime_error("no end of calls");
        return true;
      };
      host.Run(code);
      EXPECT_EQ(host.log().find("no end of calls"), std::string::npos)
          << device.name << ", operation " << int{code};
      if (code < 7) {
        EXPECT_EQ(host.vars.quorinprgresult[0], 1) << device.name << ", operation " << int{code};
      }
      EXPECT_TRUE(host.bench.socket_is_off());
    }
  }
}

}  // namespace
}  // namespace fliglaf
