#include "devices/kinds/kinds.h"

#include <bit>
#include <chrono>

namespace fliglaf {

simulator::Silicon SiliconOf(const DeviceProfile& device) {
  using std::chrono::microseconds, std::chrono::milliseconds;
  const ImageLayout layout = LayoutOf(device);
  return {.flash_bytes = static_cast<std::size_t>(layout.main_bytes),
          .page_bytes = static_cast<std::size_t>(device.page * device.address_bytes),
          .eeprom_bytes = static_cast<std::size_t>(layout.data_bytes),
          .signature = device.signature.value_or(Signature{}),
          .byte_write = microseconds(device.chip.byte_write_us),
          .page_write = microseconds(device.chip.page_write_us),
          .eeprom_write = microseconds(device.chip.eeprom_write_us),
          .config_write = microseconds(device.chip.config_write_us),
          .erase = milliseconds(device.chip.erase_ms),
          .lock_write = milliseconds(device.chip.lock_write_ms),
          .start_up = milliseconds(device.chip.start_up_ms)};
}

simulator::SupplyPins SupplyOf(const DeviceProfile& device) {
  return {.vcc = device.vcc_pins,
          .gnd = device.gnd_pins,
          .vpp = device.vpp_pins,
          .nominal_millivolts = device.supply * 10};
}

bool ImageIsBytes(const DeviceProfile& device) {
  return device.address_bytes == 1 && device.image_bytes == device.size;
}

bool ImageIsWords(const DeviceProfile& device) {
  return device.address_bytes == 2 && device.image_bytes == 2 * device.size;
}

bool FlashIsWholePages(const DeviceProfile& device) {
  const std::int64_t page = std::int64_t{device.page} * device.address_bytes;
  return page > 0 && LayoutOf(device).main_bytes % page == 0;
}

bool PageIsPowerOfTwo(const DeviceProfile& device, int least, int most) {
  return std::has_single_bit(static_cast<unsigned>(device.page)) && device.page >= least &&
         device.page <= most;
}

}  // namespace fliglaf
