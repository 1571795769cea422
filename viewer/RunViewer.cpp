#include "RunViewer.h"

#include <QActionGroup>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QScreen>
#include <QMenuBar>
#include <QStatusBar>
#include <QTableWidget>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>
#include <QWheelEvent>

#include "core/MenuBar.h"
#include "core/Seams.h"
#include "viewer/LoadRuns.h"
#include "viewer/RunPlot.h"
#include "viewer/SpanStats.h"

namespace lxm::viewer {

namespace {

QString Num(double v) {
    return QString::number(v, 'g', 7);
}

}  // namespace

RunViewer::RunViewer(Messages& messages, FileDialogs& files, QWidget* parent)
    : QMainWindow(parent), messages_(messages), files_(files) {
    setWindowTitle(QStringLiteral("Run Viewer"));
    setAttribute(Qt::WA_DeleteOnClose);
    BuildLayout();
    // Most of the screen, whole on a 1280x800 one.
    const QRect screen = this->screen()->availableGeometry();
    resize(std::min(1500, screen.width() * 85 / 100), std::min(950, screen.height() * 85 / 100));
}

void RunViewer::BuildLayout() {
    QMenu* file = MenuNamed(*menuBar(), QStringLiteral("File"));
    QAction* mnuAddRun = file->addAction(QStringLiteral("Add Run..."));
    QAction* png = file->addAction(QStringLiteral("Export PNG..."));
    QAction* svg = file->addAction(QStringLiteral("Export SVG..."));
    file->addSeparator();
    QAction* close = file->addAction(QStringLiteral("Close"));
    connect(mnuAddRun, &QAction::triggered, this, [this] {
        const QStringList paths = files_.OpenFiles(QStringLiteral("Add Run"), QString(),
                                                   QStringLiteral("Logs (*.csv *.txt);;All Files (*)"));
        if (!paths.isEmpty()) OpenFiles(paths);
    });
    connect(png, &QAction::triggered, this, [this] { ExportPicture(QStringLiteral("png")); });
    connect(svg, &QAction::triggered, this, [this] { ExportPicture(QStringLiteral("svg")); });
    connect(close, &QAction::triggered, this, &QWidget::close);

    QToolBar* tools = addToolBar(QStringLiteral("View"));
    tools->setMovable(false);
    auto* modes = new QActionGroup(this);
    QAction* actPan = tools->addAction(QStringLiteral("Pan"));
    actPan->setToolTip(QStringLiteral("Drag to move the view; the wheel zooms time and value, with Ctrl only time, "
                                      "with Shift only value"));
    QAction* actBoxZoom = tools->addAction(QStringLiteral("Box Zoom"));
    actBoxZoom->setToolTip(QStringLiteral("Drag a box to zoom into it"));
    QAction* actSpan = tools->addAction(QStringLiteral("Select Span"));
    actSpan->setToolTip(QStringLiteral("Drag across the time axis to sum up that span instead of the visible one"));
    for (QAction* a : {actPan, actBoxZoom, actSpan}) {
        a->setCheckable(true);
        modes->addAction(a);
    }
    actPan->setChecked(true);
    tools->addSeparator();
    QAction* reset = tools->addAction(QStringLiteral("Reset View"));
    reset->setToolTip(QStringLiteral("Show every run whole and forget the selected span"));
    connect(reset, &QAction::triggered, this, [this] {
        SelectSpan(std::nullopt);
        ResetView();
    });

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    plot_ = new RunPlot(central);
    plot_->setMinimumHeight(300);
    layout->addWidget(plot_, 1);

    auto* shiftRow = new QHBoxLayout;
    statsTitle_ = new QLabel(central);
    shiftRow->addWidget(statsTitle_, 1);
    shiftRow->addWidget(new QLabel(QStringLiteral("Shift run"), central));
    shiftRun_ = new QComboBox(central);
    shiftRun_->setMinimumContentsLength(20);
    shiftRow->addWidget(shiftRun_);
    shift_ = new QDoubleSpinBox(central);
    shift_->setRange(-1e7, 1e7);
    shift_->setDecimals(3);
    shift_->setSuffix(QStringLiteral(" s"));
    shift_->setToolTip(QStringLiteral("Moves the run along the time axis, to line up a step with another run"));
    shiftRow->addWidget(shift_);
    layout->addLayout(shiftRow);

    stats_ = new QTableWidget(0, 10, central);
    stats_->setHorizontalHeaderLabels({"Run", "N", "Mean", "SD", "Min", "Max", "Peak-peak", "Failed", "Saturated",
                                       "Early"});
    stats_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    stats_->verticalHeader()->hide();
    stats_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    stats_->setMaximumHeight(140);
    layout->addWidget(stats_);
    setCentralWidget(central);

    cursor_ = new QLabel(this);
    statusBar()->addWidget(cursor_);

    // A pan moves the range many times a second; the figures follow once it rests.
    statsTimer_ = new QTimer(this);
    statsTimer_->setSingleShot(true);
    statsTimer_->setInterval(40);
    connect(statsTimer_, &QTimer::timeout, this, &RunViewer::UpdateStats);
    connect(plot_->xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), statsTimer_,
            qOverload<>(&QTimer::start));

