#include "parallel/config_mode.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>

#include "usb/request/latches.h"

namespace fliglaf::parallel {
namespace {

/// What a step does; a latch step has its value and number.
enum class Do : std::uint8_t {
  kLatch,
  kVccOff,   ///< the first supply pin
  kVccOff2,  ///< the second, if there is one
  kVccOn,
  kVccOn2,
  kWait,      ///< 400 ms without supply
  kVppFirst,  ///< for devices that want the programming voltage ahead of the supply
  kVppFirstWithLatch,
};

struct Step {
  Do what;
  std::uint8_t value = 0;
  std::uint8_t number = 0;
};

constexpr Step L(std::uint8_t value, std::uint8_t number) { return {Do::kLatch, value, number}; }
constexpr Step kOff{Do::kVccOff};
constexpr Step kOff2{Do::kVccOff2};
constexpr Step kOn{Do::kVccOn};
constexpr Step kOn2{Do::kVccOn2};
constexpr Step kWait400{Do::kWait};
constexpr Step kVppFirst{Do::kVppFirst};

/// Which devices a row is for, beyond the pins of their package.
enum class When : std::uint8_t {
  kAlways,
  kMode5Kind2,  ///< programming mode, quorinbvcch(0)
  kMode5Kind5,
  kMode22,
  kMode31,
  kMode40Kind1,
  kOption2,  ///< quorinwoption(2)
};

class Steps {
 public:
  consteval Steps(std::initializer_list<Step> steps) : count_(steps.size()) {
    std::ranges::copy(steps, steps_.begin());
  }
  [[nodiscard]] std::span<const Step> steps() const { return std::span(steps_).first(count_); }

