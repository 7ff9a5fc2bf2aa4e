#include "simulator/bench/fault_option.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

#include <fmt/format.h>

#include "devices/kinds/device_kind.h"
#include "devices/nearest_names.h"
#include "simulator/bench/bench_error.h"

namespace fliglaf::simulator {
namespace {

constexpr double kCallRate = 1.0 / 100'000;
constexpr double kTransferRate = 1.0 / 100;
constexpr FaultRates kRandomRates{.failed_call = kCallRate,
                                  .refusal = kTransferRate,
                                  .failed_transfer = kTransferRate / 4,
                                  .silent_transfer = kTransferRate / 4,
                                  .late_transfer = kTransferRate / 4,
                                  .short_transfer = kTransferRate / 4,
                                  .flipped_bit = kCallRate};

/// A fault as it is written, and where it goes.
struct Parse {
  Faults& faults;
  std::string_view source;
  std::string_view fault;     ///< the whole of it
  std::string_view argument;  ///< what follows the '='
  std::uint32_t memory_bytes;

  [[noreturn]] void Fail(std::string_view reason) const {
    throw BenchError(fmt::format("{} {}: {}", source, fault, reason));
  }
};

struct FaultKind {
  std::string_view usage;    ///< its name, with "=ARGUMENT" if it takes one
  std::string_view example;  ///< with an argument
  std::string_view help;
  void (*apply)(const Parse&);

