// Continuous collection, the strip chart and the simulated board's panel, seen as the user
// sees them: the live texts, the sample buffer, the trace's pixels and what reaches the chip.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QSlider>

#include <algorithm>
#include <cmath>

#include "acquisition/PictureBox.h"
#include "app/SimulatorPanel.h"
#include "core/Shape.h"
#include "device/parts/MaxMinFrame.h"
#include "device/parts/RegisterPanel.h"
#include "device_form_fixture.h"
#include "transport/frmGPIO.h"

namespace lxm::test {
namespace {

const QColor kTraceRed(255, 0, 0);

// Continuous infrared at 12 bits over the 1000-unit range: a count is 4.096 per unit.
struct CollectTest : FormFixture {
    CollectTest() {
        Measure(6);
        scene().infrared = 120;  // 491 counts
        Settle();
    }
    QRgb Pixel(int x, int y) { return form->chart().Picture1->image().pixel(x, y); }
    bool ShowsBackground() { return form->chart().Picture1->image() == form->plot.GraphBackground; }
    void ManualScale(const char* max, const char* min) {
        form->chart().txtScale->setText(QString::fromLatin1(max));
        form->chart().txtScaleMin->setText(QString::fromLatin1(min));
        form->cmdScale_Click();
    }
};

TEST_F(CollectTest, StartingPowerDownSwitchesToContinuousAls) {
    Measure(0);
    Collect(3);
    EXPECT_TRUE(form->OptMeasure.at(5)->isChecked());
    EXPECT_EQ(chip(0) >> 5, 5);
    EXPECT_TRUE(form->ShowLux);
}

TEST_F(CollectTest, LuxReadingsAndButtonsDuringAndAfterTheRun) {
    Measure(5);
    scene().ambientLux = 300;  // 1228 counts
    Settle();
    Collect([&](int) {
        EXPECT_FALSE(form->cmdCollectData->isEnabled());
        EXPECT_EQ(form->cmdCollectData->text(), "Click -Stop-  to End");
        EXPECT_TRUE(form->cmdStopData->isEnabled());
        EXPECT_EQ(form->Label18->text(), "Data Collection In Process");
        EXPECT_TRUE(session.TransferBusy);
        return form->SampleCount < 4;
    });
    EXPECT_EQ(form->txtADCRaw->text(), "1228");
    EXPECT_EQ(form->txtReading->text(), "299.80");
    EXPECT_DOUBLE_EQ(form->SampleValues[3], 1000.0 * 1228 / 4096);
    EXPECT_DOUBLE_EQ(form->LatestReading, 1000.0 * 1228 / 4096);
    EXPECT_EQ(form->cmdCollectData->text(), "Start");
    EXPECT_TRUE(form->cmdCollectData->isEnabled());
    EXPECT_FALSE(form->cmdStopData->isEnabled());
    EXPECT_EQ(form->Label18->text(), "Data Collection Halted");
    EXPECT_FALSE(session.Collecting);
    EXPECT_FALSE(session.TransferBusy);

    Measure(6);
    Collect(2);
    EXPECT_EQ(form->txtReading->text(), "491");
}

TEST_F(CollectTest, ContinuousPassesStartThreeMillisecondsBeforeTheirDeadline) {
    std::vector<std::int64_t> released, deadlines;
    Collect([&](int n) {
        released.push_back(form->PassReleasedUs);
        deadlines.push_back(form->PacedDeadlineUs);
        // Typed during the run: the next deadline already uses it.
        if (n == 3) form->txtInterval->setText(QStringLiteral("20"));
        return n < 6;
    });
    for (std::size_t i = 0; i < released.size(); ++i) EXPECT_EQ(deadlines[i] - released[i], 3000) << i;
    // Pass 4 still waits for the deadline pass 3 set; from pass 5 on they are 20 ms apart,
    // less the 3 ms margin.
    EXPECT_EQ(released[1] - released[0], 5000);
    EXPECT_EQ(released[3] - released[2], 5000);
    EXPECT_EQ(released[4] - released[3], 17000);
    EXPECT_EQ(released[5] - released[4], 17000);
    EXPECT_EQ(form->txtTime1->text(), "17");
}

TEST_F(CollectTest, SingleShotPassesRetriggerAndFollowTheSamplingDelay) {
    Measure(2);
    form->txtInterval->setText(QStringLiteral("50"));
    form->txtSampling_Delay->setText(QStringLiteral("8"));
    std::vector<std::int64_t> released;
    const std::size_t mark = wire().size();
    Collect([&](int n) {
        released.push_back(form->PassReleasedUs);
        return n < 4;
    });
    for (std::size_t i = 1; i < released.size(); ++i) EXPECT_EQ(released[i] - released[i - 1], 8000);
    // Start writes register 0 once; every pass then writes it again before reading.
    EXPECT_EQ(WritesTo(0, mark).size(), 1u + 4u);
    EXPECT_EQ(WritesTo(0, mark).back() >> 5, 2);
    EXPECT_EQ(DataReads(mark), 4);
    EXPECT_EQ(form->txtReading->text(), "491");
}

TEST_F(CollectTest, SampleCountStopsAt1010AndTheLastEntryIsOverwritten) {
    scene().kind = sim::LightScene::Kind::Noise;
    std::vector<double> readings;
    Collect([&](int n) {
        readings.push_back(form->LatestReading);
        return n < 1015;
    });
    ASSERT_EQ(readings.size(), 1015u);
    EXPECT_EQ(form->SampleCount, 1010);
    for (int i = 0; i < 1010; ++i) ASSERT_EQ(form->SampleValues[i], readings[i]) << i;
    EXPECT_EQ(form->SampleValues[1010], readings.back());
    EXPECT_NE(readings[1010], readings.back());
    EXPECT_EQ(form->lblLoop_Count->text(), "1000");
}

TEST_F(CollectTest, ReadingsOutsideTheScaleAreDrawnOnTheEdgeRows) {
    // 491 counts on a 0..100 scale is above the top; on 600..1000 it is below the bottom.
    ManualScale("99", "0");
    std::vector<std::int32_t> rows;
    Collect([&](int n) {
        rows.push_back(form->plot.TracePixels[kTraceNewest]);
        if (n == 12) ManualScale("999", "600");
        return n < 14;
    });
    EXPECT_EQ(rows[11], 1);
    EXPECT_EQ(rows[13], 304);
    // The newest point sits in column 402, joined up to row 1 by the kept stroke.
    for (int y : {1, 150, 304}) EXPECT_EQ(Pixel(402, y), kTraceRed.rgb()) << y;
    EXPECT_EQ(Pixel(402, 0), form->plot.GraphBackground.pixel(402, 0));
}

TEST_F(CollectTest, TraceAppearsAfterTenReadingsAndFollowsTheLight) {
    ManualScale("999", "0");
    Collect(10);
    EXPECT_TRUE(ShowsBackground());
    EXPECT_EQ(form->lblLoop_Count->text(), "");

    scene().kind = sim::LightScene::Kind::Sine;
    scene().periodS = 0.5;
    std::vector<std::int32_t> rows;
    Collect([&](int n) {
        rows.push_back(form->plot.TracePixels[kTraceNewest]);
        return n < 150;
    });
    EXPECT_FALSE(ShowsBackground());
    const auto [low, high] = std::minmax_element(rows.begin() + 20, rows.end());
    EXPECT_GT(*high - *low, 80);
    // The drawn readings occupy only the rightmost columns so far.
    const std::int32_t newest = form->plot.TracePixels[kTraceNewest];
    EXPECT_EQ(Pixel(402, newest), kTraceRed.rgb());
    EXPECT_EQ(Pixel(100, 200), form->plot.GraphBackground.pixel(100, 200));
}

TEST_F(CollectTest, ClearGraphRestoresTheBackgroundAndSaveScreenKeepsTheTrace) {
    ManualScale("999", "0");
    const QImage grid = form->plot.GraphBackground;
    Collect(40);
    ASSERT_FALSE(ShowsBackground());
    form->cmdRestoreScreen_Click();
    EXPECT_EQ(form->chart().Picture1->image(), grid);

    Collect(40);
    const QImage withTrace = form->chart().Picture1->image();
    form->cmdSaveScreen_Click();
    form->cmdRestoreScreen_Click();
    EXPECT_EQ(form->chart().Picture1->image(), withTrace);
    EXPECT_NE(form->chart().Picture1->image(), grid);
    EXPECT_FALSE(form->chart().cmdSaveScreen->isHidden());
    EXPECT_FALSE(form->chart().cmdRestoreScreen->isHidden());

    // During a run, the trace is kept up to the pass just taken, though it is drawn a frame at
    // a time.
    // The last column is joined up to row 1 and ends under the newest point.
    form->plot.GraphBackground = grid;
    scene().kind = sim::LightScene::Kind::Sine;
    scene().periodS = 0.1;
    Collect([&](int n) {
        if (n == 25) {
            form->cmdSaveScreen_Click();
            const int newest = form->plot.TracePixels[402];
            EXPECT_EQ(form->plot.GraphBackground.pixel(402, newest + 1), kTraceRed.rgb());
            EXPECT_NE(form->plot.GraphBackground.pixel(402, newest + 2), kTraceRed.rgb());
        }
        return n < 30;
    });
}

TEST_F(CollectTest, ClearGraphDuringTheRunEndsItWithoutDrawingAgain) {
    ManualScale("999", "0");
    const QImage grid = form->plot.GraphBackground;
    const int passes = Collect([&](int n) {
        if (n == 30) form->cmdRestoreScreen_Click();
        return true;
    });
    EXPECT_EQ(passes, 30);
    EXPECT_EQ(form->chart().Picture1->image(), grid);
    EXPECT_TRUE(form->cmdCollectData->isEnabled());

    // Stop comes back with the next run.
    Collect([&](int) {
        EXPECT_FALSE(form->cmdStopData->isHidden());
        return false;
    });
}

TEST_F(CollectTest, ManualRescaleWithLuxKeepsCountsInTheRightColumn) {
    // The right column keeps counts from its own box: 4096 / 10 rounds to 410.
    Measure(5);
    form->chart().txtScale2->setText(QStringLiteral("4095"));
    ManualScale("24", "0");  // step 2.5 rounds down to 2
    EXPECT_EQ(form->plot.ScaleLabels[1], "2");
    EXPECT_EQ(form->plot.ScaleLabels[10], "20");
    EXPECT_EQ(form->plot.ScaleLabels2[1], "410");
    EXPECT_EQ(form->plot.ScaleLabels2[10], "4100");
}

TEST_F(CollectTest, AutomaticRescaleDuringTheRunRelabelsAndRestarts) {
    int runs = 0;
    Collect([&](int n) {
        if (form->SampleCount == 1) ++runs;
        if (runs == 1 && n == 20) form->cmdAutoScale_Click();
        return runs < 2 || form->SampleCount < 3;
    });
    EXPECT_EQ(runs, 2);
    // 491 counts with 15 % head-room: 564, scale top 565, step 56.5 rounded to 56.
    EXPECT_EQ(form->chart().txtScale->text(), "564");
    EXPECT_EQ(form->chart().txtScaleMin->text(), "0");
    EXPECT_EQ(form->plot.ScaleLabels[1] + form->plot.ScaleLabels2[10], "56560");
    EXPECT_EQ(form->plot.AxisCaption, "Scaled");
    EXPECT_EQ(form->SampleCount, 3);

    // Signed proximity keeps room below zero.
    Measure(7);
    scene().objectDistanceMm = 30;
    Settle();
    runs = 0;
    Collect([&](int n) {
        if (form->SampleCount == 1) ++runs;
        if (runs == 1 && n == 8) form->cmdAutoScale_Click();
        return runs < 2;
    });
    EXPECT_EQ(form->chart().txtScaleMin->text(), "-100");
    EXPECT_EQ(form->plot.ScaleMin, -100);
}

TEST_F(CollectTest, MaxMinPanelShowsExtremesAndEvery26thPassSnapshot) {
    scene().kind = sim::LightScene::Kind::Noise;
    std::vector<QString> raw;
    std::vector<std::pair<std::uint8_t, std::uint8_t>> bytes;
    Collect([&](int n) {
        // The count of the pass itself: its box is refreshed with the other live boxes.
        raw.push_back(QString::number(form->PassCount));
        bytes.emplace_back(form->LastLow, form->LastHigh);
        if (n == 25) {
            EXPECT_EQ(form->txtADMax.at(4)->text(), "");
        }
        return n < 26;
    });
    auto byCount = [](const QString& a, const QString& b) { return a.toInt() < b.toInt(); };
    const auto hi = std::max_element(raw.begin(), raw.end(), byCount) - raw.begin();
    const auto lo = std::min_element(raw.begin(), raw.end(), byCount) - raw.begin();
    ASSERT_NE(raw[hi], raw[lo]);
    auto hex = [](std::pair<std::uint8_t, std::uint8_t> b) {
        return QStringLiteral("%1 %2")
            .arg(b.first, 2, 16, QLatin1Char('0'))
            .arg(b.second, 2, 16, QLatin1Char('0'))
            .toUpper();
    };
    auto boxes = [&] {
        QStringList texts;
        for (int i = 0; i < 6; ++i) texts << form->txtADMax.at(i)->text();
        return texts;
    };
    // Highest, lowest and the 26th pass's snapshot, each as a count and as its two bytes.
    EXPECT_EQ(boxes(),
              (QStringList{raw[hi], hex(bytes[hi]), raw[lo], hex(bytes[lo]), raw[25], hex(bytes[25])}));
    EXPECT_EQ(form->CountMax, raw[hi].toInt());

    form->cmdClearHist_Click();
    EXPECT_EQ(boxes(), QStringList(6, QString()));
    EXPECT_EQ(form->CountMax, -9999999);
    EXPECT_EQ(form->CountMin, 9999999);
}

TEST_F(CollectTest, DualModeRepeatsThePreviousSampleWhenNotAvailable) {
    Measure(4);
    scene().infrared = 100;
    scene().objectDistanceMm = 60;  // 614 - 409
    std::vector<double> samples;
    Collect([&](int n) {
        samples.push_back(form->SampleValues[form->SampleCount - 1]);
        if (n == 2) scene().objectDistanceMm = 5;  // saturates from the third pass on
        return n < 4;
    });
    EXPECT_EQ(samples, (std::vector<double>{205, 205, 205, 205}));
    EXPECT_EQ(form->txtProx_IR.at(6)->text(), "NA");
    EXPECT_EQ(form->txtADCRaw->text(), "205");
}

TEST_F(CollectTest, RegisterClicksDuringAPassAreServedByTheNextPass) {
    std::size_t during = 0;
    Collect([&](int n) {
        if (n == 3) {
            const std::size_t mark = wire().size();
            form->OptGain.at(2)->setChecked(true);
            form->OptGain_Click(2);
            form->cmdRead_ADC_Click();
            during = wire().size() - mark;
            EXPECT_TRUE(session.PendingWrite[1]);
            EXPECT_TRUE(session.PendingRead[2]);
        }
        return n < 4;
    });
    EXPECT_EQ(during, 0u);
    EXPECT_EQ(chip(1) & 0x03, 2);
    EXPECT_FALSE(session.PendingWrite[1]);
    EXPECT_FALSE(session.TransferDeferred);
    EXPECT_EQ(form->txtRegRd(3)->text(), "01");  // 491 counts at range 1000: 0x01EB
}

TEST_F(CollectTest, StopClickedDuringAPassEndsTheRunAfterThatPass) {
    const int passes = Collect([&](int n) {
        if (n == 7) QMetaObject::invokeMethod(form->cmdStopData, "click", Qt::QueuedConnection);
        return true;
    });
    EXPECT_EQ(passes, 7);
    EXPECT_EQ(form->SampleCount, 7);
    EXPECT_TRUE(form->CollectStopRequested);
}

TEST_F(CollectTest, DetachInsideATransferOfASingleShotPass) {
    Measure(2);
    const int passes = Collect([&](int n) {
        // The next transfer is the re-trigger write of the following pass.
        if (n == 5) driver.UnplugAfterTransfers(1);
        return true;
    });
    EXPECT_EQ(passes, 6);
    EXPECT_EQ(form->SampleCount, 5);
    EXPECT_EQ(form->SampleValues[4], 491);
    EXPECT_EQ(messages.count(kDisconnected), 1);
    EXPECT_EQ(messages.texts.size(), 1);
}

TEST_F(CollectTest, ClosingTheWindowDuringARunEndsTheRunAndTheProgram) {
    int closed = 0;
    form->onClosed = [&] { ++closed; };
    const int passes = Collect([&](int n) {
        if (n == 4) QMetaObject::invokeMethod(form.get(), "close", Qt::QueuedConnection);
        return n < 50;
    });
    EXPECT_EQ(passes, 4) << "the run ends at the pass in which the window closed";
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(session.Collecting);
    EXPECT_FALSE(session.TransferBusy);
}

// ---- the simulated board's panel

struct PanelTest : FormFixture {
    SimulatorPanel panel{driver};
};

TEST_F(PanelTest, ControlsSetTheSceneAndTheCable) {
    panel.spnLux->setValue(1500);
    panel.cboScene->setCurrentIndex(panel.cboScene->findText(QStringLiteral("Sine")));
    panel.spnPeriod->setValue(2.5);
    panel.spnDepth->setValue(40);
    panel.spnDistance->setValue(25);
    EXPECT_EQ(scene().ambientLux, 1500);
    EXPECT_EQ(scene().kind, sim::LightScene::Kind::Sine);
    EXPECT_EQ(scene().periodS, 2.5);
    EXPECT_DOUBLE_EQ(scene().depth, 0.4);
    EXPECT_EQ(scene().objectDistanceMm, 25);

    // The slider sweeps the same value; full travel is the top of the largest range.
    panel.sldIr->setValue(panel.sldIr->maximum());
    EXPECT_EQ(scene().infrared, 64000);
    EXPECT_EQ(panel.spnIr->value(), 64000);

    panel.cmdUnplug->click();
    EXPECT_FALSE(driver.IsPlugged());
    EXPECT_FALSE(panel.cmdUnplug->isEnabled());
    EXPECT_EQ(panel.lblCable->text(), "Unplugged");
    Pump();
    EXPECT_FALSE(session.UsbConnected);
    panel.cmdPlug->click();
    Pump();
    EXPECT_TRUE(driver.IsPlugged());
    EXPECT_TRUE(session.UsbConnected);
}

TEST_F(PanelTest, LampsShowTheBoardLeds) {
    form->ChKLed->setChecked(true);
    form->ChKLed_Click();
    panel.RefreshFromBoard();
    EXPECT_NE(panel.lampExternal->FillColor(), QColor(70, 70, 70));
    form->ChKLed->setChecked(false);
    form->ChKLed_Click();
    panel.RefreshFromBoard();
    EXPECT_EQ(panel.lampExternal->FillColor(), QColor(70, 70, 70));
}

TEST_F(PanelTest, MenuItemOnShownWindowsReopensThePanel) {
    SimulatorMenu menu(panel);
    qApp->installEventFilter(&menu);
    form->hide();  // the fixture showed it before the menu watched
    form->show();
    form->show();  // shown again: still one item
    QList<QAction*> items = form->menuBar->findChildren<QAction*>(QStringLiteral("mnuSimulator"));
    ASSERT_EQ(items.size(), 1);
    panel.hide();
    items.front()->trigger();
    EXPECT_TRUE(panel.isVisible());
    qApp->removeEventFilter(&menu);
}

}  // namespace
}  // namespace lxm::test
