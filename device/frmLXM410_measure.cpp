// Measurement selection, single reads and conversion on the family form.
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "acquisition/Conversion.h"
#include "acquisition/Readings.h"
#include "core/ColorLabel.h"
#include "core/Colours.h"
#include "core/ServedWait.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM410.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StripChart.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {

struct MeasureType {
    const char* frameCaption;
    const char* readingCaption;  // nullptr: Label16 keeps its caption
    const char* axis;            // nullptr: both unit words stay
    const char* axis2;
};

// "Read ALS Once " keeps its trailing blank: it is the caption the users know.
constexpr MeasureType kMeasureTypes[8] = {
    {"No Measurement:Power Down", nullptr, nullptr, nullptr},
    {"Read ALS Once ", "Lux Reading", "Lux", "AD Cnt"},
    {"Read IR Once", "ADC Reading", "IR Cnt", "IR Cnt"},
    {"Read Prox. Once", "ADC Reading", "Prox-IR Cnt", "Prox-IR Cnt"},
    {"Read Prox-IR Dual Mode", "Prox-IR", "Prox-IR", "Prox-IR"},
    {"ALS Continuous", "Lux Reading", "Lux", "AD Cnt"},
    {"IR Continuous", "ADC Reading", "IR Cnt", "IR Cnt"},
    {"Prox Continuous", "ADC Reading", "Prox-IR Cnt", "Prox-IR Cnt"},
};

constexpr std::uint8_t kDataLow = 2;

void FailLabel(ColorLabel* label) {
    label->show();
    label->setBackColor(kRgbRed);
    label->setForeColor(kRgbWhite);
    label->setText(QStringLiteral("Fail"));
}

// A pause of the sequence keeps the window served; a running collection's Stop cuts it short.
void PauseMs(Session& s, double ms) {
    const bool running = s.Collecting;
    ServedPauseMs(s, s.clock, ms, [&s, running] { return !running || s.Collecting; });
}

}  // namespace

