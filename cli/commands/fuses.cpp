// fliglaf fuses: fuse and lock bits by their names.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/commands/table.h"
#include "cli/configuration.h"
#include "cli/fuse_page.h"
#include "cli/host_session.h"
#include "cli/image_output.h"
#include "cli/layout.h"
#include "cli/operation_options.h"
#include "cli/parse_options.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "devices/kinds/device_kind.h"
#include "host/factory_settings.h"
#include "images/image.h"
#include "platform/terminal.h"

namespace fliglaf::cli {
namespace {

void PrintTable(const std::vector<FuseLine>& lines) {
  std::vector<Row> rows{{"bit", "name", "value", "meaning"}};
  for (const FuseLine& line : lines) {
    std::string meaning = line.meaning;
    if (!line.changeable) meaning += meaning.empty() ? "shown only" : ", shown only";
    rows.push_back({line.bit, line.name, line.value, meaning});
  }
  std::cout << Table(rows, ColumnsOf(platform::Stream::kOutput));
}

void PrintJson(const OperationOptions& options, const std::vector<FuseLine>& lines) {
  auto bits = nlohmann::ordered_json::array();
  for (const FuseLine& line : lines) {
    bits.push_back({{"bit", line.bit},
                    {"name", line.name},
                    {"value", line.value},
                    {"meaning", line.meaning},
                    {"changeable", line.changeable}});
  }
  const nlohmann::ordered_json object{
      {"command", options.command}, {"device", options.device.name()}, {"bits", bits}};
  std::cout << Dump(object) << "\n";
}

/// Where the rest of the bytes is not known, every bit that can be changed must be given.
void RequireAll(const FusePage& page, const DeviceProfile& device) {
  std::vector<std::string> missing;
  std::vector<std::string> all;
  for (const FuseLine& line : page.Lines()) {
    if (!line.changeable) continue;
    if (!page.IsSet(line)) missing.push_back(line.name);
    all.push_back(line.bit + "=" + line.value);
  }
  if (missing.empty()) return;
  throw UsageError(fmt::format(
      "{}: its configuration cannot be read, so every bit must be given; missing: {}; with the "
      "values of a new device: fliglaf fuses set {} {}",
      device.name, fmt::join(missing, ", "), device.name, fmt::join(all, " ")));
}

/// Throws UsageError for a file that is not the whole image of the device. One that leaves gaps is
/// taken as long as it has the configuration bytes: in their place the page would show, and store,
/// bytes that nobody chose.
void CheckImage(const std::filesystem::path& file, const DeviceProfile& device,
                const Image& image) {
  const auto fail = [&](const std::string& what) {
    throw UsageError(fmt::format(
        "{}: {}; an image of {}, as \"fliglaf read {} --image FILE\" writes it, has {} bytes",
        file.string(), what, device.name, device.name, device.image_bytes));
  };
  const auto size = static_cast<std::uint64_t>(device.image_bytes);
  const bool binary = FormatOfName(file) == ImageFormat::kBinary;
  if (binary && image.end() != size) fail(fmt::format("its size is {}", image.end()));
  if (image.end() > size) fail(fmt::format("goes on to address 0x{:04X}", image.end() - 1));
  for (const ConfigByte& byte : ConfigBytesOf(device)) {
    const auto at = static_cast<std::uint64_t>(byte.image_byte);
    const bool there = std::ranges::any_of(image.segments, [at](const Segment& segment) {
      return segment.address <= at && at < segment.end();
    });
    if (!there) fail(fmt::format("has nothing at address 0x{:04X}, the byte {}", at, byte.name));
  }
}

class FusesCommand : public Command {
 public:
  FusesCommand()
      : Command({.name = "fuses",
                 .summary = "Show the fuse and lock bits of a device by name, or change them",
                 .example = "fuses set isp-page-16k CKDIV8=1 \"Lock Bit=Lock Bit1\" --chip "
                            "bench.chip"}) {}

  void Describe(OptionSet& options) override {
    options_.command = name();
    options
        .Choice<bool>("ACTION",
                      "show prints a table of bit, name, value and meaning; set changes bits",
                      changes_, {{"show", false}, {"set", true}})
        .when_missing = "fuses: must be followed by show or set, then by the device";
    options_.device.AddDevice(options, "fuses: name the device, then the bits to set");
    options.Texts("NAME=VALUE", "NAME=VALUE",
                  "Bit to change: the name as the table has it, or the bit (low.5); the value in "
                  "digits or what it means",
                  assignments_);
    options.File("--image", "Image file to show or change instead of a device", image_file_);
    options.Exclude("--image", {"--chip", "--record", "--vcd"});
    AddYes(options, yes_);
    options_.AddTo(options);
  }

  ExitStatus Run() override {
    CheckAction();
    options_.writes_device = changes_;
    const DeviceProfile& device = options_.Begin();
    FusePage::RequirePage(device);
    if (changes_) CheckAssignments(device);
    return image_file_.empty() ? InDevice(device) : InImage(device);
  }

