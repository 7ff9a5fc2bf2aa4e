// Plays arbitrary bytes as a run record: whatever they are, the replay ends, and either agrees,
// tells a difference, or names the line that cannot be read.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "record/player.h"

namespace {

using namespace fliglaf::record;

/// Keeps what a single input may cost in bounds; larger buffers change nothing in the reader.
constexpr std::int32_t kLongestData = 1 << 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(data, data + size));
  try {
    const Verdict verdict = PlayRecord(in, "f", {.keep_calls = true, .longest_data = kLongestData});
    if (verdict.difference && verdict.difference->line == 0) std::abort();
  } catch (const RecordError& error) {
    const std::string_view message = error.what();
    if (!message.starts_with("f:") || message.starts_with("f:0:")) std::abort();
  }
  return 0;
}
