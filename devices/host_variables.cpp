#include "devices/host_variables.h"

namespace fliglaf {
namespace {

/// Value of quorinbvcch(0) for a device with two configuration words.
constexpr std::int16_t kTwoConfigWords = 1;

void SetPins(ByteVariable& variable, const std::vector<std::uint8_t>& pins) {
  for (std::size_t i = 0; i < pins.size(); ++i) variable[static_cast<std::int64_t>(i)] = pins[i];
}

}  // namespace

void DescribeDevice(const DeviceProfile& device, bool parallel, SharedVariables& vars) {
  SetPins(vars.quorinbvccpin, device.vcc_pins);
  SetPins(vars.quorinbgndpin, device.gnd_pins);
  SetPins(vars.quorinbvpppin, device.vpp_pins);
  vars.quorinprgmode[0] = device.family;
  vars.quorinwoption[0] = device.option;
  vars.quorintlength[0] = device.size;
  vars.quorinpagelength[0] = device.page;
  vars.quorinbvcch[0] = device.config_words == 2 ? kTwoConfigWords : device.data_size;
  vars.quorinwltbigendbuf[0] = device.range.first;
  vars.quorinwltbigendbuf[1] = device.range.last + (parallel ? 1 : 0);
  vars.quorinbuftype[0] = device.erased == 0x00 ? 1 : 0;
  vars.quorinbvcc[0] = device.supply;
  vars.quorinbvpp[0] = device.programming_voltage;
  vars.quorinchippin[0] = device.pin_count;
  vars.quorinfigmode[0] = device.adapter;
  vars.quorinpwte[0] = device.write_time;
  vars.quorinwretry[0] = device.retries;
}

}  // namespace fliglaf
