#include "simulator/capture_pipe.h"

#include <algorithm>

#include "simulator/usb_timing.h"
#include "usb/components/programmer.h"

namespace fliglaf::simulator {

void CapturePipe::Arm() {
  ready_.swap(running_);
  running_.clear();
}

void CapturePipe::Clear() {
  running_.clear();
  ready_.clear();
  transfer_.reset();
}

void CapturePipe::Start(std::int64_t now, std::span<std::uint8_t> destination,
                        std::uint8_t& status) {
  // The last byte asked for is a packet of its own: it comes after the data are reported.
  const std::int64_t data_due = now + usb::kFrame + usb::TransferTime(destination.size() - 1);
  transfer_ = Transfer{.destination = destination,
                       .status = &status,
                       .data_due = data_due,
                       .mark_due = data_due + usb::kPacket};
}

std::optional<std::int64_t> CapturePipe::NextEvent() const {
  if (!transfer_) return std::nullopt;
  return transfer_->data_delivered ? transfer_->mark_due : transfer_->data_due;
}

void CapturePipe::Poll(std::int64_t now) {
  if (!transfer_ || now < NextEvent()) return;
  if (!transfer_->data_delivered) DeliverData(*transfer_);
  if (now < transfer_->mark_due) return;
  transfer_->destination.back() = kEndMark;
  transfer_.reset();
}

void CapturePipe::DeliverData(Transfer& transfer) {
  const std::size_t count = std::min(ready_.size(), transfer.destination.size() - 1);
  std::copy_n(ready_.begin(), count, transfer.destination.begin());
  ready_.clear();
  *transfer.status = bulk_status::kDone;
  transfer.data_delivered = true;
}

}  // namespace fliglaf::simulator
