#include "parallel/operations.h"

#include "parallel/config_word_writer.h"
#include "parallel/page_operations.h"
#include "parallel/start_programmer.h"
#include "usb/request/operation.h"

namespace fliglaf::parallel {
namespace {

constexpr std::int16_t kWriteConfigWord = 8;
constexpr std::int16_t kErase = 9;
constexpr std::int16_t kEraseInAnyMode = 11;

void RunOnDevice(EngineRun& run, std::int16_t code) {
  if (code < operation::kProgram) {
    return ScanPages(run, operation::CheckModeOf(code));
  }
  switch (code) {
    case operation::kProgram:
      return ProgramPages(run);
    case kWriteConfigWord:
      return WriteConfigWord(run);
    case kErase:
      return EraseAndBlankCheck(run);
    default:
      return;
  }
}

}  // namespace

void RunOperation(EngineRun& run, std::int16_t code) {
  RunNoted(run, code, [&run, code] {
    if (code == kEraseInAnyMode) return EraseAndBlankCheck(run);
    if (ReachesDevice(run)) RunOnDevice(run, code);
  });
}

}  // namespace fliglaf::parallel
