// Measurement selection, single reads and the dual-mode proximity-minus-IR sequence on the
// family form, checked at the chip and on the wire of the simulated board.
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

#include "core/ColorLabel.h"
#include "core/Shape.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device_form_fixture.h"

namespace lxm::test {
namespace {

constexpr int kOK = 10, kAlt = 2, kFail = 12, kOff = 0;

using MeasureTest = FormFixture;

TEST_F(MeasureTest, EachTypeProgramsItsOperationAndScheme) {
    // Index 4 shares the proximity operation with 3; only 3 and 7 switch to the signed scheme.
    const int operation[8] = {0, 1, 2, 3, 3, 5, 6, 7};
    for (int index : {1, 2, 3, 4, 5, 6, 7, 0}) {
        SCOPED_TRACE(index);
        const std::size_t mark = wire().size();
        Measure(index);
        const bool signedProx = index == 3 || index == 7;
        EXPECT_EQ(chip(0) >> 5, operation[index]);
        EXPECT_EQ(chip(0) & 0x01, signedProx ? 1 : 0);
        EXPECT_EQ(chip(1) & 0x80, signedProx ? 0x80 : 0);
        EXPECT_EQ(form->ProxScheme, signedProx ? 1 : 0);
        ASSERT_FALSE(WritesTo(0, mark).empty());
        EXPECT_EQ(WritesTo(8, mark),
                  index == 0 ? std::vector<std::uint8_t>{} : std::vector<std::uint8_t>{0x00});
        EXPECT_EQ(form->MeasureSingleShot, index < 5);
    }
}

TEST_F(MeasureTest, CaptionsFollowTheType) {
    Measure(1);
    EXPECT_EQ(form->Frame3->title(), "Read ALS Once ");
    EXPECT_EQ(form->Label16->text(), "Lux Reading");
    EXPECT_EQ(form->plot.AxisCaption, "Lux");
    EXPECT_EQ(form->plot.AxisCaption2, "AD Cnt");
    EXPECT_EQ(form->Label9->text(), "Delay Command to Sample");
    EXPECT_FALSE(form->txtADCRaw->isHidden());
    EXPECT_TRUE(form->ShowLux);

    Measure(6);
    EXPECT_EQ(form->Frame3->title(), "IR Continuous");
    EXPECT_EQ(form->Label16->text(), "ADC Reading");
    EXPECT_EQ(form->plot.AxisCaption, "IR Cnt");
    EXPECT_EQ(form->Label9->text(), "Delay Between Samples");
    EXPECT_TRUE(form->txtADCRaw->isHidden());

    Measure(4);
    EXPECT_EQ(form->Label16->text(), "Prox-IR");
    EXPECT_EQ(form->plot.AxisCaption2, "Prox-IR");
    EXPECT_FALSE(form->FrmProxExternal->isHidden());
    EXPECT_TRUE(form->FrmMeasureDetails->isHidden());
    EXPECT_TRUE(form->fraINT->isHidden());
    EXPECT_FALSE(form->Frame10->isHidden());
    EXPECT_FALSE(form->cmdProx_IR->isHidden());

    Measure(7);
    EXPECT_TRUE(form->FrmProxExternal->isHidden());
    EXPECT_FALSE(form->FrmMeasureDetails->isHidden());
}

TEST_F(MeasureTest, PowerDownLeavesRegisterOneAndKeepsTheDecimalEntryQuirk) {
    Measure(5);
    const std::uint8_t reg1 = chip(1);
    // Timing "external" puts bit 4 into the image; power down then enters the byte (16) as
    // decimal text, which the write takes as hexadecimal.
    form->OptExtTime_Click(1);
    const std::size_t mark = wire().size();
    Measure(0);
    EXPECT_EQ(form->Frame3->title(), "No Measurement:Power Down");
    EXPECT_EQ(form->txtRegHex(0)->text(), "16");
    EXPECT_EQ(WritesTo(0, mark), std::vector<std::uint8_t>{0x16});
    EXPECT_EQ(chip(0) >> 5, 0);
    EXPECT_EQ(chip(1), reg1);
}

TEST_F(MeasureTest, SignedProximityReadingsAtSixteenAndFourBits) {
    Resolution(0);
    Measure(7);
    scene().objectDistanceMm = 0;
    // Just above the ambient level the scheme subtracts to nothing: one count below zero.
    scene().infrared = 25.5;
    Settle();
    EXPECT_EQ(form->ReadDataRegisters(), -1);
    EXPECT_EQ(form->LastHigh, 0xFF);
    EXPECT_EQ(form->LastLow, 0xFF);
    EXPECT_EQ(form->LastNegative, -1);

    scene().infrared = 1e6;
    Settle();
    EXPECT_EQ(form->ReadDataRegisters(), -32768);
    EXPECT_EQ(form->LastHigh, 0x80);
    EXPECT_EQ(form->LastLow, 0x00);

    // The same bytes are a plain count outside the signed proximity case.
    Measure(6);
    scene().infrared = 2000;
    Settle();
    EXPECT_EQ(form->ReadDataRegisters(), 65535);
    EXPECT_EQ(form->LastNegative, 1);

    // At four bits signed proximity is never negative.
    Resolution(3);
    Measure(7);
    for (double ir : {25.5, 1e6}) {
        scene().infrared = ir;
        Settle();
        EXPECT_GE(form->ReadDataRegisters(), 0) << ir;
    }
}

TEST_F(MeasureTest, SwatchAndFailLabelFollowEachRead) {
    Measure(5);
    scene().ambientLux = 500;  // 2048 of 4095 counts
    Settle();
    EXPECT_EQ(form->ReadDataRegisters(), 2048);
    EXPECT_EQ(form->chart().Picture3->palette().color(QPalette::Window), QColor(128, 0, 0));
    EXPECT_TRUE(form->LblCommTest()->isHidden());

    scene().ambientLux = 0;
    Settle();
    EXPECT_EQ(form->ReadDataRegisters(), 0);
    EXPECT_EQ(form->chart().Picture3->palette().color(QPalette::Window), QColor(255, 255, 255));

    board.controller().NackNext(1);
    form->ReadDataRegisters();
    EXPECT_FALSE(form->LblCommTest()->isHidden());
    EXPECT_EQ(form->LblCommTest()->text(), "Fail");
    EXPECT_EQ(form->LblCommTest()->BackColor(), 255);
    form->ReadDataRegisters();
    EXPECT_TRUE(form->LblCommTest()->isHidden());
}

TEST_F(MeasureTest, LuxDividesByFullScalePlusOne) {
    form->OptGain.at(1)->setChecked(true);
    form->OptGain_Click(1);
    Resolution(0);
    EXPECT_DOUBLE_EQ(form->ConvertToLux(32768), 2000.0);
    form->OptGain.at(0)->setChecked(true);
    form->OptGain_Click(0);
    Resolution(3);
    EXPECT_DOUBLE_EQ(form->ConvertToLux(16), 1000.0 * 16 / 17);
}

TEST_F(MeasureTest, ReadAdcShowsBothDataBytesAndFlipsTheirLamps) {
    Measure(5);
    scene().ambientLux = 500;
    Settle();
    form->cmdRead_ADC_Click();
    EXPECT_EQ(form->txtRegRd(2)->text() + form->txtRegRd(3)->text(), "0008");
    for (int r : {2, 3}) EXPECT_TRUE(form->ShpIndrd(r)->hasFillIndex(kOK)) << r;
    form->cmdRead_ADC_Click();
    for (int r : {2, 3}) EXPECT_TRUE(form->ShpIndrd(r)->hasFillIndex(kAlt)) << r;
    EXPECT_FALSE(session.TransferBusy);
}

// The dual-mode scene at 12 bits and 12.5 mA: an object at 60 mm reflects 50 units on top of
// 100 units of infrared, so proximity reads 614 and infrared 409.
struct DualModeTest : FormFixture {
    DualModeTest() {
        Measure(4);
        scene().ambientLux = 300;
        scene().infrared = 100;
        scene().objectDistanceMm = 60;
        scene().reflectance = 0.5;
    }
};

TEST_F(DualModeTest, IrBeforeAfterAndBothOrderTheCommands) {
    struct Case {
        int option;
        std::vector<std::uint8_t> commands;
        int reads;
    };
    // "IR After" reads twice after switching back to infrared.
    const Case cases[] = {{0, {0x40, 0x60}, 2}, {1, {0x60, 0x40}, 3}, {2, {0x40, 0x60, 0x40}, 4}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.option);
        ProxOption(c.option);
        const std::size_t mark = wire().size();
        form->cmdProx_IR_Click();
        EXPECT_EQ(WritesTo(0, mark), c.commands);
        EXPECT_EQ(DataReads(mark), c.reads);
        // Proximity, infrared, the difference.
        EXPECT_EQ(form->txtProx_IR.at(4)->text() + " " + form->txtProx_IR.at(5)->text() + " " +
                      form->txtProx_IR.at(6)->text(),
                  "614 409 205");
        EXPECT_EQ(form->lblIR1.at(2)->text(), "409");
        EXPECT_TRUE(form->ShpOVRange.at(2)->hasFillIndex(kOK));
        EXPECT_FALSE(session.TransferBusy);
    }
    EXPECT_EQ(form->txtProx_IR.at(2)->text() + form->txtProx_IR.at(3)->text(), "0266");
}

TEST_F(DualModeTest, SaturatedReadingIsNotAvailable) {
    scene().objectDistanceMm = 5;  // proximity saturates, infrared does not
    form->cmdProx_IR_Click();
    EXPECT_EQ(form->txtProx_IR.at(4)->text(), "4095");
    EXPECT_EQ(form->txtProx_IR.at(6)->text(), "NA");
    EXPECT_EQ(form->ProxMinusIr, -9999);
    EXPECT_TRUE(form->ShpOVRange.at(0)->hasFillIndex(kFail));
    EXPECT_TRUE(form->ShpOVRange.at(1)->hasFillIndex(kOK));
    EXPECT_TRUE(form->ShpOVRange.at(2)->hasFillIndex(kOff));

    scene().objectDistanceMm = 0;
    scene().infrared = 2000;  // infrared saturates
    form->cmdProx_IR_Click();
    EXPECT_EQ(form->txtProx_IR.at(5)->text(), "4095");
    EXPECT_EQ(form->txtProx_IR.at(6)->text(), "NA");
    EXPECT_EQ(form->ProxMinusIr, -9999);
    EXPECT_TRUE(form->ShpOVRange.at(1)->hasFillIndex(kFail));
}

}  // namespace
}  // namespace lxm::test
