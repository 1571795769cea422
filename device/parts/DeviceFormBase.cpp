#include "device/parts/DeviceFormBase.h"

#include <QCloseEvent>
#include <QLineEdit>

#include "core/Yield.h"
#include "device/parts/Collection.h"
#include "device/parts/InterruptSampler.h"
#include "device/parts/PaintPacer.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StatusStrip.h"
#include "device/parts/ThresholdPanel.h"
#include "transport/Session.h"

namespace lxm {

DeviceFormBase::DeviceFormBase(Session& session, QWidget* parent) : QWidget(parent), s_(session) {
    new PaintPacer(this);
}

void DeviceFormBase::ReleasePanelHandlers() {
    if (!panel_) return;
    panel_->onRead = nullptr;
    panel_->onWrite = nullptr;
    panel_->onEnter = nullptr;
    panel_->onLostFocus = nullptr;
}

DeviceFormBase::~DeviceFormBase() {
    s_.Collecting = false;
    s_.FormGone(this);
}

Shape* DeviceFormBase::ShpAttach() {
    return strip_ ? strip_->ShpAttach() : nullptr;
}
Shape* DeviceFormBase::Shp_USB_Transfer() {
    return strip_ ? strip_->Shp_USB_Transfer() : nullptr;
}
ColorLabel* DeviceFormBase::LblCommTest() {
    return strip_ ? strip_->LblCommTest() : nullptr;
}
QRadioButton* DeviceFormBase::OptMode(int index) {
    return strip_ ? strip_->OptMode(index) : nullptr;
}
QLineEdit* DeviceFormBase::txtRegRd(int reg) {
    return panel_ ? panel_->txtRegRd(reg) : nullptr;
}
QLineEdit* DeviceFormBase::txtRegHex(int reg) {
    return panel_ ? panel_->txtRegHex(reg) : nullptr;
}
Shape* DeviceFormBase::ShpIndrd(int reg) {
    return panel_ ? panel_->ShpIndrd(reg) : nullptr;
}
Shape* DeviceFormBase::ShpIndwr(int reg) {
    return panel_ ? panel_->ShpIndwr(reg) : nullptr;
}

void DeviceFormBase::Form_GotFocus() {
    s_.activeForm = this;
    DoEvents();
}

void DeviceFormBase::cmdRDReg_Click(int Index) {
    panel_->Read(Index);
}

void DeviceFormBase::cmdWrtReg_Click(int Index) {
    panel_->Write(Index);
}

void DeviceFormBase::cmdReadAllRegs_Click() {
    panel_->ReadAll();
}

void DeviceFormBase::OptMode_Click(int Index) {
    strip_->OptMode_Click(Index, [this] { cmdRDReg_Click(0); });
}

void DeviceFormBase::cmdWrtILimits_Click() {
    thresholds_->Write();
}

void DeviceFormBase::cmdReadILimits_Click() {
    thresholds_->Read();
}

bool DeviceFormBase::LimitsReadPending() const {
    return thresholds_->readPending();
}

bool DeviceFormBase::IntLineActive() const {
    return interrupts_->IntLineActive();
}

void DeviceFormBase::WireRefresh(PacedCollection& loop, std::function<void()> afterward) {
    loop.hooks.readRow = [this](int n) { cmdRDReg_Click(n); };
    loop.hooks.writeRow = [this](int n) { cmdWrtReg_Click(n); };
    loop.hooks.afterRefresh = [this, afterward = std::move(afterward)] {
        if (LimitsReadPending()) cmdReadILimits_Click();
        s_.TransferBusy = true;
        afterward();
    };
}

void DeviceFormBase::WireLog(PacedCollection& loop, RecordFrame& frame,
                             std::function<void(SampleLogHeader&)> describe,
                             std::function<LoggedSample()> sample) {
    logged_ = &loop;
    logFrame_ = &frame;
    loop.hooks.logPath = [&frame] { return frame.RunLogPath(); };
    frame.WatchLog([&loop]() -> const SampleLog& { return loop.log(); });
    loop.hooks.logHeader = [this, describe = std::move(describe)] {
        SampleLogHeader h;
        h.sensor = QString::fromStdString(s_.SelectedType);
        // As the register panel shows them once Start has written them.
        h.reg0 = std::uint8_t(txtRegHex(0)->text().trimmed().toUInt(nullptr, 16));
        h.reg1 = std::uint8_t(txtRegHex(1)->text().trimmed().toUInt(nullptr, 16));
        describe(h);
        return h;
    };
    loop.hooks.logSample = std::move(sample);
}

const SampleLog& DeviceFormBase::sampleLog() const {
    return logged_->log();
}

void DeviceFormBase::RecordRun(RecordFrame& frame, const std::int32_t& sampleCount,
                               const std::vector<double>& samples, QLineEdit* interval, QPushButton* collect,
                               QLabel* result) {
    MeasurementSource source;
    source.sampleCount = [&sampleCount] { return sampleCount; };
    source.samples = [&samples]() -> const std::vector<double>& { return samples; };
    source.header = [this, interval] {
        MeasurementHeader h;
        h.reg0 = txtRegHex(0)->text();
        h.reg1 = txtRegHex(1)->text();
        h.interval = interval->text();
        return h;
    };
    source.collectButton = collect;
    source.result = result;
    WriteMeasurements(s_, frame, source);
}

void DeviceFormBase::changeEvent(QEvent* e) {
    if (e->type() == QEvent::ActivationChange && isActiveWindow()) Form_GotFocus();
    QWidget::changeEvent(e);
}

void DeviceFormBase::closeEvent(QCloseEvent* e) {
    s_.Collecting = false;
    DoEvents();  // Form_QueryUnload
    Form_Unload();
    e->accept();
    if (onClosed) onClosed();
}

}  // namespace lxm
