#include "InterruptSampler.h"

#include "core/Shape.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/frmGPIO.h"

namespace lxm {

namespace {
constexpr std::uint8_t kLineHigh = 0x80;
}

InterruptSampler::InterruptSampler(Session& session, Shape* lineLamp, Shape* activityLamp)
    : s_(session), lineLamp_(lineLamp), activityLamp_(activityLamp) {}

void InterruptSampler::Sample() {
    if (!s_.UsbConnected) {
        s_.comm().NotConnected();
        return;
    }
    // Outside a run the board is held only for the moment of another click's transfer; that
    // click is not followed by a sampling point, so this one is dropped rather than kept for
    // some later run to take by surprise.
    if (s_.TransferBusy) {
        if (s_.Collecting) pending_ = true;
        return;
    }
    s_.TransferBusy = true;
    Exchange();
    s_.TransferBusy = false;
}

void InterruptSampler::Pass(bool everyPass) {
    if (!everyPass && !pending_) return;
    pending_ = false;
    // A board that went away mid-run has already said so and ended the run.
    if (!s_.UsbConnected) return;
    Exchange();
}

void InterruptSampler::Exchange() {
    s_.GpioForm().cmdGPIO_Write_Click();
    if (activityLamp_) {
        const int ok = PaletteIndex(s_.colours.ColOK);
        activityLamp_->setFillIndex(activityLamp_->hasFillIndex(ok) ? PaletteIndex(s_.colours.ColAlt) : ok);
    }
    // A failed exchange leaves zeros in the buffer, which would read as an asserted line.
    const auto& reply = s_.comm().XferBuf;
    if (!s_.TransferOK || !s_.UsbConnected || reply.empty()) return;
    lineActive_ = (reply[0] & kLineHigh) == 0;
    if (lineLamp_)
        lineLamp_->setFillIndex(PaletteIndex(lineActive_ ? s_.colours.ColFail : s_.colours.ColOff));
}

}  // namespace lxm
