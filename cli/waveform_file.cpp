#include "cli/waveform_file.h"

namespace fliglaf::cli {

WaveformFile::WaveformFile(const std::filesystem::path& path, std::string_view title,
                           simulator::Bench& bench)
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

}  // namespace fliglaf::cli
