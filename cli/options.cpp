#include "cli/options.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <string_view>

#include <CLI/CLI.hpp>

#include "cli/chip_command.h"
#include "cli/usage_error.h"
#include "cli/workplace.h"
#include "devices/nearest_names.h"
#include "images/utf8_path.h"
#include "simulator/bench/fault_option.h"

namespace fliglaf::cli {
namespace {

constexpr const char* kVersion = FLIGLAF_VERSION;

/// Builds the commands and what each of them takes, straight into an Options.
class Parser {
 public:
  Parser() {
    app_.require_subcommand(1);
    app_.set_version_flag("--version", std::string("fliglaf ") + kVersion);
    app_.footer(
        "Exit status: 0 success; 1 the device differs, or the operation failed on it; 2 wrong use\n"
        "or a bad file, nothing was done to the device; 3 the programmer could not be used; 4 "
        "done\n"
        "on the device, but a file or a report could not be written; 130 stopped.\n"
        "\"fliglaf COMMAND --help\" tells what a command takes.");
    AddDevices();
    AddProgram();
    AddRead();
    AddVerifyAndCompare();
    AddBlankAndErase();
    AddLock();
    AddConfig();
    AddFuses();
    AddOperation("signature", Command::kSignature,
                 "Check that the expected device is in the socket", "signature isp51-8k");
    AddReplay();
    if (FindChipCommand() != nullptr) AddChip();
  }

  std::optional<Options> Parse(int argc, const char* const* argv) {
    if (argc > 1) CheckCommand(argv[1]);
    try {
      app_.parse(argc, argv);
    } catch (const CLI::Success& request) {  // help or version
      app_.exit(request, std::cout, std::cout);
      return std::nullopt;
    } catch (const CLI::ParseError& error) {
      throw UsageError(std::string(error.what()) + "\nRun with --help for what is right.");
    }
    return options_;
  }

 private:
  /// An unknown command gets a better answer than that one is required.
  void CheckCommand(std::string_view word) const {
    if (word.starts_with("-")) return;
    std::vector<std::string> names;
    for (const CLI::App* sub : app_.get_subcommands({})) names.push_back(sub->get_name());
    if (std::ranges::find(names, word) != names.end()) return;
    const auto nearest =
        NearestNames(word, std::vector<std::string_view>(names.begin(), names.end()));
    throw UsageError("\"" + std::string(word) + "\" is no command" +
                     (nearest.empty() ? "" : "; did you mean " + nearest.front() + "?") +
                     "\nRun with --help for those that there are.");
  }

  CLI::App* Add(const char* name, Command command, const char* description, const char* example) {
    CLI::App* sub = app_.add_subcommand(name, description);
    sub->footer(std::string("Example:\n  fliglaf ") + example);
    sub->callback([this, command, name] {
      options_.command = command;
      options_.command_name = name;
    });
    AddPaths(sub, "--devices", options_.device_folders,
             "Folder with further device profiles (*.toml)")
        ->type_name("DIR")
        ->allow_extra_args(false);
    return sub;
  }

  CLI::App* AddOperation(const char* name, Command command, const char* description,
                         const char* example) {
    CLI::App* sub = Add(name, command, description, example);
    AddDeviceOptions(sub);
    return sub;
  }

  void AddDeviceOptions(CLI::App* sub) {
    AddDevice(sub);
    sub->add_flag_callback(
        "--no-signature", [this] { options_.check_signature = false; },
        "Do not check the device's signature first");
    AddChoice(sub, "--on-mismatch", options_.on_mismatch,
              {{"abort", MismatchAnswer::kAbort},
               {"retry", MismatchAnswer::kRetry},
               {"ignore", MismatchAnswer::kIgnore}},
              "What to do about a wrong signature, instead of asking");
    AddPath(sub, "--record", options_.record_file,
            "Write a record of the run, for \"fliglaf replay\"");
    sub->add_flag("--parallel", options_.parallel,
                  "Work with a programmer on the parallel port; devices of family 1 only");
    AddBenchOptions(sub);
    sub->add_flag("--json", options_.json,
                  "Print one JSON object with result, log, time and counts");
    AddChoice(sub, "--progress", options_.progress,
              {{"auto", ProgressStyle::kAuto},
               {"bar", ProgressStyle::kBar},
               {"lines", ProgressStyle::kLines},
               {"json", ProgressStyle::kJson},
               {"none", ProgressStyle::kNone}},
              "How to show progress on standard error");
  }

