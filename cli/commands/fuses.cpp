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

/// What the command takes.
struct FuseOptions {
  OperationOptions operation;
  bool changes = false;  ///< "set" instead of "show"
  std::vector<std::string> assignments;
  std::filesystem::path image_file;
  bool yes = false;
};

void PrintTable(const std::vector<FuseLine>& lines) {
  std::vector<Row> rows{{"bit", "name", "value", "meaning"}};
  for (const FuseLine& line : lines) {
    std::string meaning = line.meaning;
    if (!line.changeable) meaning += meaning.empty() ? "shown only" : ", shown only";
    rows.push_back({line.bit, line.name, line.value, meaning});
  }
  std::cout << Table(rows, ColumnsOf(platform::Stream::kOutput, kWidest));
}

void PrintJson(const FuseOptions& options, const std::vector<FuseLine>& lines) {
  auto bits = nlohmann::ordered_json::array();
  for (const FuseLine& line : lines) {
    bits.push_back({{"bit", line.bit},
                    {"name", line.name},
                    {"value", line.value},
                    {"meaning", line.meaning},
                    {"changeable", line.changeable}});
  }
  const nlohmann::ordered_json object{{"command", options.operation.command},
                                      {"device", options.operation.device.name()},
                                      {"bits", bits}};
  std::cout << Dump(object) << "\n";
}

