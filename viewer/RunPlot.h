#pragma once

#include <QString>
#include <vector>

#include <qcustomplot.h>

#include "viewer/RunLog.h"

namespace lxm::viewer {

// Runs drawn over each other against the time since each one's own start: one colour per
// run, its failed, saturated and early readings marked apart, its setting changes as dashed
// lines, a title above and the settings below. The window and the headless --plot draw the
// same picture with it. Each graph draws at most a minimum and a maximum per pixel column
// (the library's adaptive sampling), so an hour of samples pans as fast as a minute.
class RunPlot : public QCustomPlot {
    Q_OBJECT

public:
    explicit RunPlot(QWidget* parent = nullptr);

    void AddRun(Run run);
    int RunCount() const { return int(runs_.size()); }
    const Run& RunAt(int i) const { return runs_[std::size_t(i)].run; }
    QColor ColourOf(int i) const;
    double ShiftOf(int i) const { return runs_[std::size_t(i)].shift; }
    // Moves a run along the time axis, to line a step up with another run's.
    void SetShift(int i, double seconds);

    // An empty title names the runs' files.
    void SetTitle(const QString& title);
    // Time and value axes back to everything every run holds.
    void ResetView();

    // A PNG or SVG file by its suffix, of the view as it is. The system's reason on failure,
    // empty on success.
    QString Export(const QString& path, int width, int height);

    // The value axis's title: the runs' unit, or "value" when they differ or do not say.
    QString ValueLabel() const;

private:
    struct Entry {
        Run run;
        double shift = 0;
        QCPGraph* line = nullptr;
        QCPGraph* saturated = nullptr;
        QCPGraph* early = nullptr;
        QCPGraph* failed = nullptr;
        // The line's points, and the smallest and largest of every kCoarseBucket of them in
        // time order: what the graph draws while a pixel column covers many buckets.
        QSharedPointer<QCPGraphDataContainer> full, coarse;
        std::vector<QCPAbstractItem*> changeItems;
    };
    void Fill(Entry& e);
    // Picks each line's level of detail for the coming draw.
    void ChooseDetail();
    void UpdateTexts();

    std::vector<Entry> runs_;
    QString title_;
    QCPTextElement* titleElement_ = nullptr;
    QCPTextElement* footerElement_ = nullptr;
};

}  // namespace lxm::viewer