  void AddDevice(CLI::App* sub) {
    sub->add_option("device", options_.device, "Device, as \"fliglaf devices\" names it")
        ->type_name("NAME")
        ->required();
  }

  /// An option, or an argument, that names a file. Words are in UTF-8.
  static CLI::Option* AddPath(CLI::App* sub, const char* name, std::filesystem::path& path,
                              const std::string& description) {
    const auto take = [&path, name](const std::string& word) {
      if (word.empty()) throw CLI::ValidationError(name, "the file name is empty");
      path = Utf8Path(word);
    };
    return sub->add_option_function<std::string>(name, take, description)->type_name("FILE");
  }

  /// The same for several of them.
  static CLI::Option* AddPaths(CLI::App* sub, const char* name,
                               std::vector<std::filesystem::path>& paths,
                               const std::string& description) {
    const auto take = [&paths](const std::vector<std::string>& words) {
      for (const std::string& word : words) paths.push_back(Utf8Path(word));
    };
    return sub->add_option_function<std::vector<std::string>>(name, take, description)
        ->type_name("FILE");
  }

  template <class T>
  static CLI::Option* AddChoice(CLI::App* sub, const char* name, T& value,
                                const std::map<std::string, T>& choices,
                                const std::string& description) {
    std::string names;
    for (const auto& choice : choices) names += (names.empty() ? "" : "|") + choice.first;
    const auto take = [&value, choices, name, names](const std::string& word) {
      const auto found = choices.find(word);
      if (found == choices.end()) {
        throw CLI::ValidationError(name, "\"" + word + "\" is none of " + names);
      }
      value = found->second;
    };
    return sub->add_option_function<std::string>(name, take, description)->type_name(names);
  }

  CLI::Option* AddChipFile(CLI::App* sub) {
    return AddPath(sub, "--chip", options_.chip_file,
                   "File that keeps the chip's contents between calls; without it the chip is new");
  }

  void AddBenchOptions(CLI::App* sub) {
    const char* const group = "Simulated bench";
    CLI::Option* const chip = AddChipFile(sub)->group(group);
    CLI::Option* const fault =
        sub->add_option(
               "--fault", options_.faults,
               "Something that goes wrong; may be given several times.\n" + simulator::FaultHelp())
            ->type_name("FAULT")
            ->allow_extra_args(false)
            ->group(group);
    CLI::Option* const real_time =
        sub->add_flag("--real-time", options_.real_time, "Take as long as the bench would")
            ->group(group);
    CLI::Option* const waveform =
        AddPath(sub, "--vcd", options_.waveform_file,
                "Write a Value Change Dump of the lines, for GTKWave, PulseView and sigrok-cli")
            ->group(group);
    if (!HasHardware()) return;
    sub->add_flag("--hardware", options_.hardware,
                  "Work with the programmer that is installed, not with the simulated bench")
        ->excludes(chip)
        ->excludes(fault)
        ->excludes(real_time)
        ->excludes(waveform);
  }

  void AddImageOptions(CLI::App* sub) {
    CLI::Option* const memory =
        AddPath(sub, "file", options_.memory_file,
                "Contents of the main memory: Intel HEX, Motorola S-record or binary");
    CLI::Option* const eeprom = AddEeprom(sub);
    AddImage(sub)->excludes(memory)->excludes(eeprom);
  }

  CLI::Option* AddEeprom(CLI::App* sub) {
    return AddPath(sub, "--eeprom", options_.eeprom_file,
                   "Contents of the data memory, in a file of its own from address 0");
  }

  CLI::Option* AddImage(CLI::App* sub) {
    return AddPath(sub, "--image", options_.image_file,
                   "The whole device image instead, as the library lays it out");
  }

  void AddMargin(CLI::App* sub) {
    sub->add_option("--margin", options_.margin,
                    "Verify at the supply plus and minus this many times 5 %")
        ->type_name("N")
        ->check(CLI::Range(0, 10).description(""));
  }

  void AddDevices() {
    CLI::App* sub = Add("devices", Command::kDevices, "List the devices", "devices");
    sub->add_flag("--json", options_.json, "Print them as JSON");
  }

  void AddProgram() {
    CLI::App* sub = AddOperation("program", Command::kProgram, "Erase, program and verify a device",
                                 "program isp51-8k firmware.hex --chip bench.chip");
    AddImageOptions(sub);
    sub->add_flag_callback(
        "--no-erase", [this] { options_.erase = false; },
        "Leave the erase and its blank check out");
    sub->add_flag("--erase-all", options_.erase_all,
                  "With --eeprom alone: let the main memory be cleared as well");
    AddMargin(sub);
  }

