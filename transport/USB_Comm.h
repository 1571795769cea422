#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <vector>

#include "core/SessionState.h"
#include "transport/PacketLink.h"
#include "transport/UsbDriver.h"

namespace lxm {
class Session;
class Shape;
}  // namespace lxm

// The register transfer packets: the only place that knows the board's wire format.
namespace lxm::USB_Comm {

// Hexadecimal text to a number, as the entry boxes are read: the leading hex digits of the
// text ("" -> 0, "88" -> 136, "1G" -> 1). Up to four digits give a 16-bit signed value
// ("FFFF" -> -1); longer texts give their 32-bit value. A value beyond 32 bits, however many
// leading zeros it has, gives kHexTooLarge, which every range test rejects.
constexpr std::int32_t kHexTooLarge = 0x7FFFFFFF;
std::int32_t HexValue(const QString& text);

class Comm {
public:
    explicit Comm(Session& session);

    // One packet out on XferPipe, or one packet in from it. The outgoing transfer reports on
    // the "Attach" lamp and the incoming one on the "Comm" lamp of the active form.
    void TransferOut();
    void TransferIn();

    // Row r of the active form's register panel.
    void ReadRegister(int r);
    void WriteRegister(int r);

    // Packet building blocks for the measurement, port-line and script code. They neither
    // open the board nor touch the busy flag: their callers do, around a whole sequence.
    // Reads count bytes from register reg; the reply is replyLen bytes (status first). The
    // reply is the transfer buffer itself, valid until the next transfer: the collection loop
    // reads on every pass and has no use for a copy.
    const std::vector<std::uint8_t>& ReadBlock(std::uint8_t reg, int count, int replyLen);
    // Writes bytes to consecutive registers from reg.
    void WriteBlock(std::uint8_t reg, const std::vector<std::uint8_t>& bytes);
    // Sends a raw packet on a pipe and, when replyLen > 0, asks for a reply on pipe + 128.
    std::vector<std::uint8_t> Exchange(int pipe, const std::vector<std::uint8_t>& packet, int replyLen);

    // Not-connected indication: the red "Fail" label, "Test Comm" cleared, the message, and
    // the collection stopped.
    void NotConnected();
    // A board plugged in again after an unplug is attached but not open: a collection, a
    // single read or a script on it would only read zeros. Says once per action what to do;
    // true when the board is in that state and the caller must do nothing.
    bool RefuseUnopenedBoard();
    // When register r was last written through its row (clock microseconds; 0 never): a chip
    // starts converting anew with a write of its settings.
    std::int64_t LastWriteUs(int r) const { return lastWriteUs_[std::size_t(r)]; }

    std::uint32_t XferPipe = 0;
    std::uint32_t XferSize = 0;
    std::vector<std::uint8_t> XferBuf;
    std::uint32_t XferDone = 0;
    std::array<std::uint8_t, 8> SetupPacket{};

    // The per-transfer time-out; tests of the real USB path shorten it.
    std::uint32_t timeoutMs = 1000;

private:
    std::array<std::int64_t, kMaxRegisters> lastWriteUs_{};
    bool Begin(int r, std::array<bool, kMaxRegisters>& pending);
    void Report(bool in, bool ok);
    void FlipActivity(Shape* shape);

    Session& s_;
    PacketLink link_;
};

}  // namespace lxm::USB_Comm
