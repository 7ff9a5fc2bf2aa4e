#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace fliglaf::cli {

enum class Command {
  kDevices,
  kProgram,
  kRead,
  kVerify,
  kBlank,
  kCompare,
  kErase,
  kLock,
  kSignature,
  kConfig,
  kFuses,
  kReplay,
  kChip
};

enum class ProgressStyle { kAuto, kBar, kLines, kJson, kNone };

enum class MismatchAnswer { kAsk, kAbort, kRetry, kIgnore };

/// What the user asked for.
struct Options {
  Command command = Command::kDevices;
  std::string command_name;
  std::string device;
  std::vector<std::filesystem::path> device_folders;

  std::filesystem::path memory_file;  ///< the device's main memory
  std::filesystem::path eeprom_file;  ///< its data memory
  std::filesystem::path image_file;   ///< the whole image
  std::filesystem::path output;
  int lock_level = 0;
  std::vector<std::string> assignments;  ///< NAME=VALUE of configuration bytes
  bool changes_fuses = false;            ///< "fuses set" instead of "fuses show"
  bool yes = false;                      ///< no question about what cannot be undone
  bool erase = true;
  bool erase_all = false;  ///< memories that no file is named for may be cleared as well
  int margin = 0;          ///< verify at the supply plus and minus this many times 5 %

  bool check_signature = true;
  MismatchAnswer on_mismatch = MismatchAnswer::kAsk;

  std::filesystem::path record_file;           ///< where to write the run's record
  std::vector<std::filesystem::path> records;  ///< to replay
  bool explain = false;

  std::filesystem::path chip_file;
  std::vector<std::string> faults;
  bool real_time = false;
  std::filesystem::path waveform_file;  ///< where to write what happens at the socket
  bool parallel = false;                ///< the parallel-port engine instead of the USB engine
  bool hardware = false;                ///< the programmer itself instead of the simulated bench

  int remote_bitbang_port = 0;  ///< where to offer the chip; 0: any free one

  bool json = false;
  ProgressStyle progress = ProgressStyle::kAuto;
};

/// True for a command that changes the device.
[[nodiscard]] bool WritesDevice(const Options& options);

/// Reads the command line. Nothing when the user asked for help or the version, which has then been
/// printed. Throws UsageError.
[[nodiscard]] std::optional<Options> ParseOptions(int argc, const char* const* argv);

}  // namespace fliglaf::cli
