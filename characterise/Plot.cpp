#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "acquisition/Recording.h"
#include "characterise/Sweep.h"

namespace lxm::characterise {

namespace {

constexpr int kWidth = 1000, kHeight = 680;
constexpr int kLeft = 90, kRight = 30, kTop = 50;
constexpr int kPanel = 240, kGap = 50;

const QColor kMeanColour(30, 90, 200), kNoiseColour(200, 110, 20), kSaturatedColour(210, 30, 30);

struct Axis {
    double lo, hi;
    bool log;
    int top, height;
    double Y(double v) const {
        const double f = log ? (std::log10(std::max(v, lo)) - std::log10(lo)) / (std::log10(hi) - std::log10(lo))
                             : (v - lo) / (hi - lo);
        return top + height * (1.0 - std::clamp(f, 0.0, 1.0));
    }
};

// Round steps of 1, 2 or 5 times a power of ten, about five of them over the span.
double NiceStep(double span) {
    const double raw = span / 5.0;
    const double p = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 5.0})
        if (m * p >= raw) return m * p;
    return 10 * p;
}

void DrawAxis(QPainter& p, const Axis& a, const QString& label, const QColor& colour) {
    p.setPen(QColor(120, 120, 120));
    p.drawRect(kLeft, a.top, kWidth - kLeft - kRight, a.height);
    p.setPen(QColor(225, 225, 225));
    std::vector<double> ticks;
    if (a.log) {
        for (double v = a.lo; v <= a.hi * 1.0001; v *= 10) ticks.push_back(v);
    } else {
        const double step = NiceStep(a.hi - a.lo);
        for (double v = std::ceil(a.lo / step) * step; v <= a.hi + step * 1e-6; v += step) ticks.push_back(v);
    }
    for (double v : ticks) {
        const int y = int(std::lround(a.Y(v)));
        p.setPen(QColor(225, 225, 225));
        p.drawLine(kLeft + 1, y, kWidth - kRight - 1, y);
        p.setPen(Qt::black);
        p.drawText(QRect(0, y - 8, kLeft - 6, 16), Qt::AlignRight | Qt::AlignVCenter, QString::number(v, 'g', 4));
    }
    p.save();
    p.setPen(colour);
    p.translate(16, a.top + a.height / 2);
    p.rotate(-90);
    p.drawText(QRect(-a.height / 2, -10, a.height, 20), Qt::AlignCenter, label);
    p.restore();
}