    connect(modes, &QActionGroup::triggered, this, [this, actBoxZoom, actSpan](QAction* a) {
        plot_->setSelectionRectMode(a == actBoxZoom ? QCP::srmZoom : a == actSpan ? QCP::srmCustom : QCP::srmNone);
    });
    connect(plot_->selectionRect(), &QCPSelectionRect::accepted, this, [this](const QRect& r, QMouseEvent*) {
        if (plot_->selectionRectMode() != QCP::srmCustom || r.width() < 2) return;
        SelectSpan(std::pair(plot_->xAxis->pixelToCoord(r.left()), plot_->xAxis->pixelToCoord(r.right())));
    });
    connect(plot_, &QCustomPlot::mouseWheel, this, [this](QWheelEvent* e) {
        Qt::Orientations o = Qt::Horizontal | Qt::Vertical;
        if (e->modifiers() & Qt::ControlModifier) o = Qt::Horizontal;
        else if (e->modifiers() & Qt::ShiftModifier) o = Qt::Vertical;
        plot_->axisRect()->setRangeZoom(o);
    });
    connect(plot_, &QCustomPlot::mouseMove, this, [this](QMouseEvent* e) { ShowCursor(e->position()); });
    connect(shiftRun_, &QComboBox::currentIndexChanged, this, [this](int i) {
        const QSignalBlocker block(shift_);
        shift_->setValue(i >= 0 ? plot_->ShiftOf(i) : 0);
    });
    connect(shift_, &QDoubleSpinBox::valueChanged, this, &RunViewer::ShiftChanged);
}

void RunViewer::OpenFiles(const QStringList& paths) {
    LoadedRuns loaded = LoadRuns(paths);
    for (Run& run : loaded.runs) {
        const QString name = QString::fromStdString(run.name);
        plot_->AddRun(std::move(run));
        shiftRun_->addItem(name);
        stats_->insertRow(stats_->rowCount());
    }
    QStringList names;
    for (int i = 0; i < plot_->RunCount(); ++i) names << QString::fromStdString(plot_->RunAt(i).name);
    setWindowTitle(QStringLiteral("Run Viewer - ") + names.join(QStringLiteral(", ")));
    ResetView();
    if (!loaded.problems.isEmpty()) messages_.MsgBox(loaded.problems);
}

void RunViewer::ResetView() {
    plot_->ResetView();
    UpdateStats();
}

void RunViewer::SelectSpan(std::optional<std::pair<double, double>> span) {
    if (span && span->first > span->second) std::swap(span->first, span->second);
    span_ = span;
    if (spanItem_) plot_->removeItem(spanItem_);
    spanItem_ = nullptr;
    if (span_) {
        spanItem_ = new QCPItemRect(plot_);
        spanItem_->topLeft->setTypeY(QCPItemPosition::ptAxisRectRatio);
        spanItem_->bottomRight->setTypeY(QCPItemPosition::ptAxisRectRatio);
        spanItem_->topLeft->setCoords(span_->first, 0);
        spanItem_->bottomRight->setCoords(span_->second, 1);
        spanItem_->setPen(Qt::NoPen);
        spanItem_->setBrush(QColor(128, 128, 128, 40));
    }
    plot_->replot();
    UpdateStats();
}

void RunViewer::UpdateStats() {
    const QCPRange visible = plot_->xAxis->range();
    const double from = span_ ? span_->first : visible.lower, to = span_ ? span_->second : visible.upper;
    statsTitle_->setText(QStringLiteral("%1 from %2 s to %3 s")
                             .arg(span_ ? QStringLiteral("Selected span") : QStringLiteral("Visible span"),
                                  Num(from), Num(to)));
    for (int i = 0; i < plot_->RunCount() && i < stats_->rowCount(); ++i) {
        const double shift = plot_->ShiftOf(i);
        const SpanStats s = StatsOver(plot_->RunAt(i), from - shift, to - shift);
        const bool any = s.n > 0;
        const QStringList cells{QString::fromStdString(plot_->RunAt(i).name),
                                QString::number(s.n),
                                any ? Num(s.mean) : QString(),
                                s.n > 1 ? Num(s.sd) : QString(),
                                any ? Num(s.min) : QString(),
                                any ? Num(s.max) : QString(),
                                any ? Num(s.PeakToPeak()) : QString(),
                                QString::number(s.failed),
                                QString::number(s.saturated),
                                QString::number(s.early)};
        for (int c = 0; c < cells.size(); ++c) {
            QTableWidgetItem* item = stats_->item(i, c);
            if (!item) stats_->setItem(i, c, item = new QTableWidgetItem);
            item->setText(cells[c]);
            if (c == 0) item->setForeground(plot_->ColourOf(i));
        }
    }
}

void RunViewer::ShowCursor(const QPointF& pixel) {
    const double t = plot_->xAxis->pixelToCoord(pixel.x());
    const double v = plot_->yAxis->pixelToCoord(pixel.y());
    cursor_->setText(QStringLiteral("time %1 s   %2 %3").arg(Num(t), plot_->ValueLabel(), Num(v)));
}

void RunViewer::ShiftChanged() {
    const int i = shiftRun_->currentIndex();
    if (i < 0) return;
    plot_->SetShift(i, shift_->value());
    UpdateStats();
}

void RunViewer::ExportPicture(const QString& suffix) {
    const auto chosen = files_.SaveFile(QStringLiteral("Export Picture"), QStringLiteral("run.") + suffix,
                                        suffix.toUpper() + QStringLiteral(" Pictures (*.") + suffix + QLatin1Char(')'));
    if (!chosen || chosen->isEmpty()) return;
    QString path = *chosen;
    if (QFileInfo(path).suffix().isEmpty()) path += QLatin1Char('.') + suffix;
    const QString error = plot_->Export(path, plot_->width(), plot_->height());
    if (!error.isEmpty())
        messages_.MsgBox(QStringLiteral("The picture could not be saved to \"%1\": %2. Choose a folder you may "
                                        "write to and export again.")
                             .arg(path, error));
}

}  // namespace lxm::viewer
