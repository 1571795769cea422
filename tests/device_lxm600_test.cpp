// The multi-function form driven as a user drives it, checked on the wire log of the simulated
// board and on the form's controls.
#include <gtest/gtest.h>
#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "acquisition/Conversion.h"
#include "acquisition/PictureBox.h"
#include "acquisition/Thresholds.h"
#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "core/VbText.h"
#include "device/frmLXM600.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RecordFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device/parts/StatusStrip.h"
#include "device/parts/StripChart.h"
#include "device_form_fixture.h"

namespace lxm {
namespace {

using test::BoardFixture;

const QString kDisconnected = "Device has been disconnected, reconnect and re-initialize all registers";

class MultiFunctionForm : public test::Lxm600FormFixture {
protected:

    // I2C packets the program sent, as (command byte, register, value or -1).
    struct Sent {
        int command, reg, value;
        bool operator==(const Sent&) const = default;
    };
    std::vector<Sent> Sends() {
        std::vector<Sent> out;
        for (auto& p : wire())
            if (p.dir == sim::WireDir::Out && p.endpoint == 2 && p.bytes.size() >= 3)
                out.push_back({p.bytes[0], p.bytes[2], p.bytes.size() > 3 ? int(p.bytes[3]) : -1});
        return out;
    }
    // The data bytes of the last I2C reply.
    std::vector<std::uint8_t> LastReply() {
        for (auto it = wire().rbegin(); it != wire().rend(); ++it)
            if (it->dir == sim::WireDir::In && it->endpoint == 0x82) return it->bytes;
        return {};
    }
    void Type(QLineEdit* box, const QString& text) {
        box->setText(text);
        form->txtRegHex_KeyPress(form->panel().txtRegHex(0) == box ? 0 : RowOf(box), 13);
    }
    int RowOf(QLineEdit* box) {
        for (int i = 0; i < frmLXM600::kRegisterRows; ++i)
            if (form->panel().txtRegHex(i) == box) return i;
        return -1;
    }
    void Click(CtlArray<QRadioButton>& arr, int index) {
        arr.at(index)->setChecked(true);
        emit arr.at(index)->clicked(true);
    }
    int Collect(int passes, const std::function<void(int)>& perPass = {}) {
        int n = 0;
        form->collection().onPass = [&] {
            ++n;
            if (perPass) perPass(n);
            if (n >= passes) form->cmdStopData_Click();
        };
        form->cmdCollectData_Click();
        form->collection().onPass = nullptr;
        return n;
    }
    bool Shown(QWidget* w) { return !w->isHidden(); }
    sim::LightScene& scene() { return board.scene(); }
};

TEST_F(MultiFunctionForm, LoadSetsTheImageAndCaptionsAndSendsNothing) {
    EXPECT_EQ(form->windowTitle(), "LXM600  Multi-Function  Sensor Evaluation Software");
    const int image[16] = {0xA0, 0, 0, 0, 0xFF, 0, 0xF0, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0};
    for (int r = 0; r < 16; ++r) {
        EXPECT_EQ(session.RegWriteMirror[r], image[r]) << r;
        EXPECT_EQ(form->txtRegHex(r)->text(), QString("%1").arg(image[r], 2, 16, QChar('0')).toUpper()) << r;
    }
    EXPECT_EQ(form->txtRegHex(16), nullptr);
    EXPECT_EQ(form->txtRegHex(3)->toolTip(), "Enter Hex value, Press Enter");
    EXPECT_EQ(form->txtRegRd(3)->toolTip(), "Rd Hex Value");
    EXPECT_EQ(form->panel().cmdWrtReg(3)->toolTip(), "Click to Write to Register  3");
    EXPECT_EQ(form->panel().cmdRDReg(15)->toolTip(), "Click to Read from Register  15");
    EXPECT_EQ(form->txtInterval->text(), "50");
    EXPECT_EQ(form->collection().IntervalMs, 50);
    EXPECT_EQ(form->RangeTable[0], 2000);
    EXPECT_EQ(form->RangeTable[1], 125);
    EXPECT_EQ(form->lblIlimitsformat.at(0)->text(), "ALS_IR Single Polarity");
    EXPECT_EQ(form->lblIlimitsformat.at(2)->text(), "4095 Max");
    EXPECT_EQ(form->lblIlimitsformat.at(4)->text(), "Prox Single Polarity");
    EXPECT_EQ(form->lblIlimitsformat.at(5)->text(), "8 Bits");
    EXPECT_EQ(form->lblIlimitsformat.at(6)->text(), "255 Max");
    EXPECT_EQ(form->chart().txtScale->text(), "4095");
    EXPECT_EQ(form->cmdCollectData->text(), "Collect Data Graphical Real Time Data");
    EXPECT_EQ(session.activeForm, form.get());
    // The image is only shown: the user's first action is the first packet.
    form->Form_Load();
    EXPECT_TRUE(Sends().empty());
}

TEST_F(MultiFunctionForm, EveryControlSetsItsOwnFieldAndWritesItsRegisterOnce) {
    struct Case {
        const char* what;
        std::function<void()> act;
        int reg, value;
    };
    // Each step starts from the register as the step before left it, so a control that
    // touched a neighbour's bits would show up here.
    const std::vector<Case> cases = {
        {"sleep Continuous", [&] { Click(form->OptIRSleep, 7); }, 1, 0x70},
        {"sleep 200", [&] { Click(form->OptIRSleep, 2); }, 1, 0x20},
        {"2000 Lux", [&] { Click(form->OptALSRange, 0); }, 1, 0x22},
        {"IR", [&] { Click(form->OptMMode, 1); }, 1, 0x23},
        {"ALS / IR Enable", [&] { form->chkALSEnable->click(); }, 1, 0x27},
        {"200mA", [&] { Click(form->OptProxDr, 1); }, 1, 0x2F},
        {"Prox Enable", [&] { form->ChkPEnable->click(); }, 1, 0xAF},
        {"125 Lux", [&] { Click(form->OptALSRange, 1); }, 1, 0xAD},
        {"ALS", [&] { Click(form->OptMMode, 0); }, 1, 0xAC},
        {"100mA", [&] { Click(form->OptProxDr, 0); }, 1, 0xA4},
        {"And", [&] { Click(form->OptEPIN, 1); }, 2, 0x01},
        {"ALS persistence 16", [&] { Click(form->optINTPALS, 3); }, 2, 0x07},
        {"prox persistence 8", [&] { Click(form->optINTP, 2); }, 2, 0x47},
        {"ALS persistence 4", [&] { Click(form->optINTPALS, 1); }, 2, 0x43},
        {"Or", [&] { Click(form->OptEPIN, 0); }, 2, 0x42},
        {"Prox disable", [&] { form->ChkPEnable->click(); }, 1, 0x24},
    };
    for (const Case& c : cases) {
        wire().clear();
        c.act();
        EXPECT_EQ(Sends(), (std::vector<Sent>{{0, c.reg, c.value}})) << c.what;
        EXPECT_EQ(form->txtRegHex(c.reg)->text(), QString("%1").arg(c.value, 2, 16, QChar('0')).toUpper())
            << c.what;
    }
    EXPECT_EQ(form->RangeIndex, 0) << "the range control changes only the register";
}

TEST_F(MultiFunctionForm, EnterWritesTheRowAndReadsItStraightBack) {
    Type(form->txtRegHex(5), "3c");
    EXPECT_EQ(Sends(), (std::vector<Sent>{{0, 5, 0x3C}, {1, 5, -1}}));
    EXPECT_EQ(form->txtRegHex(5)->text(), "3C");

    // Only the first two characters count; what is left is written as it stands.
    wire().clear();
    Type(form->txtRegHex(12), "1FF");
    EXPECT_EQ(form->txtRegHex(12)->text(), "1F");
    EXPECT_EQ(Sends(), (std::vector<Sent>{{0, 12, 0x1F}, {1, 12, -1}}));

    // The data registers follow the same rule.
    wire().clear();
    Type(form->txtRegHex(9), "07");
    EXPECT_EQ(Sends(), (std::vector<Sent>{{0, 9, 0x07}, {1, 9, -1}}));
}

TEST_F(MultiFunctionForm, ReadAllReadsSixteenRowsAndReadIdShowsRegisterZero) {
    form->panel().cmdReadAllRegs()->click();
    std::vector<int> reads;
    for (const Sent& s : Sends())
        if (s.command == 1) reads.push_back(s.reg);
    std::vector<int> expected(16);
    for (int i = 0; i < 16; ++i) expected[i] = i;
    EXPECT_EQ(reads, expected);

    wire().clear();
    form->cmdReadID->click();
    EXPECT_EQ(Sends(), (std::vector<Sent>{{1, 0, -1}}));
    EXPECT_EQ(form->lblID->text(), form->txtRegRd(0)->text());
    EXPECT_FALSE(form->lblID->text().isEmpty());
}

TEST_F(MultiFunctionForm, BitEditorWeighsTheFirstBoxAsBitSeven) {
    for (int k = 0; k < 8; ++k) form->ChkReg1Bit.at(k)->setChecked(k == 0 || k == 6);
    form->cmdUpdateReg_Click(13);
    EXPECT_EQ(Sends(), (std::vector<Sent>{{0, 13, 0x82}}));
    EXPECT_EQ(form->lblRegDatax->text(), "82");
    EXPECT_EQ(form->txtRegHex(13)->text(), "82");

    // Reading sets each box from the bit of its weight.
    form->txtRegHex(1)->setText("05");
    form->cmdWrtReg_Click(1);
    wire().clear();
    form->cmdUpdateRead_Click(1);
    ASSERT_EQ(Sends(), (std::vector<Sent>{{1, 1, -1}}));
    const int read = session.RegReadMirror[1];
    for (int k = 0; k < 8; ++k) EXPECT_EQ(form->ChkReg1Bit.at(k)->isChecked(), bool(read & (128 >> k))) << k;
    EXPECT_EQ(form->lblRegDatax->text(), form->txtRegRd(1)->text());
}

TEST_F(MultiFunctionForm, ReadAdReadsThreeBytesFromRegisterEight) {
    form->cmdReadAd_Click();
    EXPECT_EQ(Sends(), (std::vector<Sent>{{3, 8, -1}}));
    const auto reply = LastReply();
    ASSERT_GE(reply.size(), 4u);
    EXPECT_EQ(form->ProxCount600, reply[1]);
    EXPECT_EQ(form->AlsIrCount600, reply[2] + reply[3] * 256);
    EXPECT_EQ(form->lblMeasurements.at(1)->text(), QString::number(form->ProxCount600));
    EXPECT_EQ(form->lblMeasurements.at(2)->text(), QString::number(form->AlsIrCount600));
    for (int r = 8; r <= 10; ++r)
        EXPECT_EQ(form->txtRegRd(r)->text(), QString("%1").arg(reply[r - 7], 2, 16, QChar('0')).toUpper());

    // Without a board: the "Fail" label and one message, nothing on the wire.
    driver.Unplug();
    Pump();
    messages.clear();
    wire().clear();
    form->cmdReadAd_Click();
    EXPECT_TRUE(Sends().empty());
    EXPECT_EQ(messages.texts, QStringList{"USB is not Connected"});
    EXPECT_EQ(form->LblCommTest()->text(), "Fail");
}

TEST_F(MultiFunctionForm, ABusyBusMarksTheReadsAndSaysItIsWaiting) {
    session.TransferBusy = true;
    form->cmdReadAd_Click();
    EXPECT_EQ(form->lblUSBStatis->text(), "Rd_AD Waiting");
    form->cmdRDReg_Click(4);
    EXPECT_EQ(form->lblUSBStatis->text(), "Read_Reg Waiting");
    form->cmdWrtReg_Click(4);
    EXPECT_EQ(form->lblUSBStatis->text(), "Wrt_Reg Waiting");
    EXPECT_TRUE(Sends().empty());
    EXPECT_TRUE(session.PendingWrite[4]);
    session.TransferBusy = false;
}

TEST_F(MultiFunctionForm, OptGraphChoosesTheTraceThatCollects) {
    EXPECT_EQ(form->Label16->text(), "Proximity");
    int running = 0;
    Collect(14, [&](int) {
        running += form->cmdCollectData->text() ==
                   "Real Time data display is executing, Click -Stop Real Time- to End";
    });
    EXPECT_EQ(running, 14);
    const auto& run = form->collection();
    EXPECT_EQ(run.SampleCount, 14);
    for (int i = 0; i < 14; ++i) EXPECT_EQ(run.SampleValues2[i], 1.0) << "the other trace stays idle";
    EXPECT_EQ(run.SampleValues[13], form->ProxCount600);
    EXPECT_EQ(form->txtReading->text(), FormatReading(form->ProxCount600, false, 0));
    EXPECT_EQ(form->cmdCollectData->text(), "Collect Data Graphical Real Time Data");
    EXPECT_EQ(form->Label18->text(), "Data Collection Halted");

    // ALS/IR with the ALS measurement: counts in lux on the second trace, three decimals.
    Click(form->OptGraph, 1);
    EXPECT_EQ(form->Label16->text(), "ALS/IR");
    Collect(12);
    EXPECT_EQ(run.SampleCount, 12);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(run.SampleValues[i], 1.0);
    EXPECT_DOUBLE_EQ(run.SampleValues2[11], 2000.0 * form->AlsIrCount600 / 4096);
    EXPECT_TRUE(form->txtReading->text().contains('.'));
    EXPECT_EQ(form->txtReading->text().section('.', 1).size(), 3);
    EXPECT_EQ(form->txtADCRaw->text(), QString::number(form->AlsIrCount600));
}

TEST_F(MultiFunctionForm, EachTraceIsDrawnInItsColourOnItsOwnScale) {
    auto& chart = form->chart();
    chart.txtScale->setText("255");
    chart.txtScaleMin->setText("0");
    chart.txtScale2->setText("999");
    chart.txtScaleMin2->setText("-100");
    form->cmdScale_Click();
    const auto& run = form->collection();
    const auto& plot = form->plot();
    auto colourCount = [&](QColor c) {
        const QImage& img = chart.Picture1->image();
        int n = 0;
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x) n += img.pixelColor(x, y) == c;
        return n;
    };
    const QColor red(255, 0, 0), blue(0, 0, 255);