 private:
  void CheckAction() const {
    if (changes_ && assignments_.empty()) {
      throw UsageError("fuses set: name what to change, as NAME=VALUE", SeeHelp(name()));
    }
    if (!changes_ && !assignments_.empty()) {
      throw UsageError(fmt::format("{}: \"fuses show\" changes nothing; \"fuses set\" does",
                                   assignments_.front()));
    }
  }

  /// Throws UsageError for a name or value that the page does not take, before a device or file is
  /// touched: which rows a page has does not depend on the bytes.
  void CheckAssignments(const DeviceProfile& device) const {
    HostSession session(HostSession::FreeInstance(), device, Engine::kUsb);
    PresetConfiguration(session.variables());
    FusePage page(device, session.variables());
    SetAll(page);
    if (image_file_.empty() && !ReadsConfig(device)) RequireAll(page, device);
  }

  void SetAll(FusePage& page) const {
    for (const std::string& assignment : assignments_) page.Set(assignment);
  }

  void Print(const FusePage& page) const {
    options_.json ? PrintJson(options_, page.Lines()) : PrintTable(page.Lines());
  }

  void LoadImage(const DeviceProfile& device, std::span<std::uint8_t> bytes) const {
    const Image image = ReadImage(image_file_);
    CheckImage(image_file_, device, image);
    for (const Segment& segment : image.segments) {
      std::ranges::copy(segment.bytes, bytes.begin() + segment.address);
    }
  }

  [[nodiscard]] ExitStatus InImage(const DeviceProfile& device) const {
    HostSession session(HostSession::FreeInstance(), device, Engine::kUsb);
    LoadImage(device, session.image());
    FusePage page(device, session.variables());
    if (!changes_) {
      Print(page);
      return ExitStatus::kSuccess;
    }
    const ImageOutput output({.memory = {}, .eeprom = {}, .image = image_file_}, device);
    SetAll(page);
    page.Confirm();
    Report report;
    const std::string files = output.Write(session.image(), report);
    if (files.empty()) throw ImageError(report.unwritten.front());  // no device was touched
    report.message = fmt::format("{}: {} written", device.name, files);
    return PrintReport(options_, report);
  }

  [[nodiscard]] ExitStatus InDevice(const DeviceProfile& device) const {
    Configuration configuration(options_, device);
    if (changes_) {
      configuration.RequireWritable();
      return configuration.run().Complete([&] { return Change(configuration, device); });
    }
    if (ReadsConfig(device)) return Show(configuration, device);
    throw UsageError(
        device.name +
        ": its configuration cannot be read; fuses show --image FILE shows that of an image file");
  }

  ExitStatus Show(Configuration& configuration, const DeviceProfile& device) const {
    OperationRun& run = configuration.run();
    Report report = configuration.Read();
    const bool read = report.status == ExitStatus::kSuccess;
    if (read) Print(FusePage(device, run.session().variables()));
    if (read && configuration.AreHidden()) {
      PrintProblem(device.name + ": the read lock hides the true values");
    }
    run.Keep(report);
    return read ? PrintUnwritten(report) : PrintReport(options_, report);
  }

  /// Starts from the device's bytes or, where they cannot be read, from those of the factory.
  Report Change(Configuration& configuration, const DeviceProfile& device) const {
    SharedVariables& variables = configuration.run().session().variables();
    if (ReadsConfig(device)) {
      Report read = configuration.Read();
      if (read.status != ExitStatus::kSuccess) return read;
    } else {
      PresetConfiguration(variables);
    }
    FusePage page(device, variables);
    std::vector<ConfigAssignment> assignments = Changes(configuration, page, device);
    if (assignments.empty()) {
      Report report;
      report.message = device.name + ": nothing to change: " + configuration.Values();
      return report;
    }
    configuration.Plan(std::move(assignments), yes_);
    return configuration.Write();
  }

  /// The bytes that the page changes; all of them where the device's cannot be read.
  [[nodiscard]] std::vector<ConfigAssignment> Changes(Configuration& configuration, FusePage& page,
                                                      const DeviceProfile& device) const {
    std::vector<ConfigAssignment> assignments;
    for (const ConfigByte& byte : configuration.bytes()) {
      assignments.push_back({.byte = byte, .value = configuration.Byte(byte)});
    }
    SetAll(page);
    page.Confirm();
    for (ConfigAssignment& assignment : assignments) {
      const std::uint8_t before =
          std::exchange(assignment.value, configuration.Byte(assignment.byte));
      if (!ReadsConfig(device)) continue;
      assignment.changed = (before ^ assignment.value) & assignment.byte.bits;
    }
    std::erase_if(assignments, [](const auto& assignment) { return assignment.changed == 0; });
    return assignments;
  }

  OperationOptions options_;
  bool changes_ = false;  ///< "set" instead of "show"
  std::vector<std::string> assignments_;
  std::filesystem::path image_file_;
  bool yes_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeFuses() { return std::make_unique<FusesCommand>(); }

}  // namespace fliglaf::cli
