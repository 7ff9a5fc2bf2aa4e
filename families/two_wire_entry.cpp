#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <span>

#include "families/serial_lines.h"
#include "families/two_wire.h"
#include "usb/request/latches.h"

namespace fliglaf {
namespace {

/// Up to twelve latches, which is every one that there is.
class LatchList {
 public:
  consteval LatchList(std::initializer_list<Latch> latches) : count_(latches.size()) {
    std::ranges::copy(latches, latches_.begin());
  }
  [[nodiscard]] std::span<const Latch> latches() const { return std::span(latches_).first(count_); }

 private:
  std::array<Latch, 12> latches_{};
  std::size_t count_;
};

/// How the programmer reaches a device, by the device's option.
struct Assignment {
  std::uint8_t option;
  std::uint8_t clock;
  std::uint8_t data;
  std::uint8_t fixed;
  std::uint8_t line_register;
  std::optional<std::uint8_t> extra;  ///< none: the field keeps what it has
  LatchList latches;
};
constexpr std::nullopt_t kKept = std::nullopt;

// clang-format off
constexpr std::array kAssignments{
    //         option clock data fixed port extra latches: value, number
    Assignment{12, 0x08, 0x04, 0x00, 0, kKept, {{0x00, 7}, {0x00, 5}, {0x00, 3}, {0x04, 1}, {0x00, 6}, {0x10, 4}, {0x00, 2}, {0x08, 0}}},
    Assignment{13, 0x02, 0x01, 0x00, 2, kKept, {{0x00, 7}, {0x00, 5}, {0x01, 3}, {0x00, 1}, {0x00, 6}, {0x00, 4}, {0x02, 2}, {0x40, 0}}},
    Assignment{14, 0x04, 0x08, 0x00, 2, kKept, {{0x00, 7}, {0x00, 5}, {0x08, 3}, {0x00, 1}, {0x00, 6}, {0x08, 4}, {0x04, 2}}},
    Assignment{15, 0x01, 0x02, 0x00, 2, kKept, {{0x00, 7}, {0x00, 5}, {0x02, 3}, {0x00, 1}, {0x00, 6}, {0x08, 4}, {0x01, 2}}},
    Assignment{16, 0x10, 0x01, 0x80, 0, kKept, {{0x01, 1}, {0x90, 0}}},
    Assignment{17, 0x02, 0x04, 0x00, 0, kKept, {{0x00, 7}, {0x00, 5}, {0x00, 3}, {0x04, 1}, {0x00, 6}, {0x00, 4}, {0x04, 2}, {0x02, 0}}},
    Assignment{18, 0x01, 0x02, 0x00, 0, kKept, {{0x00, 5}, {0x00, 3}, {0x02, 1}, {0x00, 4}, {0x08, 2}}},
    Assignment{19, 0x02, 0x04, 0x01, 2, kKept, {{0x00, 5}, {0x04, 3}, {0x00, 1}, {0x00, 4}, {0x03, 2}}},
    Assignment{20, 0x02, 0x04, 0x01, 2, kKept, {{0x00, 7}, {0x00, 5}, {0x04, 3}, {0x00, 1}, {0x00, 6}, {0x00, 4}, {0x03, 2}, {0x00, 0}}},
    Assignment{21, 0x01, 0x02, 0x00, 2, kKept, {{0x00, 5}, {0x02, 3}, {0x00, 1}, {0x08, 4}, {0x01, 2}}},
    Assignment{22, 0x01, 0x02, 0x00, 4, kKept, {{0x00, 11}, {0x00, 9}, {0x00, 7}, {0x02, 5}, {0x00, 3}, {0x00, 1}, {0x00, 10}, {0x00, 8}, {0x02, 6}, {0x01, 4}, {0x01, 2}, {0x00, 0}}},
    Assignment{23, 0x08, 0x10, 0x00, 2, kKept, {{0x00, 11}, {0x00, 9}, {0x00, 7}, {0x00, 5}, {0x10, 3}, {0x00, 1}, {0x00, 10}, {0x00, 8}, {0x20, 6}, {0x40, 4}, {0x08, 2}, {0x01, 0}}},
    Assignment{24, 0x20, 0x80, 0x02, 0, kKept, {{0x00, 3}, {0x80, 1}, {0x00, 2}, {0x22, 0}}},
    Assignment{25, 0x20, 0x80, 0x01, 0, kKept, {{0x00, 7}, {0x00, 5}, {0x00, 3}, {0x80, 1}, {0x00, 6}, {0x00, 4}, {0x00, 2}, {0x21, 0}}},
    Assignment{26, 0x01, 0x02, 0x00, 0, kKept, {{0x00, 5}, {0x00, 4}, {0x00, 3}, {0x02, 2}, {0x02, 1}, {0x01, 0}}},
    Assignment{27, 0x04, 0x40, 0x00, 6, kKept, {{0x40, 7}, {0x00, 5}, {0x00, 3}, {0x00, 1}, {0x04, 6}, {0x08, 4}, {0x00, 2}, {0x00, 0}}},
    Assignment{28, 0x08, 0x10, 0x00, 2, kKept, {{0x10, 3}, {0x00, 1}, {0x08, 2}, {0x04, 0}}},
    Assignment{29, 0x01, 0x40, 0x08, 2, kKept, {{0x00, 5}, {0x40, 3}, {0x00, 1}, {0x00, 4}, {0x09, 2}}},
    Assignment{30, 0x20, 0x80, 0x02, 0, 0x04, {{0x00, 3}, {0x80, 1}, {0x00, 2}, {0x26, 0}}},
    Assignment{31, 0x40, 0x04, 0x00, 2, 0x00, {{0x04, 3}, {0x00, 1}, {0x40, 2}, {0x18, 0}}},
};
constexpr Assignment kAssignment16{16, 0x04, 0x10, 0x00, 2, kKept, {{0x00, 5}, {0x10, 3}, {0x00, 1}, {0x04, 4}, {0x02, 2}, {0x00, 0}}};
// clang-format on

/// An adapter with supply pins of its own, and devices that want a programming voltage on a pin.
void SwitchPins(Run& run, std::uint8_t option) {
  switch (option) {
    case 23:
      run.io.SetVccPin(0x77, 1);
      run.io.SetGndPin(0x76, 1);
      run.io.SetGndPin(0x13, 1);
      return;
    case 30:
    case 31:
      run.io.SetVppPin(run.vars.quorinbvpppin[0], 1);
      return;
    default:
      return;
  }
}

void Load(Run& run, const Assignment& row) {
  run.two_wire.clockState = run.two_wire.clockMask = row.clock;
  run.two_wire.dataState = run.two_wire.dataMask = row.data;
  if (row.extra) run.two_wire.extraBits = *row.extra;
  run.jtag.fixedBitsA = row.fixed;
  run.jtag.lineRegister = row.line_register;
  WriteLatches(run, row.latches.latches());
}

/// Tells the programmer's shifter how to drive the lines, and clocks it once each way.
void SetUpShifter(Run& run) {
  const TwoWireLines& lines = run.two_wire;
  const std::array<std::uint8_t, 10> bytes{run.jtag.lineRegister,
                                           1,
                                           lines.clockState,
                                           run.jtag.fixedBitsA,
                                           lines.dataState,
                                           lines.dataState,
                                           0,
                                           8,
                                           8,
                                           run.jtag.lineRegister};
  serial::ConfigureShifter(run, bytes);
  run.io.WriteRegister(0, reg::kShiftOut);
  run.io.WriteRegister(0, reg::kShiftLow);
}

}  // namespace

void enterTwoWire12(Run& run) {
  const std::uint8_t option = run.vars.quorinwoption[0];
  run.SendPacket({0x30, 0x01}, kLongPacket);
  const auto found = std::ranges::find(kAssignments, option, &Assignment::option);
  if (found != kAssignments.end()) {
    SwitchPins(run, option);
    Load(run, *found);
  }
  SetUpShifter(run);
}

void enterTwoWire16(Run& run) {
  if (run.vars.quorinwoption[0] != kAssignment16.option) return;
  Load(run, kAssignment16);
  SetUpShifter(run);
}

}  // namespace fliglaf
