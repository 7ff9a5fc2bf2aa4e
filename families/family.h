// The base of the device families, and the steps that their passes share.
#pragma once

#include <cstdint>

#include "families/lines.h"
#include "image_layout/image_layout.h"
#include "shared/signature.h"
#include "usb/components/programmer.h"
#include "usb/request/run.h"

namespace fliglaf {

/// A family of devices, made for the power-up, for the signature check and for each operation, on
/// the lines that it drives. The family table makes it by its code.
class Family {
 public:
  virtual ~Family() = default;
  Family(const Family&) = delete;
  Family& operator=(const Family&) = delete;

  /// Enters programming mode once the socket is powered.
  virtual void Enter() = 0;
  /// Reads, verifies, blank-checks or compares: codes below 6.
  virtual void ReadPass(CheckMode mode) = 0;
  /// Writes and verifies: code 6.
  virtual void Program() = 0;

  // Erase, lock and configuration. Which code does which differs from family to family; a code that
  // a family does not override does nothing.
  virtual void Code8() {}
  virtual void Code9() {}
  virtual void Code10() {}
  virtual void Code11() {}

  /// False where parts in programming mode have no signature: no check is made then.
  [[nodiscard]] virtual bool HasSignature() const { return true; }
  /// Zeros unless overridden, so that the user is asked.
  [[nodiscard]] virtual Signature ReadSignature() { return {}; }

 protected:
  explicit Family(Run& request) : run(request), vars(request.vars), io(request.io) {}

  /// The second byte of the packet that opens a pass. How the programmer uses it is not known.
  enum class PassKind : std::uint8_t { kBlocks = 0x0A, kBytes = 0x10 };

  /// How captured bytes come: the programmer takes the first bit for bit 7.
  enum class BitOrder : std::uint8_t { kHighFirst, kLowFirst };

  /// Most bytes that one captured block holds.
  static constexpr std::int32_t kBlockBytes = 16384;
  /// Asked for where a block is fetched with one count whatever its size.
  static constexpr std::int32_t kBlockAndEndMark = kBlockBytes + 1;
  /// What to ask for when `bytes` captured bytes are fetched in whole packets of 64 with the end
  /// mark behind them.
  [[nodiscard]] static constexpr std::int32_t WholePackets(std::int64_t bytes) {
    return static_cast<std::int32_t>((bytes + 64) / 64 * 64 + 1);
  }

  /// A captured block and where it belongs.
  struct Block {
    std::int64_t bytes;
    std::int64_t image;                     ///< image address of its first byte
    std::int32_t count = kBlockAndEndMark;  ///< what to ask the programmer for
    BitOrder order = BitOrder::kHighFirst;
  };

  // Packets around a pass. ClosePass waits for what is queued first.
  void OpenPass(PassKind kind);
  void ClosePass();
  void SendClosingPacket();

  /// Writes the progress of an operation that has come to `address` of the device.
  void ProgressAt(std::int64_t address) { fliglaf::ProgressAt(run, address); }
  /// The same; false after a stop.
  [[nodiscard]] bool GoesOn(std::int64_t address);

  /// Starts a capture: what is captured from here on comes with the bulk read after the next
  /// ArmCapture.
  void ArmCapture();
  /// Sends what is queued, waits `wait_ms` milliseconds, and fetches `count` bytes, the end mark
  /// included, into quorinibuf2. False when the bulk read failed or was stopped.
  [[nodiscard]] bool FetchCaptures(std::int32_t count, std::int32_t wait_ms = 100);
  /// FetchCaptures for a pass that goes on with whatever quorinibuf2 holds; false only after a
  /// stop. A block that could not be fetched is counted in quorinubuflg(1), so that a host can tell
  /// a result that rests on it.
  [[nodiscard]] bool FetchOrCountAsLost(std::int32_t count, std::int32_t wait_ms = 100);
  /// Hands quorinibuf2 over for judgement. False when the programmer ended the pass.
  [[nodiscard]] bool HandOver(const Block& block, CheckMode mode);
  /// Fetches a block and hands it over, also when it is lost. False when the pass is over.
  [[nodiscard]] bool FetchAndJudge(const Block& block, CheckMode mode);

  /// Verifies what has just been programmed: one read pass at nominal supply, or one at the raised
  /// and, if that was good, one at the lowered supply.
  void VerifyProgrammed();
  /// For families that verify after a fresh start: takes the device from its supply, powers it up
  /// again and verifies.
  void VerifyAfterPowerUp();

  /// Throws std::length_error for a memory beyond kBlockBytes in a family that reads it in one
  /// block: what lies beyond would never be read.
  static void RequireOneBlock(std::int64_t bytes);

  Run& run;
  SharedVariables& vars;
  Programmer& io;
};

}  // namespace fliglaf
