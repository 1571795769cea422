// The family form's strip chart: the shared chart with the form's samples and lux setting.
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
#include "device/parts/StripChart.h"
#include "transport/Session.h"

namespace lxm {

void frmLXM410::DrawGrid() {
    lxm::DrawGrid(*chart_->Picture1);
}

void frmLXM410::DrawGraphLabels() {
    chart_->DrawGraphLabels();
}

void frmLXM410::PreparePlot() {
    chart_->PreparePlot();
}

void frmLXM410::cmdScale_Click() {
    chart_->Scale(ShowLux);
}

void frmLXM410::txtScale_KeyPress(int KeyAscii) {
    if (KeyAscii == 13) cmdScale_Click();
}

void frmLXM410::cmdAutoScale_Click() {
    // The same signed case as the rows of the trace, so that negative proximity readings
    // keep room below zero.
    chart_->AutoScale(SampleValues, SampleCount, SignedPlotCase(), [this] { cmdCollectData_Click(); });
}

void frmLXM410::cmdSaveScreen_Click() {
    chart_->SaveScreen();
}

void frmLXM410::cmdRestoreScreen_Click() {
    chart_->RestoreScreen(cmdCollectData, cmdStopData);
}

}  // namespace lxm
