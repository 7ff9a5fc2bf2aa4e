#pragma once

#include <filesystem>
#include <string_view>

#include "images/whole_file.h"
#include "simulator/bench/bench.h"
#include "simulator/waveform.h"

namespace fliglaf::simulator {

/// A dump of what happens at a bench's socket, in a file. It is written as the run goes on and
/// takes its name when it is kept.
class WaveformFile {
 public:
  /// Throws ImageError when the file cannot be written. `bench` does nothing after this is gone.
  WaveformFile(const std::filesystem::path& path, std::string_view title, Bench& bench);

  /// Throws ImageError when not all of it could be written.
  void Keep();

 private:
  WholeFileWriter file_;
  Waveform waveform_;
};

}  // namespace fliglaf::simulator
