#pragma once

#include <QMainWindow>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>
#include <vector>


class QAction;
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

    QAction* mnuAddRun = nullptr;
    QAction* actPan = nullptr;
    QAction* actBoxZoom = nullptr;
    QAction* actSpan = nullptr;

private:
    void BuildLayout();
    void UpdateStats();
    void ShowCursor(const QPointF& pixel);
    void ShiftChanged();

    Messages& messages_;
    FileDialogs& files_;
    RunPlot* plot_ = nullptr;
    QTableWidget* stats_ = nullptr;
    QLabel* statsTitle_ = nullptr;
    QLabel* cursor_ = nullptr;
    QComboBox* shiftRun_ = nullptr;
    QDoubleSpinBox* shift_ = nullptr;
    QTimer* statsTimer_ = nullptr;
    QCPItemRect* spanItem_ = nullptr;
    std::optional<std::pair<double, double>> span_;
};

}  // namespace lxm::viewer
