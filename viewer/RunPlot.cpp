#include "RunPlot.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QSvgGenerator>
#include <algorithm>
#include <cmath>
#include <optional>

namespace lxm::viewer {

namespace {

// Told apart in print and by most colour-blind readers.
const QColor kColours[] = {QColor(0, 114, 178), QColor(213, 94, 0),  QColor(0, 158, 115),
                           QColor(204, 121, 167), QColor(86, 180, 233), QColor(230, 159, 0),
                           QColor(0, 0, 0)};

// A pixel column that covers several buckets draws the same extremes from the buckets as from
// the points.
constexpr std::size_t kCoarseBucket = 32;

QSharedPointer<QCPGraphDataContainer> Coarse(const std::vector<double>& t, const std::vector<double>& v,
                                             double shift) {
    QVector<QCPGraphData> out;
    out.reserve(qsizetype(t.size() / kCoarseBucket * 2 + 2));
    for (std::size_t b = 0; b < t.size(); b += kCoarseBucket) {
        const std::size_t end = std::min(t.size(), b + kCoarseBucket);
        std::size_t lo = b, hi = b;
        for (std::size_t i = b; i < end; ++i) {
            if (v[i] < v[lo]) lo = i;
            if (v[i] > v[hi]) hi = i;
        }
        out.append({t[std::min(lo, hi)] + shift, v[std::min(lo, hi)]});
        if (lo != hi) out.append({t[std::max(lo, hi)] + shift, v[std::max(lo, hi)]});
    }
    auto c = QSharedPointer<QCPGraphDataContainer>::create();
    c->set(out, true);
    return c;
}

// More dashed lines than this would hide the run; the first ones are drawn.
constexpr std::size_t kMaxChangeMarks = 200;

QVector<QCPGraphData> Points(const std::vector<double>& t, const std::vector<double>* v, double shift,
                             double fixedValue = 0) {
    QVector<QCPGraphData> out(qsizetype(t.size()));
    for (std::size_t i = 0; i < t.size(); ++i) out[qsizetype(i)] = {t[i] + shift, v ? (*v)[i] : fixedValue};
    return out;
}

QCPGraph* MarkGraph(QCustomPlot& plot, QCPAxis* valueAxis, QCPScatterStyle::ScatterShape shape,
                    const QColor& colour) {
    QCPGraph* g = plot.addGraph(plot.xAxis, valueAxis);
    g->setLineStyle(QCPGraph::lsNone);
    g->setScatterStyle(QCPScatterStyle(shape, colour, 7));
    g->removeFromLegend();
    return g;
}

QString Text(const std::string& s) {
    return QString::fromUtf8(s.data(), qsizetype(s.size()));
}

}  // namespace

RunPlot::RunPlot(QWidget* parent) : QCustomPlot(parent) {
    setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    setNoAntialiasingOnDrag(true);
    setPlottingHint(QCP::phFastPolylines, true);
    xAxis->setLabel(QStringLiteral("time since start (s)"));
    yAxis->setLabel(QStringLiteral("value"));
    // The failed readings have no value: they are marked along the bottom, on an axis of
    // their own that no zoom moves.
    yAxis2->setRange(0, 1);
    legend->setVisible(true);
    legend->setFont(QFont(font().family(), 8));
    axisRect()->insetLayout()->setInsetAlignment(0, Qt::AlignTop | Qt::AlignRight);

    connect(this, &QCustomPlot::beforeReplot, this, &RunPlot::ChooseDetail);

    plotLayout()->insertRow(0);
    titleElement_ = new QCPTextElement(this, QString(), QFont(font().family(), 12, QFont::Bold));
    plotLayout()->addElement(0, 0, titleElement_);
    plotLayout()->addElement(2, 0, footerElement_ = new QCPTextElement(this, QString(), QFont(font().family(), 8)));
}

QColor RunPlot::ColourOf(int i) const {
    return kColours[std::size_t(i) % std::size(kColours)];
}

void RunPlot::AddRun(Run run) {
    Entry& e = runs_.emplace_back();
    e.run = std::move(run);
    const QColor colour = ColourOf(int(runs_.size()) - 1);
    e.line = addGraph();
    e.line->setPen(QPen(colour, 1));
    const QString unit = e.run.unit.empty() ? QString() : QStringLiteral(" (%1)").arg(Text(e.run.unit));
    e.line->setName(Text(e.run.name) + unit + QStringLiteral(" \u2014 ") + Text(SettingsText(e.run)));
    e.saturated = MarkGraph(*this, yAxis, QCPScatterStyle::ssTriangle, colour);
    e.early = MarkGraph(*this, yAxis, QCPScatterStyle::ssCircle, colour);
    e.failed = MarkGraph(*this, yAxis2, QCPScatterStyle::ssCross, colour);
    Fill(e);
    UpdateTexts();
}

void RunPlot::Fill(Entry& e) {
    const Run& r = e.run;
    e.full = QSharedPointer<QCPGraphDataContainer>::create();
    e.full->set(Points(r.t, &r.v, e.shift), true);
    e.coarse = Coarse(r.t, r.v, e.shift);
    e.line->setData(e.full);
    e.saturated->data()->set(Points(r.saturatedT, &r.saturatedV, e.shift), true);
    e.early->data()->set(Points(r.earlyT, &r.earlyV, e.shift), true);
    // Runs stack their rows of crosses so that two runs' failures stay apart.
    const double row = 0.03 + 0.03 * double(&e - runs_.data());
    e.failed->data()->set(Points(r.failedT, nullptr, e.shift, row), true);

    for (QCPAbstractItem* item : e.changeItems) removeItem(item);
    e.changeItems.clear();
    const QColor colour = ColourOf(int(&e - runs_.data()));
    for (std::size_t i = 0; i < r.changes.size() && i < kMaxChangeMarks; ++i) {
        const SettingChange& c = r.changes[i];
        auto* line = new QCPItemStraightLine(this);
        line->setPen(QPen(colour, 1, Qt::DashLine));
        line->point1->setCoords(c.t + e.shift, 0);
        line->point2->setCoords(c.t + e.shift, 1);
        auto* label = new QCPItemText(this);
        label->setColor(colour);
        label->setPositionAlignment(Qt::AlignLeft | Qt::AlignTop);
        label->position->setTypeY(QCPItemPosition::ptAxisRectRatio);
        label->position->setCoords(c.t + e.shift, 0.02 + 0.04 * double(i % 4));
        label->setText(QStringLiteral(" ") + Text(c.key) + QStringLiteral(": ") + Text(c.value));
        label->setClipToAxisRect(true);
        e.changeItems.push_back(line);
        e.changeItems.push_back(label);
    }
}

void RunPlot::ChooseDetail() {
    const QCPRange range = xAxis->range();
    const double columns = std::max(1, axisRect()->width());
    for (Entry& e : runs_) {
        const auto lo = std::lower_bound(e.run.t.begin(), e.run.t.end(), range.lower - e.shift);
        const auto hi = std::upper_bound(lo, e.run.t.end(), range.upper - e.shift);
        const bool coarse = double(hi - lo) > columns * double(kCoarseBucket) * 2;
        const auto& wanted = coarse ? e.coarse : e.full;
        if (e.line->data() != wanted) e.line->setData(wanted);
        // Smoothing a column of thousands of strokes costs most of a draw and shows nothing.
        e.line->setAntialiased(double(hi - lo) < columns);
    }
}

void RunPlot::SetShift(int i, double seconds) {
    if (i < 0 || i >= RunCount() || !std::isfinite(seconds)) return;
    runs_[std::size_t(i)].shift = seconds;
    Fill(runs_[std::size_t(i)]);
    replot();
}

void RunPlot::SetTitle(const QString& title) {
    title_ = title;
    UpdateTexts();
}

QString RunPlot::ValueLabel() const {
    std::string unit;
    for (const Entry& e : runs_) {
        if (e.run.t.empty() && e.run.saturatedT.empty()) continue;
        // Lux and counts on one axis: the legend tells each run's unit.
        if (e.run.unit.empty()) return QStringLiteral("value");
        if (!unit.empty() && unit != e.run.unit) return QStringLiteral("value (see legend)");
        unit = e.run.unit;
    }
    return unit.empty() ? QStringLiteral("value") : QStringLiteral("value (%1)").arg(Text(unit));
}

void RunPlot::UpdateTexts() {
    QStringList names, settings;
    bool sampleAxis = false;
    for (const Entry& e : runs_) {
        names << Text(e.run.name);
        QString line = Text(e.run.name) + QStringLiteral(": ") + Text(SettingsText(e.run));
        if (e.shift != 0) line += QStringLiteral(", shifted %1 s").arg(e.shift);
        settings << line;
        sampleAxis = sampleAxis || e.run.timeIsSample;
    }
    titleElement_->setText(title_.isEmpty() ? names.join(QStringLiteral(", ")) : title_);
    settings << QStringLiteral("\u25B3 saturated   \u25CB read before its conversion ended   "
                               "\u00D7 failed (along the bottom)   - - - setting changed");
    footerElement_->setText(settings.join(QLatin1Char('\n')));
    yAxis->setLabel(ValueLabel());
    // A record block without an interval has nothing but its sample numbers to go by.
    xAxis->setLabel(sampleAxis ? QStringLiteral("time since start (s); sample number where no interval was recorded")
                               : QStringLiteral("time since start (s)"));
}

void RunPlot::ResetView() {
    std::optional<QCPRange> keys, values;
    auto widen = [](std::optional<QCPRange>& r, const QCPRange& more) {
        r = r ? QCPRange(std::min(r->lower, more.lower), std::max(r->upper, more.upper)) : more;
    };
    for (const Entry& e : runs_)
        for (QCPGraph* g : {e.line, e.saturated, e.early, e.failed}) {
            bool found = false;
            const QCPRange k = g->getKeyRange(found);
            if (!found) continue;
            widen(keys, k);
            if (g == e.failed) continue;
            const QCPRange v = g->getValueRange(found);
            if (found) widen(values, v);
        }
    QCPRange k = keys.value_or(QCPRange(0, 1)), v = values.value_or(QCPRange(0, 1));
    if (k.size() == 0) k = QCPRange(k.lower - 0.5, k.upper + 0.5);
    if (v.size() == 0) v = QCPRange(v.lower - 1, v.upper + 1);
    const double margin = v.size() * 0.05;
    xAxis->setRange(k);
    yAxis->setRange(v.lower - margin, v.upper + margin);
    replot();
}

QString RunPlot::Export(const QString& path, int width, int height) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != QLatin1String("svg") && suffix != QLatin1String("png"))
        return QStringLiteral("the picture's name must end in .png or .svg");
    // Whole or not at all: an earlier picture of that name stays until the new one is complete.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return file.errorString();
    if (suffix == QLatin1String("svg")) {
        QSvgGenerator svg;
        svg.setOutputDevice(&file);
        svg.setSize(QSize(width, height));
        svg.setViewBox(QRect(0, 0, width, height));
        svg.setTitle(titleElement_->text());
        QCPPainter painter;
        if (!painter.begin(&svg)) return QStringLiteral("the picture could not be drawn");
        toPainter(&painter, width, height);
        painter.end();
    } else if (!toPixmap(width, height).save(&file, "PNG")) {
        return file.error() != QFileDevice::NoError ? file.errorString()
                                                     : QStringLiteral("the picture could not be encoded");
    }
    if (!file.commit()) return file.errorString();
    return {};
}

}  // namespace lxm::viewer