 private:
  std::array<Step, 19> steps_{};
  std::size_t count_;
};

struct Row {
  std::int16_t pins;
  When when;
  Latch last;  ///< with the programming voltage, in the second stage
  Steps first_stage;
};

// clang-format off
constexpr Steps kLargePackage{L(0x00, 3), L(0x00, 2), kOff, kOff2, L(0x00, 1), L(0x00, 0), kWait400, kVppFirst, L(0x20, 3), kOn, kOn2, L(0x30, 2)};

/// The first row that fits counts.
constexpr std::array kRows{
    Row{6, When::kAlways, {0x70, 0}, {L(0x00, 1), kOff, L(0x00, 0), kWait400, L(0x10, 1), kVppFirst, kOn, L(0x30, 0)}},
    Row{8, When::kMode5Kind2, {0x86, 0}, {L(0x00, 1), kOff, L(0x00, 0), kWait400, L(0x04, 1), kVppFirst, kOn, L(0x06, 0)}},
    Row{8, When::kAlways, {0x0D, 0}, {L(0x00, 1), kOff, L(0x00, 0), kWait400, L(0x04, 1), kVppFirst, kOn, L(0x05, 0)}},
    Row{14, When::kMode22, {0x01, 0}, {L(0x00, 3), kOff, L(0x00, 2), L(0x00, 0), kWait400, L(0x40, 2), L(0x08, 3), {Do::kVppFirstWithLatch, 0x01, 0}, kOn, L(0x40, 3)}},
    Row{14, When::kAlways, {0x01, 0}, {L(0x00, 3), kOff, L(0x00, 2), L(0x00, 0), kWait400, {Do::kVppFirstWithLatch, 0x01, 0}, kOn, L(0x0A, 2)}},
    Row{20, When::kMode40Kind1, {0x03, 0}, {L(0x00, 3), L(0x00, 2), L(0x00, 5), L(0x00, 4), kOff, kOff2, L(0x00, 1), L(0x00, 0), kWait400, kVppFirst, L(0x01, 3), kOn, kOn2, L(0x40, 0)}},
    Row{18, When::kAlways, {0x34, 2}, kLargePackage},
    Row{20, When::kAlways, {0x34, 2}, kLargePackage},
    Row{64, When::kAlways, {0x34, 2}, kLargePackage},
    Row{68, When::kAlways, {0x34, 2}, kLargePackage},
    Row{80, When::kAlways, {0x34, 2}, kLargePackage},
    Row{84, When::kAlways, {0x34, 2}, kLargePackage},
    Row{28, When::kMode5Kind5, {0x28, 6}, {L(0x00, 0), L(0x00, 1), L(0x00, 7), L(0x00, 6), kOff, L(0x00, 3), L(0x00, 2), kWait400, kVppFirst, L(0x00, 7), kOn, L(0x08, 6)}},
    Row{28, When::kMode31, {0x04, 6}, {L(0x00, 0), L(0x00, 1), L(0x00, 7), L(0x00, 6), kOff, L(0x00, 3), L(0x00, 2), kWait400, kVppFirst, kOn, L(0x20, 2)}},
    Row{28, When::kAlways, {0x04, 6}, {L(0x00, 0), L(0x00, 1), L(0x00, 7), L(0x00, 6), kOff, L(0x00, 3), L(0x00, 2), kWait400, kVppFirst, L(0x04, 3), kOn, L(0x20, 2)}},
    Row{40, When::kAlways, {0x01, 8}, {L(0x00, 3), L(0x00, 2), L(0x00, 9), L(0x00, 8), kOff2, kOff, L(0x00, 4), kWait400, kVppFirst, L(0x02, 3), kOn, kOn2, L(0x84, 4)}},
    Row{44, When::kOption2, {0x08, 10}, {L(0x00, 3), L(0x00, 7), L(0x00, 6), L(0x00, 0), L(0x00, 11), L(0x00, 10), L(0x00, 1), kOff2, kOff, L(0x00, 4), kWait400, kVppFirst, kOn, kOn2, L(0x01, 3), L(0x10, 6), L(0x02, 4), L(0x40, 7), L(0x82, 4)}},
    Row{44, When::kAlways, {0x20, 0}, {L(0x00, 3), L(0x00, 7), L(0x00, 6), L(0x00, 0), L(0x00, 11), L(0x00, 10), L(0x00, 1), kOff2, kOff, L(0x00, 4), kWait400, kVppFirst, kOn, kOn2}},
};
// clang-format on

bool Applies(const EngineRun& run, When when) {
  const SharedVariables& vars = run.vars;
  const auto is = [&vars](std::uint8_t mode, std::int16_t kind) {
    return vars.quorinprgmode[0] == mode && vars.quorinbvcch[0] == kind;
  };
  switch (when) {
    case When::kMode5Kind2:
      return is(5, 2);
    case When::kMode5Kind5:
      return is(5, 5);
    case When::kMode22:
      return vars.quorinprgmode[0] == 22;
    case When::kMode31:
      return vars.quorinprgmode[0] == 31;
    case When::kMode40Kind1:
      return is(40, 1);
    case When::kOption2:
      return vars.quorinwoption[2] == 1;
    case When::kAlways:
      break;
  }
  return true;
}

void SwitchVpp(EngineRun& run, std::uint8_t state) {
  run.io.SetVppPin(run.vars.quorinbvpppin[0], state);
}

void SwitchSupply(EngineRun& run, std::uint8_t state) {
  run.io.SetVccPin(run.vars.quorinbvccpin[0], state);
}

void SwitchSecondSupply(EngineRun& run, std::uint8_t state) {
  if (run.vars.quorinbvccpin[1] != 0) run.io.SetVccPin(run.vars.quorinbvccpin[1], state);
}

void Take(EngineRun& run, const Step& step) {
  const bool vpp_first = run.vars.quorinwoption[1] == 1;
  switch (step.what) {
    case Do::kLatch:
      run.io.WriteLatch(step.value, step.number);
      return;
    case Do::kVccOff:
      return SwitchSupply(run, 0);
    case Do::kVccOff2:
      return SwitchSecondSupply(run, 0);
    case Do::kVccOn:
      return SwitchSupply(run, 1);
    case Do::kVccOn2:
      return SwitchSecondSupply(run, 1);
    case Do::kWait:
      run.io.DelayMs(400);
      return;
    case Do::kVppFirst:
    case Do::kVppFirstWithLatch:
      if (!vpp_first) return;
      SwitchVpp(run, 1);
      if (step.what == Do::kVppFirstWithLatch) run.io.WriteLatch(step.value, step.number);
      run.io.DelayMs(100);
      return;
  }
}

}  // namespace

void EnterConfigMode(EngineRun& run, std::uint8_t stage) {
  constexpr std::uint8_t kWithProgrammingVoltage = 1;
  SwitchVpp(run, 0);
  run.io.DelayMs(100);
  const auto row = std::ranges::find_if(kRows, [&run](const Row& candidate) {
    return candidate.pins == run.vars.quorinchippin[0] && Applies(run, candidate.when);
  });
  if (row != kRows.end()) {
    for (const Step& step : row->first_stage.steps()) Take(run, step);
  }
  if (stage != kWithProgrammingVoltage) return;
  if (row != kRows.end()) {
    SwitchVpp(run, 1);
    run.io.WriteLatch(row->last.value, row->last.number);
  }
  run.io.DelayMs(200);
}

}  // namespace fliglaf::parallel
