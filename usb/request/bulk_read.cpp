#include "usb/request/bulk_read.h"

#include <span>

namespace fliglaf {
namespace {

constexpr int kWatchdogMs = 5000;
constexpr std::int32_t kSinglePacketBytes = 65;

std::span<std::uint8_t> Target(SharedVariables& vars, std::int16_t mode, std::int32_t start,
                               std::int32_t count) {
  switch (mode) {
    case bulk_mode::kDataBuffer:
      return vars.quorinibuffer.Range(start, count);
    case bulk_mode::kSinglePacket:
      return vars.quorinibuf2.Range(0, kSinglePacketBytes);
    default:
      return vars.quorinibuf2.Range(0, count);
  }
}

/// True when data and end mark have come; false when the transfer failed, timed out or was stopped.
bool WaitForEndMark(Run& run, const std::uint8_t& end_mark) {
  const std::uint8_t& status = run.vars.quorinusbpip2readresult[0];
  // A host that overwrites the result in the turn in which the watchdog fires must not leave us
  // waiting for ever.
  const auto given_up = [&run] {
    return run.outcome() == result::kStopped || run.outcome() == result::kTimeOut ||
           !run.watchdog.enabled();
  };
  do {
    run.desktop.DoEvents();
    if (status > bulk_status::kLastGood || given_up()) return false;
  } while (status != bulk_status::kDone);
  do {
    run.desktop.DoEvents();
    if (given_up()) return false;
  } while (end_mark != kEndMark);
  return true;
}

}  // namespace

std::int16_t BulkRead(Run& run, std::int16_t mode, std::int32_t start, std::int32_t count) {
  SharedVariables& vars = run.vars;
  vars.quorinusbpip2readresult[0] = 0;
  const std::span<std::uint8_t> target = Target(vars, mode, start, count);
  std::uint8_t& end_mark = target.back();
  if (mode == bulk_mode::kDataBuffer) vars.quorinibuf1[0] = end_mark;
  end_mark = 0;
  run.io.usbbulkread(target, vars.quorinusbpip2readresult[0]);

  run.watchdog.Enable(kWatchdogMs);
  const bool complete = WaitForEndMark(run, end_mark);
  run.watchdog.Disable();
  if (!complete) {
    if (!run.stopped()) vars.quorinprgresult[0] = result::kSuccess;
    return 1;
  }
  end_mark = mode == bulk_mode::kDataBuffer ? vars.quorinibuf1[0] : std::uint8_t{0};
  return 0;
}

}  // namespace fliglaf
