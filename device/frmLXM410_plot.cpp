// The strip chart's buttons on the family form: re-scaling, saving and clearing the screen.
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "acquisition/GraphDrawing.h"
#include "acquisition/ModWaveform_ALS.h"
#include "acquisition/PictureBox.h"
#include "acquisition/Rescale.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/frmLXM410.h"
#include "transport/Session.h"

namespace lxm {

void frmLXM410::DrawGrid() {
    lxm::DrawGrid(*Picture1);
}

void frmLXM410::DrawGraphLabels() {
    lxm::DrawGraphLabels(*Picture2, *Picture1, plot);
}

void frmLXM410::PreparePlot() {
    plot.AxisCaption = QStringLiteral("AD Cnt");
    plot.AxisCaption2 = QStringLiteral("AD Cnt");
    plot.TraceColour = QColor(255, 0, 0);
    for (int i = 0; i < 11; ++i) plot.SampleScaleLabels[i] = QString::number(40 * i);
    plot.TracePixels.fill(1);
    plot.TracePixels2.fill(1);
    Picture1->Cls();
    DrawGrid();
    DrawGraphLabels();
    ModWaveform_ALS::SaveGraphBackground(*Picture1, plot);
}

void frmLXM410::cmdScale_Click() {
    ApplyScale(ManualRescale(txtScale->text(), txtScaleMin->text(), txtScale2->text(), ShowLux), plot);
    DrawGraphLabels();
    ModWaveform_ALS::RestoreGraphBackground(*Picture1, plot);
}

void frmLXM410::txtScale_KeyPress(int KeyAscii) {
    if (KeyAscii == 13) cmdScale_Click();
}

void frmLXM410::cmdAutoScale_Click() {
    // The same signed case as the rows of the trace, so that negative proximity readings
    // keep room below zero.
    auto result = AutoRescale(SampleValues, SampleCount, SignedPlotCase());
    if (!result) {
        DoEvents();
        return;
    }
    DoEvents();
    txtScale->setText(result->txtScale);
    DoEvents();
    ApplyScale(*result, plot);
    txtScaleMin->setText(result->txtScaleMin);
    s_.Collecting = false;
    DoEvents();
    if (s_.TransferBusy) {
        DoEvents();
        s_.TransferBusy = false;
    }
    DrawGraphLabels();
    std::fill(plot.TracePixels.begin(), plot.TracePixels.begin() + kTraceNewest + 1, 1);
    ModWaveform_ALS::RestoreGraphBackground(*Picture1, plot);
    cmdCollectData_Click();
}

void frmLXM410::cmdSaveScreen_Click() {
    cmdSaveScreen->hide();
    ModWaveform_ALS::SaveGraphBackground(*Picture1, plot);
    cmdSaveScreen->show();
}

void frmLXM410::cmdRestoreScreen_Click() {
    s_.Collecting = false;
    cmdCollectData->setEnabled(false);
    cmdStopData->hide();
    // Give a running collection loop the chance to leave its drawing step before the picture
    // is touched.
    for (int i = 0; i < 1000; ++i) {
        DoEvents();
        DoEvents();
    }
    s_.clock.Sleep(100);
    cmdRestoreScreen->hide();
    ModWaveform_ALS::RestoreGraphBackground(*Picture1, plot);
    cmdRestoreScreen->show();
    cmdCollectData->setEnabled(true);
}

}  // namespace lxm
