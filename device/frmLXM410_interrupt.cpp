// The family form's share of the interrupt features and of recording: its threshold window in
// registers 4..7, the board's interrupt line, the sensor's flag register, its measurement file
// and the trace window.
#include <QLineEdit>
#include <QPushButton>

#include "device/frmLXM410.h"
#include "device/parts/Doco.h"
#include "device/parts/InterruptSampler.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/ThresholdPanel.h"

namespace lxm {

void frmLXM410::BuildParts() {
    RegisterRows rows{[this](int reg) { return txtRegHex(reg); }, [this](int reg) { cmdWrtReg_Click(reg); },
                      [this](int reg) { cmdRDReg_Click(reg); }};
    ThresholdBoxes boxes{txtILow.at(0), txtIHigh.at(0), txtILow.at(1), txtIHigh.at(1)};
    thresholds_ = std::make_unique<ThresholdPanel>(
        s_, rows, FamilyThresholdScheme(boxes, [this] {
            return ThresholdFormat{AdcBits, SinglePolarity, IntLimitMin, IntLimitMax};
        }));
    interrupts_ = std::make_unique<InterruptSampler>(s_, ShpINTexternal, ShpINt);
}

void frmLXM410::cmdSampleInterrupt_Click() {
    interrupts_->Sample();
}

void frmLXM410::cmdSampleIIIntr_Click() {
    cmdRDReg_Click(0);
}

void frmLXM410::cmdBrowse_Click() {
    frmDataRecord->cmdBrowse_Click();
}

void frmLXM410::cmdStartRec_Click() {
    RecordRun(*frmDataRecord, SampleCount, SampleValues, txtInterval, cmdCollectData, Label18);
}

void frmLXM410::mnuDoco_Click() {
    if (!doco_) {
        doco_ = new Doco(s_, this);
        doco_->Form_Load();
    }
    doco_->show();
    doco_->raise();
}

}  // namespace lxm
