#pragma once

#include <QGroupBox>
#include <cstdint>
#include <functional>
#include <span>

#include "acquisition/PlotState.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace lxm {

class PictureBox;
class Session;

// The strip chart of a device form: the graph, its label strip, the light swatch, the scale
// boxes and the buttons that re-scale, save and clear it. It draws from the form's PlotState.
class StripChart : public QGroupBox {
public:
    // withTestTrace: the form has the "Draw Trace" button of the test staircase.
    StripChart(Session& session, PlotState& plot, bool withTestTrace, QWidget* parent);

    PictureBox* Picture1 = nullptr;  // graph
    PictureBox* Picture2 = nullptr;  // label strip
    QWidget* Picture3 = nullptr;     // light swatch
    QLineEdit* txtScale = nullptr;
    QLineEdit* txtScaleMin = nullptr;
    QLineEdit* txtScale2 = nullptr;
    QLineEdit* txtScaleMin2 = nullptr;
    QLabel* lblScaleCaption = nullptr;
    QPushButton* cmdAutoScale = nullptr;
    QPushButton* cmdScale = nullptr;
    QPushButton* cmdSaveScreen = nullptr;
    QPushButton* cmdRestoreScreen = nullptr;
    QPushButton* cmdSavePicture = nullptr;
    QPushButton* cmdDrawTrace = nullptr;  // only withTestTrace

    // Form load: both scales from max and min (the plot's top from the right-hand one), the
    // captions, sample axis, empty traces, grid and labels, saved as the background.
    void PreparePlot(const QString& max, const QString& min);
    void PreparePlot();
    void DrawGraphLabels();
    // "Manual Re-Scale"; showLux keeps the right-hand column apart from the left.
    void Scale(bool showLux);
    // The scale and the graph drawn again from the plot state as it stands.
    void Redraw();
    // "Automatic Re-Scale" over the form's samples; restart runs the form's collection again.
    void AutoScale(std::span<const double> samples, std::int32_t sampleCount, bool signedCase,
                   const std::function<void()>& restart);
    void SaveScreen();
    // The graph with its labels as a PNG file chosen in the file dialog.
    void SavePicture();
    // "Clear Graph": ends a running collection first, with the form's Start and Stop buttons
    // out of reach until the picture is clear.
    void RestoreScreen(QPushButton* start, QPushButton* stop);
    // The test staircase.
    void DrawTrace();
    // The swatch's red level, -1 for "below one count". A collection pass keeps it for
    // ShowSwatch, which it calls with the live boxes.
    void SetSwatch(int red, bool showNow = true);
    void ShowSwatch();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void ApplySwatch();

    Session& s_;
    PlotState& plot_;
    int swatchRed_ = -2;  // shown
    int wantedRed_ = -2;  // asked for
};

}  // namespace lxm