  [[nodiscard]] std::string_view name() const { return usage.substr(0, usage.find('=')); }
};

/// A number in decimal or, after 0x, hexadecimal. Fails unless it is from `least` to `most`.
std::uint32_t Number(const Parse& parse, std::string_view what, std::string_view text,
                     std::uint32_t least, std::uint32_t most) {
  const int base = text.starts_with("0x") || text.starts_with("0X") ? 16 : 10;
  if (base == 16) text.remove_prefix(2);
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc{} || end != text.data() + text.size() || value < least || value > most) {
    parse.Fail(most == 1 ? fmt::format("the {} must be 0 or 1", what)
                         : fmt::format("the {} must be from {} to {}", what, least, most));
  }
  return value;
}

/// Every call of the operation.
template <Fault kFault, Op kOperation>
void ApplyToEveryCall(const Parse& parse) {
  std::vector<ScheduledFault>& scheduled = parse.faults.programmer.scheduled;
  const bool contradicted = std::ranges::any_of(scheduled, [](const ScheduledFault& other) {
    return other.operation == kOperation && other.nth == 0 && other.fault != kFault;
  });
  if (contradicted) {
    parse.Fail(fmt::format("conflicts with another fault of {}", Row(kOperation).name));
  }
  scheduled.push_back({kFault, kOperation});
}

void ApplyNoChip(const Parse& parse) { parse.faults.no_chip = true; }

void ApplyAnswer(const Parse& parse) {
  const bool level = Number(parse, "level", parse.argument, 0, 1) == 1;
  std::optional<bool>& stuck = parse.faults.answer_stuck;
  if (stuck.value_or(level) != level) parse.Fail("the line is already stuck at the other level");
  stuck = level;
}

void ApplyStuck(const Parse& parse) {
  const std::string_view text = parse.argument;
  const std::size_t dot = text.find('.');
  const std::size_t equals = text.find('=');
  if (dot == text.npos || equals == text.npos || equals < dot) {
    parse.Fail("must be stuck=ADDRESS.BIT=VALUE, as in stuck=0x1A7.3=0");
  }
  const StuckBit stuck{
      .address = Number(parse, "address", text.substr(0, dot), 0, parse.memory_bytes - 1),
      .bit = static_cast<int>(Number(parse, "bit", text.substr(dot + 1, equals - dot - 1), 0, 7)),
      .value = Number(parse, "value", text.substr(equals + 1), 0, 1) == 1};
  for (const StuckBit& other : parse.faults.stuck_bits) {
    if (other.address == stuck.address && other.bit == stuck.bit && other.value != stuck.value) {
      parse.Fail("the bit is already stuck at the other value");
    }
  }
  parse.faults.stuck_bits.push_back(stuck);
}

/// The `field` of every row, such as its name.
template <typename Rows, typename Field>
std::vector<std::string_view> Column(const Rows& rows, Field field) {
  std::vector<std::string_view> column;
  std::ranges::transform(rows, std::back_inserter(column), field);
  return column;
}

/// "did you mean ...?", or the whole list where no name is near.
std::string Suggestion(std::string_view word, std::span<const std::string_view> names,
                       std::span<const std::string_view> list) {
  const auto nearest = NearestNames(word, names);
  if (!nearest.empty()) return fmt::format("did you mean {}?", nearest.front());
  return fmt::format("must be one of {}", fmt::join(list, ", "));
}

void ApplyCall(const Parse& parse) {
  const std::size_t colon = std::min(parse.argument.find(':'), parse.argument.size());
  const std::string_view name = parse.argument.substr(0, colon);
  const Operation* const operation = FindOperation(name);
  if (operation == nullptr) {
    const auto names = Column(kOperations, &Operation::name);
    parse.Fail(fmt::format("unknown operation \"{}\"; {}", name, Suggestion(name, names, names)));
  }
  const std::uint32_t nth =
      colon == parse.argument.size()
          ? 1
          : Number(parse, "number of the call", parse.argument.substr(colon + 1), 1, 0xFFFF'FFFF);
  parse.faults.programmer.scheduled.push_back({Fault::kFailedCall, operation->op, nth});
}

void ApplyRandom(const Parse& parse) {
  const std::uint32_t seed = Number(parse, "seed", parse.argument, 0, 0xFFFF'FFFF);
  std::optional<RandomFaults>& random = parse.faults.programmer.random;
  if (random && random->seed != seed) parse.Fail("one seed at a time");
  random = {.seed = seed, .rates = kRandomRates};
}

constexpr std::array kKinds{
    FaultKind{"no-programmer", "", "no programmer is found",
              ApplyToEveryCall<Fault::kRefusal, Op::kOpenProgrammer>},
    FaultKind{"no-adapter", "", "the programmer reports the wrong adapter, or none",
              ApplyToEveryCall<Fault::kRefusal, Op::kSetFigMode>},
    FaultKind{"no-chip", "", "the socket is empty", ApplyNoChip},
    FaultKind{"supply", "", "the device's supply stays off",
              ApplyToEveryCall<Fault::kRefusal, Op::kSetVcc>},
    FaultKind{"usb-timeout", "", "bulk reads never report",
              ApplyToEveryCall<Fault::kSilentTransfer, Op::kUsbBulkRead>},
    FaultKind{"usb-failure", "", "bulk reads report that they failed",
              ApplyToEveryCall<Fault::kFailedTransfer, Op::kUsbBulkRead>},
    FaultKind{"answer=LEVEL", "answer=0",
              "the line on which the chip answers is stuck at LEVEL, 0 or 1", ApplyAnswer},
    FaultKind{"stuck=ADDRESS.BIT=VALUE", "stuck=0x1A7.3=0",
              "a bit of the main memory always reads as VALUE, 0 or 1", ApplyStuck},
    FaultKind{"call=OPERATION[:NTH]", "call=FlushQueue:3",
              "the NTH call of OPERATION fails, the first unless given", ApplyCall},
    FaultKind{"random=SEED", "random=7",
              "faults of the programmer at random: one in 100,000 calls and bytes, one in 100 "
              "bulk reads and power-up calls; the same SEED repeats them",
              ApplyRandom},
};

void Apply(Parse parse) {
  const std::size_t equals = parse.fault.find('=');
  const std::string_view name = parse.fault.substr(0, equals);
  const auto kind = std::ranges::find(kKinds, name, &FaultKind::name);
  if (kind == kKinds.end()) {
    parse.Fail("unknown fault; " + Suggestion(name, Column(kKinds, &FaultKind::name),
                                              Column(kKinds, &FaultKind::usage)));
  }
  const bool has_argument = equals != parse.fault.npos;
  const bool takes_argument = kind->usage != name;
  if (has_argument && !takes_argument) parse.Fail("takes no argument");
  if (!has_argument && takes_argument) {
    parse.Fail(fmt::format("must be {}, as in {}", kind->usage, kind->example));
  }
  if (has_argument) parse.argument = parse.fault.substr(equals + 1);
  kind->apply(parse);
}

/// Number of addresses that a stuck bit may have: those of the configuration words in a device that
/// has nothing else.
std::uint32_t MemoryBytes(const DeviceProfile& device) {
  const std::int64_t bytes =
      device.config_words > 0 ? 2 * device.config_words : LayoutOf(device).main_bytes;
  return static_cast<std::uint32_t>(bytes);
}

/// What each fault did to its call, in the order of Fault.
constexpr std::array<std::string_view, kFaults> kEffects{"",
                                                         "failed",
                                                         "reported an error",
                                                         "reported a failed transfer",
                                                         "never reported",
                                                         "came late",
                                                         "brought half of the data",
                                                         "had a wrong bit"};

std::string RandomReport(const PlannedFaults& faults, std::uint32_t seed) {
  const auto& fired = faults.fired();
  const std::string start = fmt::format("random={}: ", seed);
  if (fired.empty()) return start + "no fault";
  const auto& first = fired.front();
  return fmt::format("{}{} fault{}; the first at call {}: {} {}", start, fired.size(),
                     fired.size() == 1 ? "" : "s", first.call, Row(first.operation).name,
                     kEffects[static_cast<std::size_t>(first.fault)]);
}

}  // namespace

Faults ParseFaults(std::span<const std::string> list, const DeviceProfile& device,
                   std::string_view source) {
  Faults faults;
  const std::uint32_t memory_bytes = MemoryBytes(device);
  for (const std::string_view text : list) {
    for (std::size_t start = 0; start <= text.size();) {
      const std::size_t end = std::min(text.find(';', start), text.size());
      if (end > start || text.empty()) {
        Apply({faults, source, text.substr(start, end - start), {}, memory_bytes});
      }
      start = end + 1;
    }
  }
  return faults;
}

std::vector<FaultHelp> FaultHelps() {
  std::vector<FaultHelp> helps;
  for (const FaultKind& kind : kKinds) {
    helps.push_back({std::string(kind.usage), std::string(kind.help)});
  }
  const auto operations = Column(kOperations, &Operation::name);
  helps.push_back({"OPERATION", fmt::format("one of {}", fmt::join(operations, ", "))});
  return helps;
}

std::vector<std::string> FaultReport(const PlannedFaults& faults) {
  std::vector<std::string> lines;
  for (const auto& [fault, operation, nth] : faults.plan().scheduled) {
    const std::uint32_t calls = faults.Calls(operation);
    if (calls >= nth) continue;
    const std::string_view name = Row(operation).name;
    lines.push_back(fmt::format("call={}:{}: not reached: {} call{} of {} in all", name, nth, calls,
                                calls == 1 ? "" : "s", name));
  }
  if (const auto& random = faults.plan().random) {
    lines.push_back(RandomReport(faults, random->seed));
  }
  return lines;
}

}  // namespace fliglaf::simulator
