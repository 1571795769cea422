// The register panel's names: each row says which register it is, and the name's tool tip
// lists the bit fields the form's controls set, with the value last written or read.
#include <gtest/gtest.h>
#include <QLabel>
#include <QLineEdit>

#include "device/frmLXM600.h"
#include "device/parts/RegisterPanel.h"
#include "device_form_fixture.h"

namespace lxm {
namespace {

QString Tip(RegisterPanel& p, int reg) {
    return p.lblRegName(reg)->toolTip();
}

using FamilyNames = test::FormFixture;

TEST_F(FamilyNames, FieldsFollowTheOptionsAndTheReadBack) {
    RegisterPanel& p = form->panel();
    EXPECT_EQ(p.lblRegName(1)->text(), "1 Cmd II");
    // Loading leaves register 1 at 0x44: 12 bits, 12.5mA (the lowest code), 327.7 kHz.
    EXPECT_EQ(Tip(p, 1),
              "Command II (register 1), written 44\nbit 7 scheme: 0\nbit 6 modulation: 1\n"
              "bits 5:4 IR drive: 0\nbits 3:2 resolution: 1\nbits 1:0 range: 0");
    form->OptGain.at(3)->setChecked(true);
    form->OptGain_Click(3);
    EXPECT_TRUE(Tip(p, 1).contains("written 47") && Tip(p, 1).contains("bits 1:0 range: 3"))
        << Tip(p, 1).toStdString();
    // A read describes what the chip holds.
    form->txtRegHex(0)->setText("A4");
    form->cmdWrtReg_Click(0);
    form->cmdRDReg_Click(0);
    EXPECT_TRUE(Tip(p, 0).startsWith("Command I (register 0), read ") &&
                Tip(p, 0).contains("7:5 operation: 5"))
        << Tip(p, 0).toStdString();
    EXPECT_EQ(Tip(p, 4).toStdString(), "Low threshold LSB (register 4), image 00");
}

using MultiFunctionNames = test::Lxm600FormFixture;

TEST_F(MultiFunctionNames, TheInterruptRegisterShowsItsFiveFields) {
    form->txtRegHex(2)->setText("65");
    form->cmdWrtReg_Click(2);
    EXPECT_EQ(Tip(form->panel(), 2).toStdString(),
              "Interrupt configuration (register 2), written 65\nbit 7 proximity flag: 0\n"
              "bits 6:5 proximity persistence: 3\nbit 3 ALS flag: 0\nbits 2:1 ALS persistence: 2\n"
              "bit 0 pin function (Or / And): 1");
}

}  // namespace
}  // namespace lxm
