// The option controls of the family form: each array is one bit field of register 0
// (command I) or register 1 (command II). A click changes the field in the register image,
// shows the byte, writes it, and updates what measurement and plotting derive from it.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM410.h"
#include "transport/Session.h"
#include "transport/frmGPIO.h"

namespace lxm {

std::vector<RegisterName> frmLXM410::RegisterNames() {
    // A register no control sets: a byte as a whole.
    const auto Plain = [](const char* name, const char* shortName) {
        return RegisterName{QLatin1String(name), QLatin1String(shortName), {}};
    };
    return {{QStringLiteral("Command I"),
             QStringLiteral("Cmd I"),
             {{"operation", kFamilyOperation},
              {"timing", kFamilyExtTime},
              {"ADC / timer", kFamilyMeasMode},
              {"interrupt flag", kFamilyIntFlag},
              {"persistence", kFamilyPersistence}}},
            {QStringLiteral("Command II"),
             QStringLiteral("Cmd II"),
             {{"scheme", kFamilyScheme},
              {"modulation", kFamilyModulation},
              {"IR drive", kFamilyDrive},
              {"resolution", kFamilyResolution},
              {"range", kFamilyRange}}},
            // The data and the thresholds, low byte first; the last row no control uses.
            Plain("Data LSB", "Data L"),
            Plain("Data MSB", "Data H"),
            Plain("Low threshold LSB", "Low L"),
            Plain("Low threshold MSB", "Low H"),
            Plain("High threshold LSB", "High L"),
            Plain("High threshold MSB", "High H"),
            Plain("Not used by the form", "")};
}

void frmLXM410::OptGain_Click(int Index) {
    static constexpr int kKLux[4] = {1, 4, 16, 64};
    kFamilyRange.Apply(s_.RegWriteMirror.data(), Index);
    RangeKLux = kKLux[Index];
    GainIndex = Index;
    RangeIndex = Index;
    DoEvents();
    ShowRegister(1);
    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
    if (!ShowLux) {
        chart_->txtScale2->setText(Trim(IntLimitMax));
        chart_->txtScale->setText(Trim(IntLimitMax));
        chart_->txtScaleMin2->setText(Trim(IntLimitMin));
        chart_->txtScaleMin->setText(Trim(IntLimitMin));
    } else {
        chart_->txtScale->setText(Trim(RangeTable[RangeIndex]));
        chart_->txtScale2->setText(Trim(IntLimitMax));
        chart_->txtScaleMin2->setText(Trim(IntLimitMin));
    }
    cmdScale_Click();
}

void frmLXM410::OptITime_Click(int Index) {
    SampleDelayMs = 100;
    const Resolution& r = kFamilyResolutions[std::size_t(Index)];
    kFamilyResolution.Apply(s_.RegWriteMirror.data(), Index);
    AdcBits = r.bits;
    lblIlimitsformat.at(1)->setText(QString::fromLatin1(r.caption));
    AdcHalfScale = r.halfScale;
    AdcCountMax = r.countMax;
    FullScaleCounts = r.fullScale;
    if (SinglePolarity) {
        IntLimitMax = r.unsignedMax;
        IntLimitMin = 0;
        lblIlimitsformat.at(0)->setText(QStringLiteral("Single Polarity"));
    } else {
        IntLimitMax = (1 << r.bits) / 2;
        // Minus half the full scale would be the natural floor; the narrow fixed window is
        // what the limit check is meant to accept.
        IntLimitMin = -IntLimitMax;
        IntLimitMin = r.signedMin;
        lblIlimitsformat.at(0)->setText(QStringLiteral("2s Complement"));
    }
    SampleDelayMs = r.intervalMs;
    if (Index == 0 || Index == 1) AdcModeSelected = true;
    if (Index == 0 && !s_.Collecting) {
        MeasModeAdc = true;
        MeasModeTimer = false;
        cmdCollectData->setEnabled(true);
    }

    if (ProxScheme == 1) plot.ScaleLabels2 = plot.ScaleLabels;
    DoEvents();
    ShowRegister(1);
    lblIlimitsformat.at(2)->setText(Trim(IntLimitMax) + QStringLiteral(" Max"));
    lblIlimitsformat.at(3)->setText(Trim(IntLimitMin) + QStringLiteral(" Min"));
    chart_->txtScale->setText(Trim(IntLimitMax));
    chart_->txtScale2->setText(Trim(IntLimitMax));
    chart_->txtScaleMin->setText(Trim(IntLimitMin));
    chart_->txtScaleMin2->setText(Trim(IntLimitMin));
    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
    txtInterval->setText(Trim(SampleDelayMs));
    txtSampling_Delay->setText(Trim(SampleDelayMs));
    chart_->txtScale2->setText(Trim(FullScaleCounts));
    if (ShowLux)
        chart_->txtScale->setText(Trim(double(RangeTable[RangeIndex]) * FullScaleCounts / FullScaleCounts));
    cmdScale_Click();
}

void frmLXM410::OptIRMode_Click(int Index) {
    auto rightLabels = [this] {
        const std::int32_t step = plot.ScaleMax / 10;
        plot.ScaleLabels2[0] = QStringLiteral("0");
        for (int k = 1; k <= 10; ++k) plot.ScaleLabels2[k] = Trim(k * step);
    };
    if (Index == 0) {
        SetField(s_.RegWriteMirror, kFamilyScheme, 0);
        ProxScheme = 0;
        chart_->txtScale->setText(Trim(FullScaleCounts));
        chart_->txtScale2->setText(Trim(FullScaleCounts));
        chart_->txtScaleMin->setText(QStringLiteral("0000"));
        chart_->txtScaleMin2->setText(QStringLiteral("0"));
        plot.ScaleMax = TruncInt32(Val(chart_->txtScale2->text()) + 1);
        plot.ScaleMin = 0;
        rightLabels();
        lblIlimitsformat.at(0)->setText(QStringLiteral("Single Polarity"));
        SinglePolarity = true;
    } else {
        SetField(s_.RegWriteMirror, kFamilyScheme, kFamilyScheme.mask);
        ProxScheme = 1;
        SinglePolarity = false;
        chart_->txtScale->setText(Trim(FullScaleCounts / 2));
        chart_->txtScale2->setText(Trim(FullScaleCounts / 2));
        chart_->txtScaleMin->setText(QStringLiteral("-100"));
        chart_->txtScaleMin2->setText(QStringLiteral("-100"));
        plot.ScaleMax = TruncInt32(Val(chart_->txtScale2->text()) + 1);
        plot.ScaleMin = -100;
        lblIlimitsformat.at(0)->setText(QStringLiteral("2s Complement"));
    }
    DoEvents();
    cmdScale_Click();
    ShowRegister(1);
    cmdWrtReg_Click(1);
}

void frmLXM410::OptMeasMode_Click(int Index) {
    if (Index == 0) {
        SetField(s_.RegWriteMirror, kFamilyMeasMode, 0);
        AdcModeSelected = true;
        if (!s_.Collecting) {
            MeasModeAdc = true;
            MeasModeTimer = false;
            cmdCollectData->setEnabled(true);
        }
    } else {
        SetField(s_.RegWriteMirror, kFamilyMeasMode, kFamilyMeasMode.mask);
        AdcModeSelected = false;
        if (auto it = OptMeasMode.find(1); it != OptMeasMode.end()) it->second->setEnabled(true);
        if (!s_.Collecting) {
            MeasModeAdc = false;
            MeasModeTimer = true;
            cmdCollectData->setEnabled(false);
        }
    }
    DoEvents();
    ShowRegister(0);
    cmdWrtReg_Click(0);
}

void frmLXM410::OptExtTime_Click(int Index) {
    if (Index == 0) {
        SetField(s_.RegWriteMirror, kFamilyExtTime, 0);
        ExternalTiming = false;
        if (auto it = OptMeasMode.find(1); it != OptMeasMode.end()) it->second->setEnabled(false);
        OptMeasMode.at(0)->setChecked(true);
        OptMeasMode_Click(0);
        AdcModeSelected = true;
    } else {
        SetField(s_.RegWriteMirror, kFamilyExtTime, kFamilyExtTime.mask);
        AdcModeSelected = false;
        if (auto it = OptMeasMode.find(1); it != OptMeasMode.end()) it->second->setEnabled(true);
        ExternalTiming = true;
    }
    if (!s_.Collecting) {
        MeasModeAdc = true;
        MeasModeTimer = false;
        cmdCollectData->setEnabled(true);
    }
    DoEvents();
    ShowRegister(0);
}

void frmLXM410::optINTP_Click(int Index) {
    kFamilyPersistence.Apply(s_.RegWriteMirror.data(), Index);
    DriveIndex = Index;
    DoEvents();
    ShowRegister(0);
    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
}

void frmLXM410::OptPSrc_Click(int Index) {
    SetField(s_.RegWriteMirror[1], kFamilyDriveMask, FamilyDriveBits(Index));
    DriveIndex = Index;
    DoEvents();
    ShowRegister(1);
    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
}

void frmLXM410::OptMFreq_Click(int Index) {
    kFamilyModulation.Apply(s_.RegWriteMirror.data(), Index, Index == kFamilyModulation.member);
    DoEvents();
    ShowRegister(1);
    cmdWrtReg_Click(1);
    cmdWrtReg_Click(0);
}

void frmLXM410::OptProxE_Click(int /*Index*/) {
    for (int i = 0; i < 3; ++i) lblIR1.at(i)->setText(QStringLiteral("------"));
}

void frmLXM410::ChKLed_Click() {
    s_.GpioImage[2] = ChKLed->isChecked() ? 0x40 : 0;
    s_.GpioImage[0] = 0x40;
    s_.GpioForm().cmdGPIO_Write_Click();
}

}  // namespace lxm