void Print(const FuseOptions& options, const FusePage& page) {
  if (options.operation.json) return PrintJson(options, page.Lines());
  PrintTable(page.Lines());
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

void SetAll(const FuseOptions& options, FusePage& page) {
  for (const std::string& assignment : options.assignments) page.Set(assignment);
}

/// Throws UsageError for a name or value that the page does not take, before a device or file is
/// touched: which rows a page has does not depend on the bytes.
void CheckAssignments(const FuseOptions& options, const DeviceProfile& device) {
  HostSession session(HostSession::FreeInstance(), device, Engine::kUsb);
  PresetConfiguration(session.variables());
  FusePage page(device, session.variables());
  SetAll(options, page);
  if (options.image_file.empty() && !ReadsConfig(device)) RequireAll(page, device);
}

/// Throws UsageError for a file that is not the whole image of the device. One that leaves gaps is
/// taken as long as it has the configuration bytes: in their place the page would show, and store,
/// bytes that nobody chose.
void CheckImage(const FuseOptions& options, const DeviceProfile& device, const Image& image) {
  const auto fail = [&](const std::string& what) {
    throw UsageError(fmt::format(
        "{}: {}; an image of {}, as \"fliglaf read {} --image FILE\" writes it, has {} bytes",
        options.image_file.string(), what, device.name, device.name, device.image_bytes));
  };
  const auto size = static_cast<std::uint64_t>(device.image_bytes);
  const bool binary = FormatOfName(options.image_file) == ImageFormat::kBinary;
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

void LoadWhole(const FuseOptions& options, const DeviceProfile& device,
               std::span<std::uint8_t> bytes) {
  const Image image = ReadImage(options.image_file);
  CheckImage(options, device, image);
  for (const Segment& segment : image.segments) {
    std::ranges::copy(segment.bytes, bytes.begin() + segment.address);
  }
}

ExitStatus InImage(const FuseOptions& options, const DeviceProfile& device) {
  HostSession session(HostSession::FreeInstance(), device, Engine::kUsb);
  LoadWhole(options, device, session.image());
  FusePage page(device, session.variables());
  if (!options.changes) {
    Print(options, page);
    return ExitStatus::kSuccess;
  }
  const ImageOutput output({.memory = {}, .eeprom = {}, .image = options.image_file}, device);
  SetAll(options, page);
  page.Confirm();
  Report report;
  const std::string files = output.Write(session.image(), report);
  if (files.empty()) throw ImageError(report.unwritten.front());  // no device was touched
  report.message = fmt::format("{}: {} written", device.name, files);
  return PrintReport(options.operation, report);
}

/// The fuses of the device in the socket: read, changed on the page, written and read back.
class InDevice {
 public:
  InDevice(const FuseOptions& options, const DeviceProfile& device)
      : options_(options), device_(device), configuration_(options.operation, device) {
    if (options.changes) {
      configuration_.RequireWritable();
    } else if (!ReadsConfig(device)) {
      throw UsageError(device.name +
                       ": its configuration cannot be read; fuses show --image FILE shows that of "
                       "an image file");
    }
  }

  ExitStatus Run() { return options_.changes ? Change() : Show(); }

 private:
  ExitStatus Show() {
    OperationRun& run = configuration_.run();
    Report report = configuration_.Read();
    const bool read = report.status == ExitStatus::kSuccess;
    if (read) Print(options_, FusePage(device_, run.session().variables()));
    run.Keep(report);
    return read ? PrintUnwritten(report) : PrintReport(options_.operation, report);
  }

  ExitStatus Change() {
    OperationRun& run = configuration_.run();
    return run.Complete([&] {
      Report report = Prepared();
      if (report.status != ExitStatus::kSuccess) return report;
      FusePage page(device_, run.session().variables());
      return Changed(page);
    });
  }

  /// With the device's bytes in the image, or as the parts leave the factory.
  Report Prepared() {
    if (ReadsConfig(device_)) return configuration_.Read();
    PresetConfiguration(configuration_.run().session().variables());
    return {};
  }

  Report Changed(FusePage& page) {
    std::vector<ConfigAssignment> assignments;
    for (const ConfigByte& byte : configuration_.bytes()) {
      assignments.push_back({.byte = byte, .value = configuration_.Byte(byte)});
    }
    SetAll(options_, page);
    page.Confirm();
    for (ConfigAssignment& assignment : assignments) {
      const std::uint8_t before =
          std::exchange(assignment.value, configuration_.Byte(assignment.byte));
      if (!ReadsConfig(device_)) continue;
      assignment.changed = (before ^ assignment.value) & assignment.byte.bits;
    }
    std::erase_if(assignments, [](const auto& assignment) { return assignment.changed == 0; });
    if (assignments.empty()) {
      Report report;
      report.message = device_.name + ": nothing to change: " + configuration_.Values();
      return report;
    }
    configuration_.Plan(std::move(assignments), options_.yes);
    return configuration_.Write();
  }

  const FuseOptions& options_;
  const DeviceProfile& device_;
  Configuration configuration_;
};

class FusesCommand : public Command {
 public:
  FusesCommand()
      : Command({.name = "fuses",
                 .summary = "Show the fuse and lock bits of a device by name, or change them",
                 .example = "fuses set isp-page-16k CKDIV8=1 \"Lock Bit=Lock Bit1\" --chip "
                            "bench.chip"}) {}

  void Describe(OptionSet& options) override {
    options_.operation.command = name();
    options
        .Choice<bool>("ACTION",
                      "show prints a table of bit, name, value and meaning; set changes bits",
                      options_.changes, {{"show", false}, {"set", true}})
        .when_missing = "fuses: must be followed by show or set, then by the device";
    options_.operation.device.AddDevice(options, "fuses: name the device, then the bits to set");
    options.Texts("NAME=VALUE", "NAME=VALUE",
                  "Bit to change: the name as the table has it, or the bit (low.5); the value in "
                  "digits or what it means",
                  options_.assignments);
    options.File("--image", "Image file to show or change instead of a device",
                 options_.image_file);
    options.Exclude("--image", {"--chip", "--record", "--vcd"});
    AddYes(options, options_.yes);
    options_.operation.AddTo(options);
  }

  ExitStatus Run() override {
    CheckAction();
    options_.operation.writes_device = options_.changes;
    const DeviceProfile& device = options_.operation.Begin();
    FusePage::RequirePage(device);
    if (options_.changes) CheckAssignments(options_, device);
    if (!options_.image_file.empty()) return InImage(options_, device);
    return InDevice(options_, device).Run();
  }

 private:
  void CheckAction() const {
    if (options_.changes && options_.assignments.empty()) {
      throw UsageError("fuses set: name what to change, as NAME=VALUE", SeeHelp(name()));
    }
    if (!options_.changes && !options_.assignments.empty()) {
      throw UsageError(fmt::format("{}: \"fuses show\" changes nothing; \"fuses set\" does",
                                   options_.assignments.front()));
    }
  }

  FuseOptions options_;
};

}  // namespace

std::unique_ptr<Command> MakeFuses() { return std::make_unique<FusesCommand>(); }

}  // namespace fliglaf::cli