void frmLXM410::OptMeasure_Click(int Index) {
    if (Index < 0 || Index > 7) return;
    MeasureIndex = Index;
    const MeasureType& type = kMeasureTypes[Index];

    // 1.
    FrmMeasureDetails->show();
    cmdProx_IR->hide();
    MeasureSingleShot = true;
    MeasureProx = false;
    MeasureProxIrDual = false;
    ShowLux = false;
    DualHold = false;
    MeasureClicked = false;
    DoEvents();

    // 2. Every selection starts from the plain scheme.
    OptIRMode.at(1)->setEnabled(true);
    OptIRMode.at(0)->setChecked(true);
    OptIRMode_Click(0);
    FrmProxExternal->hide();
    DoEvents();

    // 3. Command byte: the operation in bits 7..5, bits 4..1 from the image, bit 0 decided below.
    std::uint8_t command = FamilyCommand(s_.RegWriteMirror[0], Index);
    MeasureProx = Index == 3 || Index == 7;
    MeasureProxIrDual = Index == 4;
    ShowLux = Index == 1 || Index == 5;

    // 4.
    if (type.readingCaption) Label16->setText(QString::fromLatin1(type.readingCaption));
    if (type.axis) {
        plot.AxisCaption = QString::fromLatin1(type.axis);
        plot.AxisCaption2 = QString::fromLatin1(type.axis2);
    }
    if (ShowLux) {
        Label36->show();
        txtADCRaw->show();
    } else if (Index != 0 && Index != 4) {
        Label36->hide();
        txtADCRaw->hide();
    }

    // 5.
    Frame9->hide();
    Frame10->hide();
    fraINT->show();
    if (MeasureProxIrDual) {
        FrmMeasureDetails->hide();
        fraINT->hide();
        FrmProxExternal->show();
        Label16->setText(QStringLiteral("Prox-IR"));
        cmdProx_IR->show();
        Frame10->show();
        if (!CompactView) Frame9->show();
    }

    // 6. and 11. Power down writes the command byte and nothing else. The entry box gets the
    // byte as decimal text, which the write then reads as hexadecimal; the board software
    // always did so and the byte has no operation bits either way.
    if (Index == 0) {
        Frame3->setTitle(QString::fromLatin1(type.frameCaption));
        txtRegHex(0)->setText(Trim(command));
        cmdWrtReg_Click(0);
        return;
    }

    // 7.
    Frame3->setTitle(QString::fromLatin1(type.frameCaption));
    MeasureSingleShot = Index < 5;

    // 8. Register 8 is cleared for every type; a proximity type then switches to the
    // two's-complement scheme.
    OptIRMode.at(0)->setEnabled(true);
    OptIRMode.at(0)->setChecked(true);
    OptIRMode.at(1)->show();
    OptIRMode_Click(0);
    if (!MeasureProx) {
        txtRegHex(8)->setText(QStringLiteral("00"));
        cmdWrtReg_Click(8);
    } else {
        if (DeviceVariant == QLatin1String("A"))
            txtRegHex(8)->setText(QStringLiteral("01"));
        else if (DeviceVariant == QLatin1String("B"))
            txtRegHex(8)->setText(QStringLiteral("00"));
        // Both variants run with the test register cleared; the per-variant value above only
        // survives in the entry box until here.
        txtRegHex(8)->setText(QStringLiteral("00"));
        cmdWrtReg_Click(8);
        OptIRMode.at(1)->setChecked(true);
        OptIRMode_Click(1);
    }

    // 9.
    if ((MeasureProx || MeasureProxIrDual) && ProxScheme == 1) command |= 0x01;

    // 10.
    if (ShowLux) {
        OptIRMode.at(0)->setChecked(true);
        OptIRMode_Click(0);
        chart_->txtScale->setText(Trim(double(RangeTable[RangeIndex]) * (500000.0 / RangeScaleDivisor) *
                                       FullScaleCounts / FullScaleCounts));
        plot.ScaleMin = 0;
    }
    plot.ScaleMax = TruncInt32(Val(chart_->txtScale2->text()) + 1);
    const std::int32_t step = plot.ScaleMax / 10;
    plot.ScaleLabels2[0] = QStringLiteral("0");
    for (int k = 1; k <= 10; ++k) plot.ScaleLabels2[k] = Trim(double(k) * step);
    // The handlers below write register 0 from this box, so the new operation reaches the
    // chip with them.
    txtRegHex(0)->setText(Hex2(command));
    Label9->setText(MeasureSingleShot ? QStringLiteral("Delay Command to Sample")
                                      : QStringLiteral("Delay Between Samples"));
    for (int i = 0; i < 4; ++i)
        if (OptITime.at(i)->isChecked()) OptITime_Click(i);
    for (int i = 0; i < 4; ++i)
        if (OptGain.at(i)->isChecked()) OptGain_Click(i);
    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
    cmdScale_Click();
}

void frmLXM410::OptMeasure_GotFocus(int /*Index*/) {
    MeasureClicked = true;
    DoEvents();
}

std::int32_t frmLXM410::ReadDataRegisters() {
    const std::vector<std::uint8_t>& reply = s_.comm().ReadBlock(kDataLow, 2, 3);
    LastLow = reply.size() > 1 ? reply[1] : 0;
    LastHigh = reply.size() > 2 ? reply[2] : 0;
    LastNegative = 1;

    const SignedReading r = InterpretData(LastLow, LastHigh, MeasureProx, ProxScheme, AdcBits, AdcCountMax);
    if (r.signedBranch) {
        SignThreshold = r.signThreshold;
        SignMax = r.signMax;
        LastNegative = r.lastNegative;
    }
    chart_->SetSwatch(SwatchRed(r.value, r.signedBranch, FullScaleCounts), !s_.Collecting);

    if (!LblCommTest()->isHidden()) LblCommTest()->hide();
    if (s_.ReadStatusByte != 2) FailLabel(LblCommTest());
    return r.value;
}

