// The family device form driven as a user drives it, checked on the chip, the wire and the
// controls.
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>

#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device_form_fixture.h"
#include "transport/frmGPIO.h"

namespace lxm {
namespace {

using test::BoardFixture;
using test::kNotConnected;
using test::TypeAndEnter;

constexpr int kBlack = 0, kLightGreen = 10, kLightRed = 12;

class FamilyForm : public ::testing::Test, protected BoardFixture {
protected:
    void Load(const char* type = "LXM410") {
        OpenSession();
        session.SelectedType = type;
        form = std::make_unique<frmLXM410>(session);
        form->Form_Load();
        wire().clear();
    }
    // The register writes on the wire, as (register, value) pairs.
    std::vector<std::pair<int, int>> Writes() {
        std::vector<std::pair<int, int>> w;
        for (auto& p : wire())
            if (p.dir == sim::WireDir::Out && p.endpoint == 2 && p.bytes.size() == 4 && p.bytes[0] == 0)
                w.emplace_back(p.bytes[2], p.bytes[3]);
        return w;
    }
    std::vector<int> ReadRegisters() {
        std::vector<int> r;
        for (auto& p : wire())
            if (p.dir == sim::WireDir::Out && p.endpoint == 2 && p.bytes.size() == 3 && p.bytes[0] == 1)
                r.push_back(p.bytes[2]);
        return r;
    }
    bool Shown(QWidget* w) { return !w->isHidden(); }
    std::vector<bool> Shown(std::initializer_list<QWidget*> ws) {
        std::vector<bool> v;
        for (QWidget* w : ws) v.push_back(Shown(w));
        return v;
    }

