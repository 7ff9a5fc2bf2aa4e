#include "simulator/bench/waveform_file.h"

namespace fliglaf::simulator {

WaveformFile::WaveformFile(const std::filesystem::path& path, std::string_view title, Bench& bench)
    : file_(path),
      waveform_(bench.clock(), bench.chip().Signals(), title, [this](std::string_view text) {
        file_.Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
      }) {
  bench.Watch(waveform_);
}

void WaveformFile::Keep() {
  waveform_.End();
  file_.Keep();
}

}  // namespace fliglaf::simulator