QImage Draw(const Result& r) {
    QImage img(kWidth, kHeight, QImage::Format_RGB32);
    img.fill(Qt::white);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const QString unit = r.unit();
    QString title = QStringLiteral("%1 %2: mean and noise per setting, %3")
                        .arg(QString::fromStdString(r.sensor), QString::fromStdString(r.measure),
                             r.started.toString(QStringLiteral("yyyy-MM-dd hh:mm")));
    if (!r.complete()) title += QStringLiteral(" (incomplete)");
    QFont f = p.font();
    f.setPixelSize(13);
    p.setFont(f);
    p.setPen(Qt::black);
    p.drawText(QRect(0, 8, kWidth, 24), Qt::AlignCenter, title);

    const std::size_t n = std::max<std::size_t>(r.rows.size(), 1);
    const double colW = double(kWidth - kLeft - kRight) / double(n);
    auto X = [&](std::size_t i) { return kLeft + colW * (double(i) + 0.5); };

    // Mean with one SD either side, on a linear scale from 0.
    double meanHi = r.referenceLux.value_or(0);
    double noiseLo = INFINITY, noiseHi = 0;
    for (const Row& w : r.rows) {
        if (w.readings == 0) continue;
        meanHi = std::max(meanHi, w.meanLux + w.sdLux);
        if (w.sdLux > 0) noiseLo = std::min(noiseLo, w.sdLux), noiseHi = std::max(noiseHi, w.sdLux);
    }
    if (meanHi <= 0) meanHi = 1;
    meanHi = std::ceil(meanHi * 1.1 / NiceStep(meanHi * 1.1)) * NiceStep(meanHi * 1.1);
    const Axis mean{0, meanHi, false, kTop, kPanel};
    // Noise spans decades from the quietest setting to the coarsest: a log scale.
    if (!(noiseHi > 0)) noiseLo = 0.1, noiseHi = 1;
    const Axis noise{std::pow(10.0, std::floor(std::log10(noiseLo))), std::pow(10.0, std::ceil(std::log10(noiseHi) + 1e-9)),
                     true, kTop + kPanel + kGap, kPanel};

    if (r.best) {
        const double x = X(*r.best);
        p.fillRect(QRectF(x - colW / 2, kTop, colW, kPanel * 2 + kGap), QColor(220, 245, 220));
    }
    DrawAxis(p, mean, QStringLiteral("mean %1 (bars: 1 SD)").arg(unit), kMeanColour);
    DrawAxis(p, noise, QStringLiteral("noise: SD in %1").arg(unit), kNoiseColour);
    if (r.referenceLux) {
        p.setPen(QPen(Qt::darkGreen, 1, Qt::DashLine));
        const double y = mean.Y(*r.referenceLux);
        p.drawLine(QPointF(kLeft, y), QPointF(kWidth - kRight, y));
        p.drawText(QRectF(kLeft + 4, y - 18, 300, 16), Qt::AlignLeft, QStringLiteral("reference %1 lux").arg(*r.referenceLux));
    }

    QPainterPath noiseLine;
    for (std::size_t i = 0; i < r.rows.size(); ++i) {
        const Row& w = r.rows[i];
        const double x = X(i);
        p.setPen(Qt::black);
        const QString label = w.setting.resolutionBits
                                  ? QStringLiteral("%1\n%2 b").arg(w.setting.rangeLux).arg(w.setting.resolutionBits)
                                  : QString::number(w.setting.rangeLux);
        p.drawText(QRectF(x - colW / 2, noise.top + noise.height + 4, colW, 34), Qt::AlignHCenter | Qt::AlignTop, label);
        if (w.readings == 0) continue;
        // A saturated setting's mean is only a floor of the light: red, so it is never read as
        // the light.
        const QColor c = w.clean() ? kMeanColour : kSaturatedColour;
        p.setPen(QPen(c, 1.5));
        const double y = mean.Y(w.meanLux);
        p.drawLine(QPointF(x, mean.Y(w.meanLux - w.sdLux)), QPointF(x, mean.Y(w.meanLux + w.sdLux)));
        p.drawLine(QPointF(x - 4, mean.Y(w.meanLux - w.sdLux)), QPointF(x + 4, mean.Y(w.meanLux - w.sdLux)));
        p.drawLine(QPointF(x - 4, mean.Y(w.meanLux + w.sdLux)), QPointF(x + 4, mean.Y(w.meanLux + w.sdLux)));
        p.setBrush(c);
        p.drawEllipse(QPointF(x, y), 3.5, 3.5);
        const QPointF pn(x, noise.Y(w.sdLux));
        if (noiseLine.elementCount() == 0)
            noiseLine.moveTo(pn);
        else
            noiseLine.lineTo(pn);
        p.setPen(QPen(w.clean() ? kNoiseColour : kSaturatedColour, 1.5));
        // No spread at all has no place on a log scale: an open mark on the floor, labelled.
        p.setBrush(w.sdLux > 0 ? (w.clean() ? kNoiseColour : kSaturatedColour) : QColor(Qt::white));
        p.drawRect(QRectF(pn.x() - 3, pn.y() - 3, 6, 6));
        if (!(w.sdLux > 0)) p.drawText(QRectF(x - 20, pn.y() - 22, 40, 16), Qt::AlignCenter, QStringLiteral("0"));
    }
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(kNoiseColour, 1));
    p.drawPath(noiseLine);

    p.setPen(Qt::black);
    p.drawText(QRect(kLeft, kHeight - 22, kWidth - kLeft - kRight, 18), Qt::AlignLeft,
               QStringLiteral("range (lux) and resolution; red: saturated, failed or early readings; green: the best "
                              "setting"));
    return img;
}

}  // namespace

std::optional<QString> WritePlot(const Result& r, const QString& path) {
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!Draw(r).save(&buffer, "PNG"))
        return QStringLiteral("The plot could not be written to %1: the picture could not be encoded").arg(path);
    const QString reason = WriteFileWhole(path, png, false);
    if (reason.isEmpty()) return std::nullopt;
    return QStringLiteral("The plot could not be written to %1: %2").arg(path, reason);
}

}  // namespace lxm::characterise
