#include "USB_Comm.h"

#include <QLineEdit>
#include <QRadioButton>

#include <algorithm>

#include "core/ActiveForm.h"
#include "core/ColorLabel.h"
#include "core/Colours.h"
#include "core/Options.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "transport/Session.h"
#include "transport/generic_usb_lib.h"

namespace lxm::USB_Comm {

namespace {
constexpr int kLightGreen = 10;
constexpr int kGreen = 2;
constexpr int kLightRed = 12;
// Owed replies are drained with this much shorter time-out before the next command goes out.
constexpr std::uint32_t kDrainTimeoutMs = 20;
constexpr int kMaxDrain = 4;
// Empty INs in a row after which a reply still owed is taken as lost.
constexpr int kForgetAfterSilent = 4;
// Empty INs in a row that prove a pipe holds no reply we do not know of.
constexpr int kQuietToTrust = 2;
constexpr std::uint32_t kScratchSize = 64;

bool Replied(std::uint32_t status) {
    return status == kUsbOk || status == kUsbOverflow;
}
}  // namespace

std::int32_t HexValue(const QString& text) {
    // Leading zeros add digits but no value: "00000081F" is 0x81F, however long the text.
    std::uint64_t v = 0;
    int digits = 0;
    for (QChar c : text) {
        int d;
        if (c >= '0' && c <= '9')
            d = c.unicode() - '0';
        else if (c >= 'a' && c <= 'f')
            d = c.unicode() - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            d = c.unicode() - 'A' + 10;
        else
            break;
        v = (v << 4) | std::uint64_t(d);
        ++digits;
        if (v > 0xFFFFFFFFu) return kHexTooLarge;
    }
    if (digits <= 4) return std::int32_t(std::int16_t(std::uint16_t(v)));
    return std::int32_t(std::uint32_t(v));
}

Comm::Comm(Session& session) : s_(session) {}

void Comm::Transfer(bool in) {
    if (XferBuf.size() < XferSize) XferBuf.resize(XferSize, 0);
    XferDone = 0;
    s_.LastStatus = s_.driver.Transfer(s_.usb().deviceHandle, XferPipe, in ? UsbDir::In : UsbDir::Out,
                                       XferBuf.data(), XferSize, &XferDone, timeoutMs);
    Report(in, s_.LastStatus == kUsbOk);
}

void Comm::Report(bool in, bool ok) {
    Shape* lamp = nullptr;
    if (s_.activeForm) lamp = in ? s_.activeForm->Shp_USB_Transfer() : s_.activeForm->ShpAttach();
    s_.TransferOK = ok;
    if (lamp) lamp->setFillIndex(ok ? kLightGreen : kLightRed);
}

// Keeping replies in step with their commands.
//
// The board answers every read command with exactly one reply, in the order of the commands, and
// a reply carries nothing that says which command it answers. A reply that misses the host's
// time-out is not lost: the board hands it to a later IN. So the host counts, per IN pipe, the
// replies the board still owes (owed_): a command that reached the board and was followed by its
// IN adds one, every reply that arrives pays the oldest. The rule is then:
//   1. Before a new command, owed replies are drained with short INs. A drain that times out
//      forgets nothing: the reply is still owed and the next IN pays it.
//   2. The IN of a command takes the reply that pays its own debt. Replies that arrive while
//      older ones are owed are those older ones and are thrown away.
//   3. A command that never reached the board owes nothing, and its IN is not made: it could
//      only return an older reply.
//   4. A reply that stays away through kForgetAfterSilent empty INs in a row is taken as lost
//      (the board dropped it). Being wrong about that would leave every later read one behind,
//      so the pipe is then on probation: after each reply, short INs look for a newer one until
//      kQuietToTrust of them in a row come back empty. A newer reply found there is the true
//      answer to the command, and the one before it was a stale one.
// A new board (a new device handle) starts with nothing owed. The drains and probes leave the
// lamps alone: they are housekeeping, not the user's transfers.
std::uint32_t Comm::RawIn(std::uint8_t pipe, std::uint8_t* buf, std::uint32_t size, std::uint32_t timeout) {
    std::uint32_t done = 0;
    return s_.driver.Transfer(s_.usb().deviceHandle, pipe, UsbDir::In, buf, size, &done, timeout);
}

void Comm::SyncDevice() {
    const DeviceHandle dev = s_.usb().deviceHandle;
    if (dev == device_) return;
    device_ = dev;
    owed_.fill(0);
    silent_.fill(0);
    probation_.fill(false);
    commandSent_.fill(false);
}

void Comm::NoteSilence(std::uint8_t pipe) {
    if (owed_[pipe] == 0) return;
    if (++silent_[pipe] < kForgetAfterSilent) return;
    owed_[pipe] = 0;
    silent_[pipe] = 0;
    probation_[pipe] = true;
}

void Comm::DrainOwed(std::uint8_t pipe) {
    std::uint8_t scratch[kScratchSize];
    for (int i = 0; i < kMaxDrain && owed_[pipe] > 0; ++i) {
        const std::uint32_t st = RawIn(pipe, scratch, kScratchSize, kDrainTimeoutMs);
        if (Replied(st)) {
            --owed_[pipe];
            silent_[pipe] = 0;
        } else if (st == kUsbTimeout) {
            NoteSilence(pipe);
        } else {
            break;
        }
    }
}

void Comm::Probe(std::uint8_t pipe) {
    std::vector<std::uint8_t> newer(std::max<std::uint32_t>(XferSize, 1));
    for (int quiet = 0, tries = 0; quiet < kQuietToTrust && tries < kMaxDrain + kQuietToTrust; ++tries) {
        std::fill(newer.begin(), newer.end(), std::uint8_t(0));
        const std::uint32_t st = RawIn(pipe, newer.data(), XferSize, kDrainTimeoutMs);
        if (Replied(st)) {
            std::copy_n(newer.begin(), XferSize, XferBuf.begin());
            quiet = 0;
        } else if (st == kUsbTimeout) {
            if (++quiet == kQuietToTrust) probation_[pipe] = false;
        } else {
            return;
        }
    }
}

void Comm::TransferOut() {
    SyncDevice();
    const std::uint8_t in = std::uint8_t((XferPipe + 128) & 0xFF);
    // A command whose IN was never asked for (a write) owes no reply.
    commandSent_[in] = false;
    if (owed_[in] > 0) DrainOwed(in);
    Transfer(false);
    commandSent_[in] = s_.LastStatus == kUsbOk;
}

void Comm::TransferIn() {
    SyncDevice();
    const std::uint8_t pipe = std::uint8_t(XferPipe & 0xFF);
    if (XferBuf.size() < XferSize) XferBuf.resize(XferSize, 0);
    if (!commandSent_[pipe]) {
        // LastStatus keeps the failure of the command.
        std::fill(XferBuf.begin(), XferBuf.end(), std::uint8_t(0));
        XferDone = 0;
        Report(true, false);
        return;
    }
    commandSent_[pipe] = false;
    ++owed_[pipe];
    bool ours = false;
    for (;;) {
        Transfer(true);
        if (Replied(s_.LastStatus)) {
            silent_[pipe] = 0;
            if (--owed_[pipe] == 0) {
                ours = true;
                break;
            }
            continue;  // an older reply
        }
        if (s_.LastStatus == kUsbTimeout) NoteSilence(pipe);
        break;
    }
    if (!ours) {
        std::fill(XferBuf.begin(), XferBuf.end(), std::uint8_t(0));
        if (s_.TransferOK) Report(true, false);
        return;
    }
    if (probation_[pipe]) Probe(pipe);
}

void Comm::FlipActivity(Shape* shape) {
    if (!shape) return;
    shape->setFillIndex(shape->hasFillIndex(kLightGreen) ? kGreen : kLightGreen);
}

void Comm::NotConnected() {
    if (s_.activeForm) {
        if (ColorLabel* l = s_.activeForm->LblCommTest()) {
            l->setBackColor(kRgbRed);
            l->setForeColor(kRgbWhite);
            l->setText(QStringLiteral("Fail"));
        }
        SetOptionValue(s_.activeForm->OptMode(2), false);
    }
    if (s_.NotConnectedMessageDue()) s_.messages.MsgBox(QStringLiteral("USB is not Connected"));
    s_.Collecting = false;
}

bool Comm::RefuseUnopenedBoard() {
    if (!s_.UsbConnected || !s_.ReopenNeeded) return false;
    if (s_.NotConnectedMessageDue())
        s_.messages.MsgBox(QStringLiteral(
            "The board was plugged in again but is not open yet. Choose \"Board > Reconnect\" to open "
            "it and write the registers back, then try again."));
    return true;
}

// What a register read and a register write have in common before their packets: nothing
// without a board, only a mark while another transfer holds the bus (a timer tick or a second
// click arriving in a yield must never interleave on the wire), and the board opened around the
// access when the session does not hold it open.
bool Comm::Begin(int r, std::array<bool, kMaxRegisters>& pending) {
    if (!s_.UsbConnected) {
        NotConnected();
        return false;
    }
    if (s_.TransferBusy) {
        s_.TransferDeferred = true;
        pending[r] = true;
        return false;
    }
    pending[r] = false;
    s_.TransferBusy = true;
    if (!s_.SessionOpen) {
        s_.usb().OpenDevice();
        DoEvents();
    }
    return true;
}

void Comm::ReadRegister(int r) {
    if (!Begin(r, s_.PendingRead)) return;
    s_.ReadCount = 1;
    XferPipe = std::uint32_t(s_.CmdPipe);
    XferSize = 3;
    XferBuf.assign(XferSize, 0);
    XferBuf[0] = 1;
    XferBuf[1] = s_.I2cReadAddr;
    XferBuf[2] = std::uint8_t(r);
    TransferOut();

    XferPipe = std::uint32_t(s_.CmdPipe + 128);
    XferSize = std::uint32_t(s_.ReadCount + 5);
    XferBuf.assign(XferSize, 0);
    TransferIn();
    s_.ReadStatusByte = XferBuf[0];

    ActiveForm* f = s_.activeForm;
    QLineEdit* rd = f ? f->txtRegRd(r) : nullptr;
    QLineEdit* hex = f ? f->txtRegHex(r) : nullptr;
    const QString text = Hex2(XferBuf[1]);
    if (rd) rd->setText(text);
    s_.RegReadMirror[r] = XferBuf[1];
    Shape* ind = f ? f->ShpIndrd(r) : nullptr;
    FlipActivity(ind);
    if (ind && hex && text != hex->text()) ind->setFillIndex(kLightRed);

    if (!s_.SessionOpen) {
        s_.usb().CloseDevice();
        DoEvents();
    }
    s_.TransferBusy = false;
    DoEvents();
}

void Comm::WriteRegister(int r) {
    if (!Begin(r, s_.PendingWrite)) return;
    ActiveForm* f = s_.activeForm;
    QLineEdit* hex = f ? f->txtRegHex(r) : nullptr;
    const QString entry = hex ? hex->text() : QString();
    XferPipe = std::uint32_t(s_.CmdPipe);
    XferSize = 4;
    XferBuf.assign(XferSize, 0);
    XferBuf[0] = 0;
    XferBuf[1] = s_.I2cWriteAddr;
    XferBuf[2] = std::uint8_t(r);
    // The entry is validated before it gets here; a value that still does not fit a byte
    // keeps its low eight bits rather than stopping the program.
    XferBuf[3] = std::uint8_t(HexValue(entry));
    s_.RegWriteMirror[r] = std::uint8_t(HexValue(entry));
    TransferOut();
    lastWriteUs_[std::size_t(r)] = s_.clock.Micros();
    s_.TransferBusy = false;
    DoEvents();
    FlipActivity(f ? f->ShpIndwr(r) : nullptr);
    if (!s_.SessionOpen) s_.usb().CloseDevice();
}

const std::vector<std::uint8_t>& Comm::ReadBlock(std::uint8_t reg, int count, int replyLen) {
    s_.ReadCount = count;
    XferPipe = std::uint32_t(s_.CmdPipe);
    XferSize = 3;
    XferBuf.assign(XferSize, 0);
    XferBuf[0] = std::uint8_t(count);
    XferBuf[1] = s_.I2cReadAddr;
    XferBuf[2] = reg;
    TransferOut();
    XferPipe = std::uint32_t(s_.CmdPipe + 128);
    XferSize = std::uint32_t(replyLen);
    XferBuf.assign(XferSize, 0);
    TransferIn();
    s_.ReadStatusByte = XferBuf.empty() ? 0 : XferBuf[0];
    return XferBuf;
}

void Comm::WriteBlock(std::uint8_t reg, const std::vector<std::uint8_t>& bytes) {
    XferPipe = std::uint32_t(s_.CmdPipe);
    XferSize = std::uint32_t(3 + bytes.size());
    XferBuf.assign(XferSize, 0);
    XferBuf[0] = 0;
    XferBuf[1] = s_.I2cWriteAddr;
    XferBuf[2] = reg;
    for (std::size_t i = 0; i < bytes.size(); ++i) XferBuf[3 + i] = bytes[i];
    TransferOut();
}

std::vector<std::uint8_t> Comm::Exchange(int pipe, const std::vector<std::uint8_t>& packet, int replyLen) {
    XferPipe = std::uint32_t(pipe);
    XferSize = std::uint32_t(packet.size());
    XferBuf = packet;
    TransferOut();
    if (replyLen <= 0) return {};
    XferPipe = std::uint32_t(pipe + 128);
    XferSize = std::uint32_t(replyLen);
    XferBuf.assign(XferSize, 0);
    TransferIn();
    return XferBuf;
}

}  // namespace lxm::USB_Comm
