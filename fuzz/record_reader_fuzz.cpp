// Plays arbitrary bytes as a run record: whatever they are, the replay ends, and either agrees,
// tells a difference, or names the line that cannot be read.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/check.h"
#include "replay/player.h"

namespace {

using namespace fliglaf::record;

/// Keeps the time of an input that fills or compares all of the buffer in many lines short; larger
/// buffers change nothing in the reader.
constexpr std::int64_t kLongestDataOfAnInput = 1 << 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  std::istringstream in(text);
  try {
    const Verdict verdict =
        PlayRecord(in, "f", {.keep_calls = true, .longest_data = kLongestDataOfAnInput});
    fliglaf::fuzz::Require(!verdict.difference || verdict.difference->line != 0,
                           "a difference has its line");
  } catch (const RecordError& error) {
    fliglaf::fuzz::RequirePlace(error.what(), text);
  }
  return 0;
}
