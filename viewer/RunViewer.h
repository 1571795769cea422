#pragma once

#include <QMainWindow>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>
#include <vector>


class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QTableWidget;
class QTimer;
class QCPItemRect;

namespace lxm {
class Messages;
class FileDialogs;
}  // namespace lxm

namespace lxm::viewer {

class RunPlot;

// The window in which a user looks back at logged runs: zoom and pan on both axes, a box
// zoom, a span to sum up, a cursor read-out, a time shift per run, and the view as a picture.
class RunViewer : public QMainWindow {
    Q_OBJECT

public:
    RunViewer(Messages& messages, FileDialogs& files, QWidget* parent = nullptr);

    // Adds the runs of these files; whatever could not be read is told in one message.
    void OpenFiles(const QStringList& paths);
    void ResetView();
    // Sums up [from, to] rather than the visible span; nullopt goes back to the visible span.
    void SelectSpan(std::optional<std::pair<double, double>> span);
    void ExportPicture(const QString& suffix);

    RunPlot& plot() { return *plot_; }
    QTableWidget& statsTable() { return *stats_; }

private:
    void BuildLayout();
    void UpdateStats();
    void ShowCursor(const QPointF& pixel);
    void ShiftChanged();

    Messages& messages_;
    FileDialogs& files_;
    RunPlot* plot_ = nullptr;
    QLabel* cursor_ = nullptr;  // the time and value under the pointer
    // The figures of the visible or the selected span, and that span drawn on the plot.
    std::optional<std::pair<double, double>> span_;
    QCPItemRect* spanItem_ = nullptr;
    QLabel* statsTitle_ = nullptr;
    QTableWidget* stats_ = nullptr;
    QTimer* statsTimer_ = nullptr;
    // Which run "Shift run" moves, and by how much.
    QComboBox* shiftRun_ = nullptr;
    QDoubleSpinBox* shift_ = nullptr;
};

}  // namespace lxm::viewer
