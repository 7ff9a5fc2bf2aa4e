// Reading a file or a stream in one go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace fliglaf::platform {

/// The bytes of a file or a stream up to its end, but at most `most` of them. Waits for the other
/// end of a pipe until StopRequested(). Throws std::system_error and Stopped.
[[nodiscard]] std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& file,
                                                  std::size_t most);

}  // namespace fliglaf::platform
