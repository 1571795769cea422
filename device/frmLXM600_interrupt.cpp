// The multi-function form's share of the interrupt features and of recording: its two
// threshold windows in registers 3..7, the two flags in register 2 and their clear buttons,
// the polling timer, the board's interrupt line and its measurement file.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include "core/BusFree.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM600.h"
#include "device/parts/InterruptSampler.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/ThresholdPanel.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"

namespace lxm {

namespace {
// The flags belong to the chip: the image holds only the settings around them.
std::uint8_t Flags() {
    return kLxm600AlsFlag.mask | kLxm600ProxFlag.mask;
}
}  // namespace

// The ALS/IR window is 12-bit, its upper nibbles sharing register 6; the proximity window is
// 8-bit. The ALS registers go first, in register order, then the proximity ones.
ThresholdScheme MultiFunctionThresholdScheme(ThresholdBoxes als, ThresholdBoxes prox) {
    ThresholdScheme s;
    s.windows = {als, prox};
    s.formats = [] { return std::vector<ThresholdFormat>{{12, true, 0, 4095}, {8, true, 0, 255}}; };
    s.encode = [](const std::vector<ThresholdWindow>& w, const std::vector<ThresholdFormat>&) {
        const auto a = PackAls12Thresholds(w[0].low.value, w[0].high.value);
        return RegisterBytes{{5, a[0]},
                             {6, a[1]},
                             {7, a[2]},
                             {3, std::uint8_t(w[1].low.value & 0xFF)},
                             {4, std::uint8_t(w[1].high.value & 0xFF)}};
    };
    s.readRegisters = {3, 4, 5, 6, 7};
    s.decode = [](const std::map<int, std::uint8_t>& r, const std::vector<ThresholdFormat>&) {
        const auto als = UnpackAls12Thresholds({r.at(5), r.at(6), r.at(7)});
        return std::vector<std::pair<std::int32_t, std::int32_t>>{als, {r.at(3), r.at(4)}};
    };
    return s;
}

void frmLXM600::BuildParts() {
    RegisterRows rows{[this](int reg) { return txtRegHex(reg); }, [this](int reg) { cmdWrtReg_Click(reg); },
                      [this](int reg) { cmdRDReg_Click(reg); }};
    thresholds_ = std::make_unique<ThresholdPanel>(
        s_, rows,
        MultiFunctionThresholdScheme({txtILow.at(0), txtIHigh.at(0)}, {txtILow.at(2), txtIHigh.at(2)}));
    interrupts_ = std::make_unique<InterruptSampler>(s_, ShpINTexternal, ShpINt);
    TimerIPol = new QTimer(this);
    TimerIPol->setInterval(kPollMs);
    connect(TimerIPol, &QTimer::timeout, this, [this] { TimerIPol_Timer(); });
}

void frmLXM600::cmdISamples_Click() {
    interrupts_->Sample();
}

void frmLXM600::cmdSampleInternalIntrs_Click() {
    cmdRDReg_Click(2);
}

// A write of a 0 clears a flag and a 1 leaves it: each button clears its own flag only.
void frmLXM600::ClearFlag(std::uint8_t flag) {
    const std::uint8_t value = std::uint8_t((s_.RegWriteMirror[2] & ~Flags()) | (Flags() & ~flag));
    txtRegHex(2)->setText(Hex2(value));
    cmdWrtReg_Click(2);
    s_.RegWriteMirror[2] &= std::uint8_t(~Flags());
    panel_->ShowRegister(2);
}

void frmLXM600::cmdALSClear_Click() {
    ClearFlag(kLxm600AlsFlag.mask);
}

void frmLXM600::cmdPIClear_Click() {
    ClearFlag(kLxm600ProxFlag.mask);
}

void frmLXM600::chkPoll_Click() {
    if (chkPoll->isChecked())
        TimerIPol->start();
    else
        TimerIPol->stop();
}

// A tick that finds the bus taken reads once the transfer in progress has ended, never inside
// it; ticks meanwhile add no further reads. Without a board, or one not yet reopened, there is
// nothing to read, and the board has already said so.
void frmLXM600::TimerIPol_Timer() {
    if (pollWaiting_ || !s_.UsbConnected || s_.ReopenNeeded) return;
    pollWaiting_ = true;
    WhenBusFree(
        s_, this,
        [this] {
            pollWaiting_ = false;
            s_.TransferBusy = true;
            s_.comm().ReadBlock(0, 2, 3);
            s_.TransferBusy = false;
            ++polls_;
        },
        [this] { return pollWaiting_ = s_.UsbConnected; });
}

void frmLXM600::cmdStartRec_Click() {
    const auto& samples = TraceEnable1 == 255 ? run_.SampleValues : run_.SampleValues2;
    RecordRun(*frmDataRecord, run_.SampleCount, samples, txtInterval, cmdCollectData, Label18);
}

}  // namespace lxm
