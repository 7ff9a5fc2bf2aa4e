#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace fliglaf::simulator {

/// The programmer's capture memory and the USB pipe that empties it. Arming closes the run of
/// captures since the arming before it: those bytes are what the next bulk read brings, then the
/// end mark.
class CapturePipe {
 public:
  void Capture(std::uint8_t byte) { running_.push_back(byte); }
  void Arm();
  /// Drops captures and a transfer in progress.
  void Clear();

  /// Starts a transfer at `now` (ns). `destination` and `status` must stay valid until it is
  /// complete or Clear is called.
  void Start(std::int64_t now, std::span<std::uint8_t> destination, std::uint8_t& status);
  /// When the transfer will next have news, if one is in progress.
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const;
  /// Carries out what is due at `now`.
  void Poll(std::int64_t now);

 private:
  struct Transfer {
    std::span<std::uint8_t> destination;
    std::uint8_t* status;
    std::int64_t data_due;
    std::int64_t mark_due;
    bool data_delivered = false;
  };

  void DeliverData(Transfer& transfer);

  std::vector<std::uint8_t> running_;  ///< captured since the last arming
  std::vector<std::uint8_t> ready_;    ///< the run before it
  std::optional<Transfer> transfer_;
};

}  // namespace fliglaf::simulator
