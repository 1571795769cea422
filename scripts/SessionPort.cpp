#include "scripts/SessionPort.h"

#include "scripts/ScriptRunner.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"

namespace lxm::scripts {

namespace {
QString BusyText() {
    return QStringLiteral(
        "Another register transfer is under way, so the script did not go on. Run it again "
        "when that transfer has finished.");
}
}  // namespace

ScriptRunner::ScriptRunner(Session& session, RunObserver& observer)
    : owned_(std::make_unique<SessionPort>(session)), port_(*owned_), obs_(observer) {}

ScriptPort::Start SessionPort::StartRun() {
    if (!s_.UsbConnected) {
        s_.comm().NotConnected();
        return Start::NoBoard;
    }
    if (s_.comm().RefuseUnopenedBoard()) return Start::NoBoard;
    if (s_.Collecting) {
        s_.messages.MsgBox(
            QStringLiteral("A collection is running on the device form. Press \"Stop\" there, "
                           "then run the script again."));
        return Start::Refused;
    }
    if (s_.TransferBusy) {
        s_.TransferDeferred = true;
        s_.messages.MsgBox(BusyText());
        return Start::Refused;
    }
    // Like every other transfer sequence: without a session holding the board open, it is
    // opened around the run.
    openHere_ = !s_.SessionOpen;
    if (openHere_) s_.usb().OpenDevice();
    return Start::Ready;
}

void SessionPort::EndRun() {
    if (openHere_) s_.usb().CloseDevice();
    openHere_ = false;
}

// Only a sequence further down the call stack can hold the bus while a row starts, and it
// cannot go on before the run returns: waiting for it would never end.
bool SessionPort::StartRow() {
    if (s_.TransferBusy) {
        s_.TransferDeferred = true;
        s_.messages.MsgBox(BusyText());
        return false;
    }
    s_.TransferBusy = true;
    return true;
}

void SessionPort::EndRow() {
    s_.TransferBusy = false;
}

std::vector<std::uint8_t> SessionPort::Exchange(const std::vector<std::uint8_t>& packet, int replyLength,
                                                bool& failed) {
    std::vector<std::uint8_t> reply = s_.comm().Exchange(s_.CmdPipe, packet, replyLength);
    failed = failed || !s_.TransferOK;
    if (replyLength > 0) s_.ReadStatusByte = reply.empty() ? 0 : reply[0];
    return reply;
}

bool SessionPort::Connected() {
    return s_.UsbConnected;
}

void SessionPort::Tell(const QString& text) {
    s_.messages.MsgBox(text);
}

Clock& SessionPort::clock() {
    return s_.clock;
}

}  // namespace lxm::scripts
