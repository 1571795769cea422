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

Comm::Comm(Session& session) : s_(session), link_(session.driver) {}

void Comm::Report(bool in, bool ok) {
    Shape* lamp = nullptr;
    if (s_.activeForm) lamp = in ? s_.activeForm->Shp_USB_Transfer() : s_.activeForm->ShpAttach();
    s_.TransferOK = ok;
    if (lamp) lamp->setFillIndex(ok ? kLightGreen : kLightRed);
}

// Replies are kept in step with their commands by the link; the lamps show how the caller's
// own transfers went.
void Comm::TransferOut() {
    if (XferBuf.size() < XferSize) XferBuf.resize(XferSize, 0);
    const auto r = link_.Out(s_.usb().deviceHandle, XferPipe, XferBuf.data(), XferSize, &XferDone, timeoutMs);
    s_.LastStatus = r.status;
    Report(false, r.ok);
}

void Comm::TransferIn() {
    if (XferBuf.size() < XferSize) XferBuf.resize(XferSize, 0);
    const auto r = link_.In(s_.usb().deviceHandle, XferPipe, XferBuf.data(), XferSize, &XferDone, timeoutMs);
    if (r.made) s_.LastStatus = r.status;
    Report(true, r.ok);
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
    XferBuf = CommandPacket(1, s_.I2cReadAddr, std::uint8_t(r));
    XferSize = std::uint32_t(XferBuf.size());
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
    // The entry is validated before it gets here; a value that still does not fit a byte
    // keeps its low eight bits rather than stopping the program.
    XferBuf = CommandPacket(0, s_.I2cWriteAddr, std::uint8_t(r), {std::uint8_t(HexValue(entry))});
    XferSize = std::uint32_t(XferBuf.size());
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
    XferBuf = CommandPacket(std::uint8_t(count), s_.I2cReadAddr, reg);
    XferSize = std::uint32_t(XferBuf.size());
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
    XferBuf = CommandPacket(0, s_.I2cWriteAddr, reg, bytes);
    XferSize = std::uint32_t(XferBuf.size());
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