    std::unique_ptr<frmLXM410> form;
};

TEST_F(FamilyForm, LoadingProgramsTheChipAndTheDefaults) {
    OpenSession();
    session.SelectedType = "LXM410";
    form = std::make_unique<frmLXM410>(session);
    wire().clear();
    form->Form_Load();
    EXPECT_EQ(chip(1), 0x44) << "12 bits, 12.5 mA, 327.7 kHz";
    EXPECT_EQ(chip(0), 0x00);
    // Registers 1 and 0 are written more than once on purpose; the last pair is 1 then 0.
    auto w = Writes();
    ASSERT_GE(w.size(), 4u);
    EXPECT_EQ(w[w.size() - 2], std::make_pair(1, 0x44));
    EXPECT_EQ(w.back(), std::make_pair(0, 0x00));
    EXPECT_EQ(session.RegWriteMirror[2], 0xFF);
    EXPECT_EQ(session.CmdPipe, 2);
    EXPECT_EQ(form->txtRegHex(1)->text(), "44");
    EXPECT_EQ(form->AdcBits, 12);
    EXPECT_EQ(form->FullScaleCounts, 4095);
    EXPECT_EQ(form->txtInterval->text(), "8");
    EXPECT_EQ(form->txtILow.at(0)->text() + "-" + form->txtIHigh.at(0)->text(), "100-1500");
    EXPECT_EQ(form->lblIlimitsformat.at(2)->text() + "|" + form->lblIlimitsformat.at(3)->text(),
              "4095 Max|0 Min");
    EXPECT_EQ(form->LstDeviceSel->item(0)->text(), "LXM410 ADR-44");
    EXPECT_EQ(form->cmdWrtReg[3]->toolTip() + "|" + form->cmdRDReg[0]->toolTip(),
              "Click to Write to Register  3|Click to Read from Register  0");
    EXPECT_TRUE(form->LblCommTest()->isHidden());
    EXPECT_EQ(session.activeForm, form.get());

    // A second load resets the image and programs the chip again.
    session.RegWriteMirror[0] = 0x77;
    form->txtRegHex(1)->setText("0C");
    form->txtRegHex(1)->returnPressed();
    ASSERT_EQ(chip(1), 0x0C);
    form->Form_Load();
    EXPECT_EQ(chip(1), 0x44);
    EXPECT_EQ(session.RegWriteMirror[0], 0x00);
}

TEST_F(FamilyForm, CaptionFollowsTheSensorType) {
    const std::pair<const char*, const char*> captions[] = {
        {"LXM410", "LXM410  Multi-Function  Sensor Evaluation Software"},
        {"LXM430", "LXM430  Multi-Function  Sensor Evaluation Software"},
        {"LXM450", "LXM450  Proximity / IR   Sensor Evaluation Software"},
        {"LXM470", "LXM470  ALS / IR  Sensor Evaluation Software"},
        {"LXM999", "Form1"},
    };
    OpenSession();
    for (auto [type, caption] : captions) {
        session.SelectedType = type;
        frmLXM410 f(session);
        f.Form_Load();
        EXPECT_EQ(f.windowTitle(), caption) << type;
    }
}

TEST_F(FamilyForm, OpensCompactAndTheUsbCommLabelTogglesTheView) {
    Load();
    EXPECT_TRUE(form->CompactView);
    EXPECT_EQ(Shown({form->Frame4, form->Frame3, form->FrmDevice, form->OptITime.at(2), form->OptITime.at(3),
                     form->cmdRead_ADC, form->OptMeasure.at(1), form->frGain, form->frmMeasure,
                     form->frmRegisters}),
              (std::vector<bool>{false, false, false, false, false, false, false, true, true, true}));

    QTest::mouseDClick(form->Label13, Qt::LeftButton);
    EXPECT_FALSE(form->CompactView);
    // The device frame and Frame10 stay hidden in the full view.
    EXPECT_EQ(Shown({form->Frame4, form->Frame3, form->OptITime.at(3), form->cmdProx_IR, form->FrmDevice,
                     form->Frame10}),
              (std::vector<bool>{true, true, true, true, false, false}));

    wire().clear();
    QTest::mouseDClick(form->Label13, Qt::LeftButton);
    EXPECT_TRUE(form->CompactView);
    EXPECT_TRUE(wire().empty()) << "switching views writes nothing";
}

TEST_F(FamilyForm, PerPartHidingHoldsInBothViews) {
    Load("LXM470");
    for (int view = 0; view < 2; ++view, form->Label13_DblClick())
        EXPECT_EQ(
            Shown({form->frmProxControl, form->FraScheme, form->Frame11, form->OptMeasure.at(3),
                   form->OptMeasure.at(4), form->OptMeasure.at(7), form->cmdProx_IR, form->OptMeasure.at(5)}),
            (std::vector<bool>{false, false, false, false, false, false, false, true}));
    Load("LXM450");
    for (int view = 0; view < 2; ++view, form->Label13_DblClick())
        EXPECT_EQ(Shown({form->OptMeasure.at(1), form->OptMeasure.at(5), form->frmProxControl,
                         form->OptMeasure.at(7)}),
                  (std::vector<bool>{false, false, true, true}));
    EXPECT_TRUE(Shown(form->OptMeasure.at(2)) || form->CompactView);
}

TEST_F(FamilyForm, EachOptionChangesExactlyItsField) {
    Load();
    struct Case {
        CtlArray<QRadioButton>& arr;
        int index;
        int reg;
        std::uint8_t mask;
        std::uint8_t value;
    };
    std::vector<Case> cases = {
        {form->OptGain, 3, 1, 0x03, 0x03},    {form->OptGain, 2, 1, 0x03, 0x02},
        {form->OptITime, 0, 1, 0x0C, 0x00},   {form->OptITime, 3, 1, 0x0C, 0x0C},
        {form->OptPSrc, 0, 1, 0x30, 0x30},    {form->OptPSrc, 1, 1, 0x30, 0x20},
        {form->OptPSrc, 2, 1, 0x30, 0x10},    {form->OptMFreq, 0, 1, 0x40, 0x00},
        {form->OptMFreq, 3, 1, 0x40, 0x40},   {form->OptIRMode, 1, 1, 0x80, 0x80},
        {form->OptIRMode, 0, 1, 0x80, 0x00},  {form->optINTP, 3, 0, 0x03, 0x03},
        {form->optINTP, 1, 0, 0x03, 0x01},    {form->OptMeasMode, 0, 0, 0x08, 0x00},
        {form->OptExtTime, 0, 0, 0x10, 0x00},
    };
    for (const Case& c : cases) {
        const std::uint8_t before0 = chip(0), before1 = chip(1);
        c.arr.at(c.index)->click();
        const std::uint8_t after = chip(c.reg);
        const std::uint8_t other = c.reg == 0 ? chip(1) : chip(0);
        EXPECT_EQ(after & c.mask, c.value) << "register " << c.reg << " mask " << int(c.mask);
        EXPECT_EQ(after & ~c.mask, (c.reg == 0 ? before0 : before1) & ~c.mask) << "other bits kept";
        EXPECT_EQ(other, c.reg == 0 ? before1 : before0) << "the other register kept";
        EXPECT_EQ(form->txtRegHex(c.reg)->text(), QString("%1").arg(after, 2, 16, QChar('0')).toUpper());
    }
}

TEST_F(FamilyForm, RangeWritesRegisterOneThenZeroAndRescales) {
    Load();
    form->OptGain.at(3)->click();
    EXPECT_EQ(Writes(), (std::vector<std::pair<int, int>>{{1, chip(1)}, {0, chip(0)}}));
    EXPECT_EQ(form->RangeKLux, 64);
    EXPECT_EQ(form->RangeIndex, 3);
    EXPECT_EQ(form->chart().txtScale->text(), "4095") << "counts, while lux display is off";
    form->ShowLux = true;
    form->OptGain.at(3)->click();
    EXPECT_EQ(form->chart().txtScale->text(), "64000");
}

TEST_F(FamilyForm, ResolutionDerivesTheConversionStateForBothSchemes) {
    Load();
    struct Row {
        int index, bits, half, countMax, fullScale, uMax, sMax, sMin;
        const char* interval;
        const char* caption;
    };
    const Row rows[] = {
        {0, 16, 32768, -1, 65535, 65535, 32768, -100, "118", "16 Bits"},
        {1, 12, 2048, 4095, 4095, 4095, 2048, -100, "8", "12 Bits"},
        {2, 8, 128, 255, 255, 255, 128, -10, "0", "8 Bits"},
        {3, 4, 16, 15, 16, 15, 8, -2, "0", "4 Bits"},
    };
    for (int scheme = 0; scheme < 2; ++scheme) {
        form->OptIRMode.at(scheme)->click();
        for (const Row& r : rows) {
            form->OptITime.at(r.index)->click();
            EXPECT_EQ(form->AdcBits, r.bits);
            EXPECT_EQ(form->AdcHalfScale, r.half);
            EXPECT_EQ(form->AdcCountMax, r.countMax);
            EXPECT_EQ(form->FullScaleCounts, r.fullScale);
            EXPECT_EQ(form->IntLimitMax, scheme ? r.sMax : r.uMax) << r.bits << " bits, scheme " << scheme;
            EXPECT_EQ(form->IntLimitMin, scheme ? r.sMin : 0);
            EXPECT_EQ(form->txtInterval->text(), r.interval);
            EXPECT_EQ(form->txtSampling_Delay->text(), r.interval);
            EXPECT_EQ(form->lblIlimitsformat.at(1)->text(), r.caption);
            EXPECT_EQ(form->lblIlimitsformat.at(0)->text(), scheme ? "2s Complement" : "Single Polarity");
            EXPECT_EQ(form->chart().txtScale2->text(), QString::number(r.fullScale));
        }
    }
    form->OptIRMode.at(1)->click();
    EXPECT_EQ(form->chart().txtScale->text(), "8") << "half the 4-bit full scale";
    EXPECT_EQ(form->chart().txtScaleMin->text(), "-100");
    EXPECT_EQ(form->plot.ScaleMin, -100);
    EXPECT_FALSE(form->SinglePolarity);
    EXPECT_EQ(form->ProxScheme, 1);
}

TEST_F(FamilyForm, PersistenceAndDriveShareOneVariable) {
    Load();
    form->optINTP.at(2)->click();
    EXPECT_EQ(form->DriveIndex, 2);
    form->OptPSrc.at(1)->click();
    EXPECT_EQ(form->DriveIndex, 1);
    const auto w = Writes();
    ASSERT_EQ(w.size(), 4u);
    EXPECT_EQ(std::vector(w.begin() + 2, w.end()),
              (std::vector<std::pair<int, int>>{{1, chip(1)}, {0, chip(0)}}));
}

TEST_F(FamilyForm, HexEntryValidatesOnEnterOnly) {
    Load();
    QLineEdit* e4 = form->txtRegHex(4);
    e4->clear();
    QTest::keyClicks(e4, "1ff");
    EXPECT_TRUE(wire().empty()) << "typing alone sends nothing";
    QTest::keyClick(e4, Qt::Key_Return);
    EXPECT_EQ(e4->text(), "00");
    EXPECT_EQ(Writes(), (std::vector<std::pair<int, int>>{{4, 0}}));

    wire().clear();
    TypeAndEnter(form->txtRegHex(2), "12");
    TypeAndEnter(form->txtRegHex(3), "34");
    EXPECT_TRUE(wire().empty()) << "the data registers are never written from the entry";

    TypeAndEnter(form->txtRegHex(0), "4f");
    EXPECT_EQ(form->txtRegHex(0)->text(), "4F");
    EXPECT_TRUE(form->CmdBelow50);
    TypeAndEnter(form->txtRegHex(0), "50");
    EXPECT_FALSE(form->CmdBelow50);
    EXPECT_EQ(chip(0) & ~0x04, 0x50);

    TypeAndEnter(form->txtRegHex(1), "zz");
    EXPECT_EQ(chip(1), 0x00) << "not hexadecimal reads as 0";

    form->txtRegHex(5)->setText("abc");
    form->txtRegHex_LostFocus(5);
    EXPECT_EQ(form->txtRegHex(5)->text(), "AB");
}

TEST_F(FamilyForm, ReadAllReadsNineRegistersInOrder) {
    Load();
    form->cmdReadAllRegs->click();
    EXPECT_EQ(ReadRegisters(), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(form->txtRegRd(1)->text(), "44");
    EXPECT_TRUE(form->ShpIndrd(1)->hasFillIndex(kLightGreen));

    session.UsbConnected = false;
    wire().clear();
    form->cmdReadAllRegs->click();
    EXPECT_TRUE(wire().empty());
    EXPECT_EQ(messages.count(kNotConnected), 1) << "stops at the first register";
}

TEST_F(FamilyForm, ReadShowsMismatchAbsentChipAndTheInterruptFlag) {
    Load();
    form->txtRegHex(4)->setText("12");
    form->cmdRDReg[4]->click();
    EXPECT_TRUE(form->ShpIndrd(4)->hasFillIndex(kLightRed)) << "chip holds 00, entry says 12";

    // The data registers flip instead of turning red.
    form->cmdRDReg[2]->click();
    const bool first = form->ShpIndrd(2)->hasFillIndex(kLightGreen);
    form->cmdRDReg[2]->click();
    EXPECT_NE(first, form->ShpIndrd(2)->hasFillIndex(kLightGreen));
    EXPECT_FALSE(form->ShpIndrd(2)->hasFillIndex(kLightRed));

    // Out of the window from the first conversion: the flag comes up.
    board.sensor().Write(6, 0x00);
    board.sensor().Write(7, 0x00);
    board.sensor().Write(4, 0x00);
    board.sensor().Write(5, 0x00);
    board.sensor().Write(0, 0xA0);
    clock.AdvanceMs(50);
    form->cmdRDReg[0]->click();
    EXPECT_TRUE(form->ShpIntFlag->hasFillIndex(kLightRed));
    board.sensor().Write(0, 0x00);
    form->cmdRDReg[0]->click();
    EXPECT_TRUE(form->ShpIntFlag->hasFillIndex(kBlack));

    TypeAndEnter(form->txtI2CADR, "8a");
    EXPECT_EQ(session.I2cReadAddr, 0x8B);
    form->cmdRDReg[1]->click();
    EXPECT_FALSE(form->LblCommTest()->isHidden());
    EXPECT_EQ(form->LblCommTest()->text(), "Fail");
    EXPECT_EQ(form->LblCommTest()->BackColor(), 255);
    EXPECT_TRUE(form->ShpIndrd(1)->hasFillIndex(kLightRed));
    EXPECT_TRUE(messages.texts.isEmpty()) << "no acknowledge is shown, not told";

    TypeAndEnter(form->txtI2CADR, "88");
    form->cmdRDReg[1]->click();
    EXPECT_TRUE(form->LblCommTest()->isHidden());
}

TEST_F(FamilyForm, AddressEntryAndDeviceList) {
    Load();
    TypeAndEnter(form->txtI2CADR, "1ff");
    EXPECT_EQ(form->txtI2CADR->text(), "88");
    EXPECT_EQ(session.I2cWriteAddr, 0x88);
    form->txtI2CADR->setText("90");
    form->txtI2CADR_LostFocus();
    EXPECT_EQ(session.I2cWriteAddr, 0x90);
    EXPECT_EQ(session.I2cReadAddr, 0x91);

    form->LstDeviceSel_MouseUp();
    EXPECT_EQ(session.I2cWriteAddr, 0x88);
    EXPECT_EQ(session.I2cReadAddr, 0x8A);
    EXPECT_EQ(form->txtI2CAddr->text(), "45");
    EXPECT_EQ(form->txtI2cXmitAdr->text(), "8A");
    form->LstDeviceSel->addItem("second");
    form->LstDeviceSel->setCurrentRow(1);
    form->LstDeviceSel_MouseUp();
    EXPECT_EQ(session.I2cWriteAddr, 0x88) << "the list never moves the write address";
    EXPECT_EQ(session.I2cReadAddr, 0x8B);
    EXPECT_EQ(form->txtI2CAddr->text(), "46") << "0x8B / 2 rounds half to even";
}

TEST_F(FamilyForm, TestCommReportsGoodFailAndTheTwoMessages) {
    Load();
    form->OptMode(2)->click();
    EXPECT_EQ(form->LblCommTest()->text(), "Good");
    EXPECT_EQ(form->LblCommTest()->BackColor(), 32768);
    EXPECT_FALSE(form->LblCommTest()->isHidden());
    EXPECT_FALSE(form->OptMode(2)->isChecked());
    EXPECT_TRUE(session.HasGpioForm());
    EXPECT_EQ(board.controller().portBEnables() & 0x03, 0x03)
        << "the first two enables were inverted and sent";

    board.controller().SetSensorPresent(false);
    form->OptMode(2)->click();
    EXPECT_EQ(form->LblCommTest()->text(), "Fail");
    EXPECT_EQ(form->LblCommTest()->ForeColor(), 0xFFFFFF);
    EXPECT_TRUE(messages.texts.isEmpty());

    Unplug();
    form->OptMode(2)->click();
    EXPECT_EQ(messages.texts, QStringList{"USB has been disconnected"});

    session.UsbDetached = false;
    messages.clear();
    form->OptMode(2)->click();
    EXPECT_EQ(messages.texts, QStringList{kNotConnected});
    EXPECT_EQ(form->LblCommTest()->text(), "Fail");
}

TEST_F(FamilyForm, AWriteWithTheBoardGoneKeepsTheImageAndRecovers) {
    Load();
    Unplug();
    form->OptGain.at(2)->click();
    EXPECT_EQ(session.RegWriteMirror[1] & 3, 2) << "the image keeps the choice";
    EXPECT_EQ(messages.count(kNotConnected), 1) << "one click, one message";
    Replug();
    form->cmdWrtReg[1]->click();
    EXPECT_EQ(chip(1) & 3, 2) << "re-writing the register brings the chip in line";
}

class GpioPanel : public ::testing::Test, protected BoardFixture {
protected:
    void SetUp() override {
        OpenSession();
        gpio = &session.GpioForm();
        session.activeForm = gpio;
        wire().clear();
    }
    frmGPIO* gpio = nullptr;
};

TEST_F(GpioPanel, CheckBoxesChangeTheImageOnly) {
    EXPECT_EQ(gpio->txtPCHexData[0]->text(), "00");
    gpio->ChkBData.at(5)->click();
    EXPECT_EQ(gpio->txtPCHexData[0]->text(), "20");
    EXPECT_EQ(session.GpioImage[2], 0x20);
    EXPECT_TRUE(wire().empty());
    gpio->ChkBData.at(5)->click();
    EXPECT_EQ(gpio->txtPCHexData[0]->text(), "00");
    // Unchecking a box whose bit is already clear leaves the byte as it is.
    gpio->chkOutEn.at(3)->setChecked(false);
    gpio->chkOutEn_Click(3);
    EXPECT_EQ(session.GpioImage[0], 0x00);
    gpio->ChLed1.at(5)->click();
    EXPECT_EQ(gpio->txtPCHex[2]->text(), "20");
}

TEST_F(GpioPanel, WriteSendsFourBytesReadsTwentyFiveAndCompares) {
    gpio->chkOutEn.at(6)->click();
    gpio->ChkBData.at(6)->click();
    gpio->chkOutEnc.at(4)->click();
    gpio->cmdGPIO_Write->click();
    ASSERT_EQ(wire().size(), 2u);
    EXPECT_EQ(wire()[0].endpoint, 0x01);
    EXPECT_EQ(wire()[0].bytes, (std::vector<std::uint8_t>{0x40, 0x00, 0x40, 0x10}));
    EXPECT_EQ(wire()[1].endpoint, 0x81);
    EXPECT_EQ(wire()[1].bytes.size(), 25u);
    EXPECT_EQ(gpio->txtPCHex[1]->text(), "40");
    EXPECT_EQ(gpio->txtPCHex[3]->text(), "10");
    for (int i : {2, 3, 5}) EXPECT_TRUE(gpio->shpGpioWr.at(i)->hasFillIndex(kLightGreen)) << i;
    // PB7 is an input: it reads the sensor's interrupt line, high while no interrupt is up.
    EXPECT_EQ(gpio->txtPCHexData[1]->text(), "C0");
    EXPECT_TRUE(gpio->shpGpioWr.at(4)->hasFillIndex(kLightRed));
    EXPECT_TRUE(board.controller().GreenLedOn()) << "PC4 driven low lights the green LED";
}

TEST_F(GpioPanel, AFailedWriteShowsZerosAndRedComparisons) {
    session.GpioImage = {0x01, 0x10, 0x01, 0x00};
    driver.TimeOutNext(2);
    gpio->cmdGPIO_Write_Click();
    EXPECT_EQ(gpio->txtPCHex[1]->text(), "00");
    EXPECT_TRUE(gpio->shpGpioWr.at(2)->hasFillIndex(kLightRed));
    EXPECT_TRUE(gpio->ShpAttach()->hasFillIndex(kLightRed));
    EXPECT_TRUE(messages.texts.isEmpty());
}

}  // namespace
}  // namespace lxm