  void AddRead() {
    CLI::App* sub = AddOperation("read", Command::kRead, "Read a device into a file",
                                 "read isp51-8k -o contents.hex --chip bench.chip");
    AddPath(sub, "-o,--output", options_.output,
            "File for the main memory; its ending tells the format (.hex, .s19, .bin, ...)");
    AddEeprom(sub);
    AddImage(sub);
  }

  void AddVerifyAndCompare() {
    AddImageOptions(AddOperation("verify", Command::kVerify,
                                 "Check that a device holds what a file says",
                                 "verify isp51-8k firmware.hex --chip bench.chip"));
    AddImageOptions(AddOperation("compare", Command::kCompare,
                                 "List every byte in which a device and a file differ",
                                 "compare isp51-8k firmware.hex --chip bench.chip"));
  }

  void AddBlankAndErase() {
    AddOperation("blank", Command::kBlank, "Check that a device is erased",
                 "blank isp51-8k --chip bench.chip");
    AddOperation("erase", Command::kErase, "Erase a device and check that it is blank",
                 "erase isp51-8k --chip bench.chip");
  }

  void AddLock() {
    CLI::App* sub =
        AddOperation("lock", Command::kLock, "Lock a device", "lock isp51-8k 2 --chip bench.chip");
    sub->add_option("level", options_.lock_level, "Lock level, from 1")
        ->type_name("LEVEL")
        ->required();
  }

  void AddConfig() {
    CLI::App* sub = AddOperation("config", Command::kConfig,
                                 "Show the configuration bytes of a device, or write them",
                                 "config isp-page-16k low=E2 high=DF --chip bench.chip");
    sub->add_option("bytes", options_.assignments, "Bytes to write, in hexadecimal")
        ->type_name("NAME=VALUE");
    AddYes(sub);
  }

  void AddYes(CLI::App* sub) {
    sub->add_flag("--yes", options_.yes,
                  "Write even what shuts the programming interface of the device");
  }

  void AddFuses() {
    CLI::App* sub = Add("fuses", Command::kFuses,
                        "Show the fuse and lock bits of a device by name, or change them",
                        "fuses set isp-page-16k CKDIV8=1 \"Lock Bit=Lock Bit1\" --chip bench.chip");
    AddChoice(sub, "action", options_.changes_fuses, {{"show", false}, {"set", true}},
              "show prints a table of bit, name, value and meaning; set changes bits")
        ->required();
    AddDeviceOptions(sub);
    sub->add_option("bits", options_.assignments,
                    "Bits to change: the name as the table has it, or the bit (low.5);\n"
                    "the value in digits or what it means")
        ->type_name("NAME=VALUE");
    AddImage(sub)->excludes("--chip")->excludes("--record")->excludes("--vcd");
    AddYes(sub);
  }

  void AddReplay() {
    CLI::App* sub =
        app_.add_subcommand("replay", "Play run records back, with no programmer and no chip");
    sub->footer("Example:\n  fliglaf replay failure.run --explain");
    sub->callback([this] {
      options_.command = Command::kReplay;
      options_.command_name = "replay";
    });
    AddPaths(sub, "records", options_.records, "Records, as --record writes them")->required();
    sub->add_flag("--explain", options_.explain,
                  "At a difference, tell the calls before it and where in the run it is");
  }

  void AddChip() {
    CLI::App* sub = Add("chip", Command::kChip, "Offer the simulated chip to another JTAG tool",
                        "chip jtag-byte-16k --remote-bitbang 9824 --chip bench.chip");
    AddDevice(sub);
    sub->add_option("--remote-bitbang", options_.remote_bitbang_port,
                    "Port of this machine on which one client, such as OpenOCD, is served in the\n"
                    "remote_bitbang protocol; 0 takes a free one. The program ends with the client")
        ->type_name("PORT")
        ->check(CLI::Range(0, 65535).description(""))
        ->required();
    AddChipFile(sub);
  }

  CLI::App app_{"fliglaf programs microcontrollers on a simulated bench.", "fliglaf"};
  Options options_;
};

}  // namespace

bool WritesDevice(const Options& options) {
  switch (options.command) {
    case Command::kProgram:
    case Command::kErase:
    case Command::kLock:
    case Command::kChip:
      return true;
    case Command::kConfig:
      return !options.assignments.empty();
    case Command::kFuses:
      return options.changes_fuses;
    default:
      return false;
  }
}

std::optional<Options> ParseOptions(int argc, const char* const* argv) {
  return Parser().Parse(argc, argv);
}

}  // namespace fliglaf::cli
