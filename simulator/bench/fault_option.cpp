#include "simulator/bench/fault_option.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <vector>

#include "devices/nearest_names.h"
#include "simulator/bench/bench_error.h"

namespace fliglaf::simulator {
namespace {

[[noreturn]] void Fail(const std::string& fault, const std::string& reason) {
  throw BenchError("--fault " + fault + ": " + reason);
}

/// A number in decimal or, after 0x, hexadecimal.
std::optional<std::uint32_t> Number(std::string_view text) {
  const int base = text.starts_with("0x") || text.starts_with("0X") ? 16 : 10;
  if (base == 16) text.remove_prefix(2);
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// ADDRESS.BIT=VALUE
StuckBit ParseStuckBit(const std::string& fault, std::string_view text,
                       std::uint32_t memory_bytes) {
  const std::size_t dot = text.find('.');
  const std::size_t equals = text.find('=');
  if (dot == text.npos || equals == text.npos || equals < dot) {
    Fail(fault, "expected stuck=ADDRESS.BIT=VALUE, as in stuck=0x1A7.3=0");
  }
  const auto address = Number(text.substr(0, dot));
  const auto bit = Number(text.substr(dot + 1, equals - dot - 1));
  const auto value = Number(text.substr(equals + 1));
  if (!address || *address >= memory_bytes) {
    Fail(fault, "the address must be from 0 to " + std::to_string(memory_bytes - 1));
  }
  if (!bit || *bit > 7) Fail(fault, "the bit must be from 0 to 7");
  if (!value || *value > 1) Fail(fault, "the value must be 0 or 1");
  return {.address = *address, .bit = static_cast<int>(*bit), .value = *value == 1};
}

Op ParseOperation(const std::string& fault, std::string_view name) {
  if (const Operation* const known = FindOperation(name)) return known->op;
  std::vector<std::string_view> names;
  std::string list;
  for (const Operation& operation : kOperations) {
    list += (names.empty() ? "must be one of " : ", ") + std::string(operation.name);
    names.push_back(operation.name);
  }
  const auto nearest = NearestNames(name, names);
  Fail(fault, "unknown operation \"" + std::string(name) + "\"; " +
                  (nearest.empty() ? list : "did you mean " + nearest.front() + "?"));
}

/// OPERATION[:NTH]
FaultOptions::Call ParseCall(const std::string& fault, std::string_view text) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  FaultOptions::Call call{.operation = ParseOperation(fault, text.substr(0, colon))};
  if (colon < text.size()) {
    const auto nth = Number(text.substr(colon + 1));
    if (!nth || *nth < 1) Fail(fault, "the number of the call must be 1 or more");
    call.nth = *nth;
  }
  return call;
}

}  // namespace

FaultOptions ParseFaults(std::span<const std::string> faults, std::uint32_t memory_bytes) {
  constexpr std::string_view kStuck = "stuck=";
  constexpr std::string_view kCall = "call=";
  FaultOptions options;
  for (const std::string& fault : faults) {
    const std::string_view text = fault;
    if (text == "no-programmer") {
      options.bench.programmer.not_found = true;
    } else if (text == "no-adapter") {
      options.bench.programmer.adapter_missing = true;
    } else if (text == "no-chip") {
      options.bench.no_chip = true;
    } else if (text == "supply") {
      options.bench.programmer.supply_fails = true;
    } else if (text == "usb-timeout") {
      options.bench.programmer.usb = CapturePipe::Fault::kNeverAnswers;
    } else if (text == "usb-failure") {
      options.bench.programmer.usb = CapturePipe::Fault::kFails;
    } else if (text == "answer=0" || text == "answer=1") {
      options.bench.answer_stuck = text.back() == '1';
    } else if (text.starts_with(kStuck)) {
      options.bench.stuck_bit = ParseStuckBit(fault, text.substr(kStuck.size()), memory_bytes);
    } else if (text.starts_with(kCall)) {
      options.failing_call = ParseCall(fault, text.substr(kCall.size()));
    } else {
      Fail(fault,
           "expected no-programmer, no-adapter, no-chip, supply, usb-timeout, usb-failure, "
           "answer=LEVEL, stuck=ADDRESS.BIT=VALUE or call=OPERATION[:NTH]");
    }
  }
  return options;
}

}  // namespace fliglaf::simulator
