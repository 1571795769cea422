#include "USB_Comm.h"

#include <QLineEdit>
#include <QRadioButton>

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
// A late reply is drained with this much shorter time-out before the next command goes out.
constexpr std::uint32_t kDrainTimeoutMs = 20;
constexpr int kMaxDrain = 4;
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
    Shape* lamp = nullptr;
    if (s_.activeForm) lamp = in ? s_.activeForm->Shp_USB_Transfer() : s_.activeForm->ShpAttach();
    if (s_.LastStatus != kUsbOk) {
        s_.TransferOK = false;
        if (lamp) lamp->setFillIndex(kLightRed);
        if (in && s_.LastStatus == kUsbTimeout) stale_[XferPipe & 0xFF] = true;
    } else {
        if (lamp) lamp->setFillIndex(kLightGreen);
        s_.TransferOK = true;
    }
}

// The board answers every read command with exactly one reply. When a reply misses the host's
// time-out it is still delivered later, to whichever IN comes next, and every following read
// would show the reply of the read before it. So before the next command after a time-out, the
// IN pipe is read with a short time-out until it is empty; whatever comes is the late reply and
// is thrown away. The lamps are left alone: this is housekeeping, not one of the user's transfers.
void Comm::DrainStaleReplies(std::uint32_t inPipe) {
    if (!stale_[inPipe & 0xFF]) return;
    stale_[inPipe & 0xFF] = false;
    std::vector<std::uint8_t> scratch(64);
    for (int i = 0; i < kMaxDrain; ++i) {
        std::uint32_t done = 0;
        std::uint32_t st = s_.driver.Transfer(s_.usb().deviceHandle, inPipe, UsbDir::In, scratch.data(),
                                              std::uint32_t(scratch.size()), &done, kDrainTimeoutMs);
        if (st != kUsbOk) break;
    }
}

void Comm::TransferOut() {
    DrainStaleReplies(XferPipe + 128);
    Transfer(false);
}

void Comm::TransferIn() {
    Transfer(true);
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