double frmLXM410::ConvertToLux(double counts, int rangeIndex) const {
    return lxm::ConvertToLux(counts, RangeTable[rangeIndex < 0 ? RangeIndex : rangeIndex], RangeScaleDivisor,
                             FullScaleCounts);
}

void frmLXM410::cmdRead_ADC_Click() {
    // A read asked for while another transfer holds the bus is left to the collection loop's
    // register refresh, which reads both data registers into the same boxes.
    panel_->ReadRows(kDataLow, 2);
}

void frmLXM410::cmdProx_IR_Click() {
    // 1.
    if (s_.comm().RefuseUnopenedBoard()) return;
    IntervalDisplayMs = Val(txtSampling_Delay->text());
    LoopDelayMs = Val(txtPLoopDelay->text());
    int mode = 0;
    for (int i = 0; i < 3; ++i)
        if (OptProxE.at(i)->isChecked()) mode = i;

    // 2.
    s_.TransferBusy = true;
    if (!s_.SessionOpen) {
        s_.usb().OpenDevice();
        DoEvents();
    }

    // 3. to 5.
    DualModeReading previous;
    previous.irBefore = IrBefore;
    previous.irAfter = IrAfter;
    DualModeBus bus;
    bus.writeCommand = [this](std::uint8_t command) { s_.comm().WriteBlock(0, {command}); };
    bus.pause = [this](double ms) { PauseMs(s_, ms); };
    bus.readData = [this] {
        ReadDataRegisters();
        return DataBytes{LastLow, LastHigh, s_.ReadStatusByte == 2};
    };
    bus.micros = [this] { return s_.clock.Micros(); };
    const AmbientIrMode irMode = AmbientIrMode(mode);
    const DualModeReading r =
        TakeDualModeReading(s_.RegWriteMirror[0], ProxScheme, irMode, IntervalDisplayMs, AdcBits, FullScaleCounts,
                            previous, bus);
    DualStatus = r.status();
    IrMsb = r.irMsb;
    IrLsb = r.irLsb;
    ProxMsb = r.proxMsb;
    ProxLsb = r.proxLsb;
    ProxCountSigned = r.proxCountSigned;
    IrBefore = r.irBefore;
    IrAfter = r.irAfter;
    if (irMode != AmbientIrMode::After) lblIR1.at(0)->setText(Trim(IrBefore));
    if (irMode != AmbientIrMode::Before) lblIR1.at(1)->setText(Trim(IrAfter));

    // 6.
    txtProx_IR.at(0)->setText(Hex2(IrMsb));
    txtProx_IR.at(1)->setText(Hex2(IrLsb));
    txtProx_IR.at(2)->setText(Hex2(ProxMsb));
    txtProx_IR.at(3)->setText(Hex2(ProxLsb));

    // 7.
    AmbientIr = r.ambientIr;
    lblIR1.at(2)->setText(Trim(AmbientIr));

    // 8. and 9.
    ProxCount = r.proxCount;
    const ProxMinusIrResult& result = r.difference;
    ProxMinusIr = result.proxMinusIr;
    txtProx_IR.at(4)->setText(Trim(ProxCount));
    txtProx_IR.at(5)->setText(Trim(AmbientIr));
    txtProx_IR.at(6)->setText(result.text());
    const int ok = PaletteIndex(s_.colours.ColOK);
    const int fail = PaletteIndex(s_.colours.ColFail);
    ShpOVRange.at(0)->setFillIndex(result.proxSaturated ? fail : ok);
    ShpOVRange.at(1)->setFillIndex(result.irSaturated ? fail : ok);
    ShpOVRange.at(2)->setFillIndex(result.nonNegative() ? ok : PaletteIndex(s_.colours.ColOff));

    // 10.
    if (!s_.SessionOpen) s_.usb().CloseDevice();
    s_.TransferBusy = false;
    PauseMs(s_, LoopDelayMs);
}

void frmLXM410::cmdProx_IR_GotFocus() {
    Frame10->show();
}

}  // namespace lxm
