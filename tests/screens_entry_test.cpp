// Entry boxes that say when their text is not a valid value, and Enter in the scale boxes.
#include <gtest/gtest.h>
#include <QLineEdit>
#include <QTest>

#include "core/EntryCheck.h"
#include "device/frmLXM410.h"
#include "device/parts/StripChart.h"
#include "device_form_fixture.h"

namespace lxm {
namespace {

TEST(HexByteProblem, OneOrTwoHexDigitsOfEitherCase) {
    for (const char* ok : {"0", "a", "5c", "FF", "00"}) EXPECT_TRUE(HexByteProblem(ok).isEmpty()) << ok;
    EXPECT_TRUE(HexByteProblem("").contains("Empty"));
    EXPECT_TRUE(HexByteProblem("zz").contains("\"z\" is not a hex digit"));
    EXPECT_TRUE(HexByteProblem("1G").contains("\"G\""));
    EXPECT_TRUE(HexByteProblem(" 1").contains("\" \"")) << "a blank is not a digit either";
    EXPECT_TRUE(HexByteProblem("1ff").contains("1FF is more than one byte"));
}

class EntryMarking : public test::FormFixture {
protected:
    static bool Marked(QLineEdit* box) {
        return box->property("invalid").toBool() &&
               box->palette().color(QPalette::Base) != QLineEdit().palette().color(QPalette::Base);
    }
    void Type(QLineEdit* box, const char* text) {
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, QString::fromLatin1(text));
    }
};

TEST_F(EntryMarking, AnInvalidEntryIsMarkedAndSaysWhyButSendsAsBefore) {
    QLineEdit* box = form->txtRegHex(8);
    const QString ownTip = QStringLiteral("Enter Hex value, click Wr Button below to write to register");
    ASSERT_EQ(box->toolTip(), ownTip);
    ASSERT_FALSE(Marked(box));

    Type(box, "zz");
    EXPECT_TRUE(Marked(box));
    EXPECT_TRUE(box->toolTip().startsWith("\"z\" is not a hex digit"));
    EXPECT_TRUE(box->toolTip().endsWith(ownTip)) << "the box's own tip stays";
    // Enter sends what it always sent: "ZZ" has no leading hex digits, so 0.
    const std::size_t from = wire().size();
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(WritesTo(8, from), std::vector<std::uint8_t>{0x00});
    EXPECT_EQ(box->text(), "ZZ");
    EXPECT_TRUE(Marked(box)) << "still not a byte";

    // Too large: Enter turns it into "00", which is valid again.
    Type(box, "1FF");
    EXPECT_TRUE(box->toolTip().startsWith("1FF is more than one byte"));
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(box->text(), "00");
    EXPECT_FALSE(Marked(box));
    EXPECT_EQ(box->toolTip(), ownTip);

    Type(box, "5c");
    EXPECT_FALSE(Marked(box));
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(chip(8), 0x5C);
}

TEST_F(EntryMarking, ATipSetWhileMarkedBecomesTheOwnTip) {
    QLineEdit* box = form->txtI2CADR;
    Type(box, "1FF");
    EXPECT_TRUE(Marked(box));
    box->setToolTip("I2C write address");
    EXPECT_TRUE(box->toolTip().startsWith("1FF is more than one byte"));
    EXPECT_TRUE(box->toolTip().endsWith("I2C write address"));
    Type(box, "88");
    EXPECT_EQ(box->toolTip(), "I2C write address");
}

TEST_F(EntryMarking, EnterInAScaleBoxReScales) {
    form->chart().txtScale->setText("10000");
    form->chart().txtScaleMin->setText("-500");
    QTest::keyClick(form->chart().txtScaleMin, Qt::Key_Return);
    EXPECT_EQ(form->plot.ScaleMax, 10001);
    EXPECT_EQ(form->plot.ScaleMin, -500);
    EXPECT_EQ(form->plot.ScaleLabels[0], "-500");

    form->chart().txtScale2->setText("99");
    QTest::keyClick(form->chart().txtScale2, Qt::Key_Return);
    EXPECT_EQ(form->plot.ScaleLabels2[10], form->plot.ScaleLabels[10]) << "lux off: both columns alike";
    form->chart().txtScale->setText("2000");
    QTest::keyClick(form->chart().txtScale, Qt::Key_Enter);
    EXPECT_EQ(form->plot.ScaleMax, 2001);
}

}  // namespace
}  // namespace lxm
