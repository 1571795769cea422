#include "device/parts/StripChart.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

#include "acquisition/ChartPicture.h"
#include "acquisition/GraphDrawing.h"
#include "acquisition/ModWaveform_ALS.h"
#include "acquisition/PictureBox.h"
#include "acquisition/Recording.h"  // the file dialog's filter and extension
#include "acquisition/Rescale.h"
#include "core/VbText.h"
#include "core/Yield.h"
#include "device/FormFit.h"
#include "device/parts/Controls.h"
#include "transport/Session.h"

namespace lxm {

StripChart::StripChart(Session& session, PlotState& plot, bool withTestTrace, QWidget* parent)
    : QGroupBox(QStringLiteral("Real Time Graph"), parent), s_(session), plot_(plot) {
    auto* gg = new QGridLayout(this);
    Picture2 = MakeLabelPicture(this);
    Picture1 = MakeGraphPicture(Picture2);
    PlaceGraph(*Picture2, *Picture1);
    // The chart takes the room the window gives it; labels are drawn for the scale it shows at.
    Picture2->SetFitToWidget(true);
    connect(Picture2, &PictureBox::Rescaled, this, [this] { DrawGraphLabels(); });
    Picture1->setToolTip(QStringLiteral("Real Time Graph Display of Light Level."));
    Picture3 = new QWidget(this);
    Picture3->setFixedSize(40, 40);
    Picture3->setAutoFillBackground(true);
    Picture3->setToolTip(QStringLiteral("Light level"));
    gg->addWidget(Picture2, 0, 0, 1, 4);
    lblScaleCaption = new QLabel(QStringLiteral("Scale Max    Scale Min"), this);
    txtScale = MakeBox(this, QStringLiteral("25000"), 64);
    txtScale->setToolTip(QStringLiteral(
        "Enter a number here followed by the \"Enter\" key to set the Max range toa specific number."));
    txtScaleMin = MakeBox(this, QStringLiteral("-25000"), 64);
    txtScale2 = MakeBox(this, QStringLiteral("65535"), 64);
    txtScaleMin2 = MakeBox(this, QString(), 64);
    cmdAutoScale = new QPushButton(QStringLiteral("Automatic Re-Scale"), this);
    cmdAutoScale->setToolTip(QStringLiteral(
        "If measurements are executing, click here for an automatic calculation of the Graph Scaling.\n"
        "After more than 5 readings: the scale goes to the highest reading plus 15 %, the traces are "
        "cleared and the collection starts again."));
    cmdScale = new QPushButton(QStringLiteral("Manual Re-Scale"), this);
    cmdScale->setToolTip(
        QStringLiteral("Updates Graph Scaling based on value enter into the \"Scale Max\" entry box."));
    cmdSaveScreen = new QPushButton(QStringLiteral("Save Screen"), this);
    cmdSaveScreen->setToolTip(QStringLiteral(
        "Keeps the chart as it is now, traces included, as its background: \"Clear Graph\" and every "
        "re-scale go back to it"));
    cmdRestoreScreen = new QPushButton(QStringLiteral("Clear Graph"), this);
    cmdRestoreScreen->setToolTip(QStringLiteral(
        "Stops a running collection and erases the traces back to the background (the empty grid, or "
        "what \"Save Screen\" kept)"));
    cmdSavePicture = new QPushButton(QStringLiteral("Save Picture"), this);
    cmdSavePicture->setToolTip(QStringLiteral("Saves the graph with its scale as a PNG picture file."));
    // Scale boxes in one row and the buttons in another under the chart, the swatch at the end.
    auto* scaleRow = new QHBoxLayout;
    scaleRow->addWidget(lblScaleCaption);
    for (QLineEdit* box : {txtScale, txtScaleMin, txtScale2, txtScaleMin2}) scaleRow->addWidget(box);
    scaleRow->addStretch(1);
    scaleRow->addWidget(new QLabel(QStringLiteral("Light"), this));
    scaleRow->addWidget(Picture3);
    auto* buttonRow = new QHBoxLayout;
    for (QPushButton* b : {cmdScale, cmdAutoScale, cmdSaveScreen, cmdRestoreScreen}) buttonRow->addWidget(b);
    buttonRow->insertWidget(3, cmdSavePicture);
    gg->addLayout(scaleRow, 1, 0, 1, 4);
    gg->addLayout(buttonRow, 2, 0, 1, 4);
    // The test staircase's button has no room in the button row; the form places it.
    if (withTestTrace) {
        cmdDrawTrace = new QPushButton(QStringLiteral("Draw Trace"), this);
        cmdDrawTrace->setToolTip(QStringLiteral("Draws a test staircase on the graph"));
        connect(cmdDrawTrace, &QPushButton::clicked, this, [this] { DrawTrace(); });
    }
    connect(cmdSaveScreen, &QPushButton::clicked, this, [this] { SaveScreen(); });
    connect(cmdSavePicture, &QPushButton::clicked, this, [this] { SavePicture(); });
    buttonRow->addStretch(1);
    gg->setRowStretch(0, 1);
    // Buttons that hide while they work keep their room, so nothing moves under the pointer.
    KeepRoomWhenHidden({cmdSaveScreen, cmdRestoreScreen});
}

void StripChart::DrawGraphLabels() {
    lxm::DrawGraphLabels(*Picture2, *Picture1, plot_);
}

void StripChart::PreparePlot(const QString& max, const QString& min) {
    txtScale2->setText(max);
    txtScale->setText(max);
    txtScaleMin->setText(min);
    txtScaleMin2->setText(min);
    plot_.ScaleMax = std::int32_t(RoundEven(Val(txtScale2->text()) + 1));
    PreparePlot();
}

void StripChart::PreparePlot() {
    plot_.AxisCaption = QStringLiteral("AD Cnt");
    plot_.AxisCaption2 = QStringLiteral("AD Cnt");
    plot_.TraceColour = QColor(255, 0, 0);
    for (int i = 0; i < 11; ++i) plot_.SampleScaleLabels[i] = QString::number(40 * i);
    plot_.TracePixels.fill(1);
    plot_.TracePixels2.fill(1);
    Picture1->Cls();
    lxm::DrawGrid(*Picture1);
    DrawGraphLabels();
    ModWaveform_ALS::SaveGraphBackground(*Picture1, plot_);
}

void StripChart::Scale(bool showLux) {
    ApplyScale(ManualRescale(txtScale->text(), txtScaleMin->text(), txtScale2->text(), showLux), plot_);
    Redraw();
}

void StripChart::Redraw() {
    DrawGraphLabels();
    ModWaveform_ALS::RestoreGraphBackground(*Picture1, plot_);
}

void StripChart::AutoScale(std::span<const double> samples, std::int32_t sampleCount, bool signedCase,
                           const std::function<void()>& restart) {
    auto result = AutoRescale(samples, sampleCount, signedCase);
    if (!result) {
        DoEvents();
        return;
    }
    DoEvents();
    txtScale->setText(result->txtScale);
    DoEvents();
    ApplyScale(*result, plot_);
    txtScaleMin->setText(result->txtScaleMin);
    s_.Collecting = false;
    DoEvents();
    if (s_.TransferBusy) {
        DoEvents();
        s_.TransferBusy = false;
    }
    DrawGraphLabels();
    std::fill(plot_.TracePixels.begin(), plot_.TracePixels.begin() + kTraceNewest + 1, 1);
    ModWaveform_ALS::RestoreGraphBackground(*Picture1, plot_);
    restart();
}

void StripChart::SaveScreen() {
    cmdSaveScreen->hide();
    Picture1->SettleDrawing();
    ModWaveform_ALS::SaveGraphBackground(*Picture1, plot_);
    cmdSaveScreen->show();
}

void StripChart::SavePicture() {
    const auto chosen = s_.files.SaveFile(QStringLiteral("Save Picture"), QString(),
                                          DialogFilter(QStringLiteral("PNG Pictures (*.png)|*.png")));
    if (!chosen || chosen->isEmpty()) return;
    const QString path = WithDefaultExtension(*chosen, QStringLiteral("*.png"));
    Picture1->SettleDrawing();
    const QString reason = SavePng(ChartPicture(*Picture2, *Picture1), path);
    if (!reason.isEmpty())
        s_.messages.MsgBox(QStringLiteral("Could not save the picture to \"") + path +
                           QStringLiteral("\": ") + reason +
                           QStringLiteral(". Click \"Save Picture\" again and choose another file."));
}

void StripChart::RestoreScreen(QPushButton* start, QPushButton* stop) {
    s_.Collecting = false;
    start->setEnabled(false);
    stop->hide();
    // Give a running collection loop the chance to leave its drawing step before the picture
    // is touched.
    for (int i = 0; i < 1000; ++i) {
        DoEvents();
        DoEvents();
    }
    s_.clock.Sleep(100);
    cmdRestoreScreen->hide();
    ModWaveform_ALS::RestoreGraphBackground(*Picture1, plot_);
    cmdRestoreScreen->show();
    start->setEnabled(true);
}

void StripChart::DrawTrace() {
    plot_.TracePixels = ModWaveform_ALS::StaircaseRows();
    ModWaveform_ALS::PlotDots(*Picture1, plot_.TracePixels);
}

void StripChart::SetSwatch(int red, bool showNow) {
    wantedRed_ = red;
    if (showNow) ShowSwatch();
}

void StripChart::ShowSwatch() {
    // A palette change goes round every child and sends events; a chart nobody sees (a
    // collection without a window) takes its colour when it is shown.
    if (isVisible()) ApplySwatch();
}

void StripChart::showEvent(QShowEvent* event) {
    ApplySwatch();
    QGroupBox::showEvent(event);
}

void StripChart::ApplySwatch() {
    const int red = wantedRed_;
    if (red == swatchRed_) return;
    swatchRed_ = red;
    // Below one count the swatch gets the colour value -1, whose low three bytes are white.
    const QColor colour = red < 0 ? QColor(255, 255, 255) : QColor(red, 0, 0);
    QPalette p = Picture3->palette();
    p.setColor(QPalette::Window, colour);
    Picture3->setPalette(p);
}

}  // namespace lxm