    Click(form->OptGraph, 1);
    Collect(15);
    EXPECT_EQ(plot.TracePixels2[kTraceNewest],
              PlotRow(run.SampleValues2[std::size_t(run.SampleCount - 1)], -100, 1000, 1100, false));
    EXPECT_GT(colourCount(blue), 0);
    EXPECT_EQ(colourCount(red), 0);

    Click(form->OptGraph, 0);
    Collect(15);
    EXPECT_EQ(plot.TracePixels[kTraceNewest],
              PlotRow(run.SampleValues[std::size_t(run.SampleCount - 1)], 0, 256, 256, false));
    EXPECT_GT(colourCount(red), 0);
    EXPECT_EQ(colourCount(blue), 0) << "a new run starts from the empty graph";
}

TEST_F(MultiFunctionForm, DrawTraceDrawsTheEightStepStaircase) {
    form->chart().cmdDrawTrace->click();
    const auto& rows = form->plot().TracePixels;
    for (int step = 1; step <= 8; ++step) {
        const int expected = int(std::lround(304 - 100.0 * step * 0.304));
        EXPECT_EQ(rows[50 * (step - 1)], expected) << step;
        EXPECT_EQ(rows[50 * (step - 1) + 49], expected) << step;
    }
    EXPECT_EQ(rows[400], 1);
    EXPECT_EQ(rows[410], 1);
    const QImage& img = form->chart().Picture1->image();
    EXPECT_EQ(img.pixelColor(10, rows[10]), QColor(255, 0, 0));
    EXPECT_EQ(img.pixelColor(380, rows[380]), QColor(255, 0, 0));
}

TEST_F(MultiFunctionForm, OpensFullAndTheViewToggleIsOneWay) {
    EXPECT_FALSE(form->CompactView);
    for (QWidget* w : {static_cast<QWidget*>(form->Frame2), static_cast<QWidget*>(form->frmTimeBase),
                       static_cast<QWidget*>(form->frmDataRecord), static_cast<QWidget*>(form->cmdCollect),
                       static_cast<QWidget*>(form->txtReading2)})
        EXPECT_TRUE(Shown(w));
    form->Label13_DblClick();
    EXPECT_TRUE(form->CompactView);
    for (QWidget* w : std::initializer_list<QWidget*>{form->cmdCollect, form->Label3, form->Frame2,
                                                      form->frmTimeBase, form->frmDataRecord,
                                                      form->txtReading3, form->txtReading2, form->Label17})
        EXPECT_FALSE(Shown(w));
    form->Label13_DblClick();
    EXPECT_FALSE(form->CompactView);
    for (QWidget* w : std::initializer_list<QWidget*>{form->Frame2, form->frmTimeBase, form->frmDataRecord})
        EXPECT_TRUE(Shown(w));
    // What the full view does not bring back stays hidden.
    for (QWidget* w : std::initializer_list<QWidget*>{form->cmdCollect, form->Label3, form->txtReading2,
                                                      form->txtReading3, form->Label17})
        EXPECT_FALSE(Shown(w));
}

TEST_F(MultiFunctionForm, TestLedsDriveTheirTwoPortBits) {
    session.GpioImage[2] = 0x9F;
    form->ChKLed.at(1)->click();
    EXPECT_EQ(session.GpioImage[2], 0x9F | 0x20);
    EXPECT_EQ(session.GpioImage[0], 0x60);
    form->ChKLed.at(0)->click();
    form->ChKLed.at(1)->click();
    EXPECT_EQ(session.GpioImage[2], 0x9F | 0x40);
}

TEST_F(MultiFunctionForm, UnplugDuringACollectionEndsItOnceAndKeepsTheSamples) {
    std::vector<double> seen;
    const int passes = Collect(1000, [&](int n) {
        seen.push_back(form->collection().SampleValues[std::size_t(n - 1)]);
        if (n == 12) driver.Unplug();
    });
    EXPECT_EQ(passes, 12);
    EXPECT_EQ(form->collection().SampleCount, 12);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(form->collection().SampleValues[i], seen[i]) << i;
    EXPECT_EQ(messages.count(kDisconnected), 1);
    EXPECT_EQ(messages.texts.size(), 1);
    EXPECT_FALSE(session.TransferBusy);
}

TEST_F(MultiFunctionForm, ReadAdGivesTheChipsCounts) {
    scene().ambientLux = 300;
    form->chkALSEnable->click();
    Click(form->OptALSRange, 0);
    clock.AdvanceMs(60);
    form->cmdReadAd_Click();
    EXPECT_EQ(form->AlsIrCount600, 300 * 4096 / 2000) << "a 12-bit reading over the low and high byte";
    EXPECT_EQ(form->txtRegRd(10)->text(), "02");
}

TEST_F(MultiFunctionForm, ThresholdsGoToRegistersThreeToSevenAlsFirst) {
    form->txtILow.at(0)->setText("291");    // 0x123
    form->txtIHigh.at(0)->setText("2748");  // 0xABC
    form->txtILow.at(2)->setText("10");
    form->txtIHigh.at(2)->setText("200");
    form->cmdWrtILimits->click();
    EXPECT_EQ(Sends(),
              (std::vector<Sent>{{0, 5, 0x23}, {0, 6, 0xA1}, {0, 7, 0xBC}, {0, 3, 10}, {0, 4, 200}}));
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_EQ(chip(6), 0xA1);

    // Read back into fresh boxes.
    for (int i : {0, 2}) {
        form->txtILow.at(i)->clear();
        form->txtIHigh.at(i)->clear();
    }
    wire().clear();
    form->cmdReadILimits->click();
    EXPECT_EQ(form->txtILow.at(0)->text(), "291");
    EXPECT_EQ(form->txtIHigh.at(0)->text(), "2748");
    EXPECT_EQ(form->txtILow.at(2)->text(), "10");
    EXPECT_EQ(form->txtIHigh.at(2)->text(), "200");
    std::vector<int> reads;
    for (const Sent& x : Sends()) reads.push_back(x.reg);
    EXPECT_EQ(reads, (std::vector<int>{3, 4, 5, 6, 7}));
}

TEST_F(MultiFunctionForm, AThresholdOutOfItsWidthIsReportedAndWrittenAllTheSame) {
    form->txtILow.at(0)->setText("0");
    form->txtIHigh.at(0)->setText("5000");
    form->txtILow.at(2)->setText("300");
    form->txtIHigh.at(2)->setText("255");
    form->cmdWrtILimits->click();
    EXPECT_EQ(messages.texts, (QStringList{HighLimitMessage(0, 4095), LowLimitMessage(0, 255)}));
    EXPECT_EQ(messages.texts[1], "Low Limit must be within  0 Min and  255 Max. Re-enter Low Limit");
    EXPECT_EQ(Sends().size(), 5u);
    EXPECT_EQ(chip(3), 300 & 0xFF);
}

TEST_F(MultiFunctionForm, TheClearButtonsClearOneFlagEachAndTheLampsShowThem) {
    // Both windows put around nothing the scene gives: every conversion is outside.
    scene().ambientLux = 300;
    scene().objectDistanceMm = 0;
    form->txtILow.at(0)->setText("4000");
    form->txtIHigh.at(0)->setText("4095");
    form->txtILow.at(2)->setText("100");
    form->txtIHigh.at(2)->setText("255");
    form->cmdWrtILimits->click();
    Click(form->optINTP, 2);  // image 0x40
    Click(form->OptALSRange, 0);
    form->chkALSEnable->click();
    form->ChkPEnable->click();
    Click(form->OptIRSleep, 7);
    clock.AdvanceMs(100);
    form->cmdSampleInternalIntrs->click();
    ASSERT_EQ(session.RegReadMirror[2] & 0x88, 0x88);
    EXPECT_TRUE(form->ShpALSFlag->hasFillIndex(12));
    EXPECT_TRUE(form->ShpProxFlag->hasFillIndex(12));

    wire().clear();
    form->cmdALSClear->click();
    EXPECT_EQ(Sends(), (std::vector<Sent>{{0, 2, 0xC0}}));
    EXPECT_EQ(chip(2) & 0x88, 0x80) << "only the ALS flag went";
    EXPECT_EQ(session.RegWriteMirror[2], 0x40) << "the image keeps only the settings";
    EXPECT_EQ(form->txtRegHex(2)->text(), "40");

    wire().clear();
    form->cmdPIClear->click();
    EXPECT_EQ(Sends(), (std::vector<Sent>{{0, 2, 0x48}}));
    form->cmdSampleInternalIntrs->click();
    EXPECT_EQ(form->ShpProxFlag->hasFillIndex(12), bool(session.RegReadMirror[2] & 0x80));
}

TEST_F(MultiFunctionForm, AnUnplugInsideAReadOrAPollSaysSoOnce) {
    driver.UnplugAfterTransfers(1);
    form->cmdReadAd->click();
    Pump();
    EXPECT_EQ(messages.texts, QStringList{kDisconnected});
    EXPECT_FALSE(session.TransferBusy);

    driver.Plug();
    Pump();
    session.usb().InitDriver();
    session.usb().OpenDevice();
    messages.clear();
    driver.UnplugAfterTransfers(1);
    form->TimerIPol_Timer();
    Pump();
    form->TimerIPol_Timer();
    EXPECT_EQ(messages.texts, QStringList{kDisconnected});
    EXPECT_FALSE(session.TransferBusy);
}

TEST_F(MultiFunctionForm, ThePollNeverStartsATransferInsideAnother) {
    form->TimerIPol_Timer();
    EXPECT_EQ(Sends(), (std::vector<Sent>{{2, 0, -1}}));
    wire().clear();
    session.TransferBusy = true;
    form->TimerIPol_Timer();
    session.TransferBusy = false;
    EXPECT_TRUE(Sends().empty());
    // Nor does it nag about a board that is gone: the detach said so once.
    driver.Unplug();
    Pump();
    messages.clear();
    form->TimerIPol_Timer();
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_FALSE(session.TransferBusy);
    // The poll runs only while asked for.
    EXPECT_FALSE(form->TimerIPol->isActive());
    form->chkPoll->click();
    EXPECT_TRUE(form->TimerIPol->isActive());
}

TEST_F(MultiFunctionForm, WriteToDiskRecordsTheChosenTrace) {
    QTemporaryDir dir;
    form->frmDataRecord->txtFilePath->setText(dir.filePath("run.txt"));
    Click(form->OptGraph, 1);
    Collect(25);
    form->frmDataRecord->cmdStartRec->click();
    QFile f(dir.filePath("run.txt"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromLatin1(f.readAll()).split("\r\n", Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 1 + 14 + 1);
    EXPECT_TRUE(lines[0].startsWith("Collect Reg0:&hA0 :Reg1 &h00,Interval 50, ")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].endsWith(", Qty 14"));
    EXPECT_EQ(lines[1], " 0," + Str(form->collection().SampleValues2[11]));
    EXPECT_EQ(lines.back(), "END");
}

}  // namespace
}  // namespace lxm
