#include <QStringList>

#include "acquisition/Recording.h"
#include "characterise/Sweep.h"

namespace lxm::characterise {

namespace {

QString Num(double v, int digits = 6) {
    return QString::number(v, 'g', digits);
}

QString SettingText(const Setting& s) {
    return s.resolutionBits ? QStringLiteral("%1 lux, %2 bits").arg(s.rangeLux).arg(s.resolutionBits)
                            : QStringLiteral("%1 lux").arg(s.rangeLux);
}

// How the sweep ended, as the files say it: a table that stopped short is never taken for a
// whole one.
QString Status(const Result& r) {
    if (r.complete()) return QStringLiteral("complete");
    QString why = r.cancelled ? QStringLiteral("cancelled") : r.error;
    if (why.isEmpty()) why = QStringLiteral("stopped");
    return QStringLiteral("incomplete (%1 of %2 settings): %3").arg(r.rows.size()).arg(r.planned).arg(why);
}

// A row's statistics are numbers only when it has readings; a failed reading is no zero.
QString Stat(const Row& row, double v, int digits = 6) {
    return row.readings > 0 ? Num(v, digits) : QString();
}

std::optional<QString> Write(const QString& path, const QByteArray& content, const QString& what) {
    const QString reason = WriteFileWhole(path, content, false);
    if (reason.isEmpty()) return std::nullopt;
    return QStringLiteral("The %1 could not be written to %2: %3").arg(what, path, reason);
}

QStringList Registers(const Result& r) {
    const int count = r.sensor == "LXM600" ? 16 : 9;
    QStringList out;
    for (int i = 0; i < count; ++i)
        out << QStringLiteral("%1").arg(int(r.image[std::size_t(i)]), 2, 16, QLatin1Char('0')).toUpper();
    return out;
}

}  // namespace

std::optional<QString> WriteCsv(const Result& r, const QString& path) {
    const QString unit = r.unit() == QLatin1String("lux") ? QStringLiteral("lux") : QStringLiteral("lux_equivalent");
    QStringList lines;
    lines << QStringLiteral("# sensor: %1").arg(QString::fromStdString(r.sensor))
          << QStringLiteral("# measurement: %1").arg(QString::fromStdString(r.measure))
          << QStringLiteral("# started: %1").arg(r.started.toString(Qt::ISODate))
          << QStringLiteral("# registers: %1").arg(Registers(r).join(QLatin1Char(' ')));
    if (r.referenceLux) lines << QStringLiteral("# reference: %1 lux").arg(Num(*r.referenceLux));
    if (!r.scene.isEmpty()) lines << QStringLiteral("# light: %1").arg(r.scene);
    lines << QStringLiteral("# status: %1").arg(Status(r));
    lines << QStringLiteral("range_lux,resolution_bits,nominal_ms,measured_ms,full_scale_%1,%1_per_count,readings,"
                            "mean_count,sd_count,mean_%1,sd_%1,peak_to_peak_count,saturated,failed,early,"
                            "error_percent,best")
                 .arg(unit);
    for (std::size_t i = 0; i < r.rows.size(); ++i) {
        const Row& w = r.rows[i];
        lines << QStringList{QString::number(w.setting.rangeLux),
                             w.setting.resolutionBits ? QString::number(w.setting.resolutionBits) : QString(),
                             Num(w.nominalMs),
                             Stat(w, w.measuredMs),
                             Num(w.fullScaleLux, 8),
                             Num(w.luxPerCount, 8),
                             QString::number(w.readings),
                             Stat(w, w.meanCount, 8),
                             Stat(w, w.sdCount),
                             Stat(w, w.meanLux, 8),
                             Stat(w, w.sdLux),
                             Stat(w, w.peakToPeak, 8),
                             QString::number(w.saturated),
                             QString::number(w.failed),
                             QString::number(w.early),
                             w.errorPercent ? Num(*w.errorPercent, 4) : QString(),
                             r.best == i ? QStringLiteral("yes") : QString()}
                     .join(QLatin1Char(','));
    }
    return Write(path, (lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toUtf8(),
                 QStringLiteral("characterisation table"));
}

QString TableText(const Result& r) {
    const QString u = r.unit();
    QString out = QStringLiteral("%1 %2, %3 readings per setting\n")
                      .arg(QString::fromStdString(r.sensor), QString::fromStdString(r.measure))
                      .arg(r.readingsPerSetting);
    out += QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9")
               .arg(QStringLiteral("range"), 6)
               .arg(QStringLiteral("bits"), 4)
               .arg(QStringLiteral("conv ms"), 8)
               .arg(QStringLiteral("meas ms"), 8)
               .arg(QStringLiteral("full scale"), 10)
               .arg(QStringLiteral("per count"), 10)
               .arg(QStringLiteral("mean count"), 11)
               .arg(QStringLiteral("sd count"), 9)
               .arg(QStringLiteral("mean ") + u, 10);
    out += QStringLiteral(" %1 %2 %3 %4\n").arg(QStringLiteral("sd ") + u, 10).arg(QStringLiteral("p-p"), 6)
               .arg(QStringLiteral("sat/fail/early"), 14).arg(QStringLiteral("error %"), 8);
    for (std::size_t i = 0; i < r.rows.size(); ++i) {
        const Row& w = r.rows[i];
        out += QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9")
                   .arg(w.setting.rangeLux, 6)
                   .arg(w.setting.resolutionBits ? QString::number(w.setting.resolutionBits) : QStringLiteral("-"), 4)
                   .arg(Num(w.nominalMs, 4), 8)
                   .arg(Stat(w, w.measuredMs, 4), 8)
                   .arg(Num(w.fullScaleLux, 6), 10)
                   .arg(Num(w.luxPerCount, 4), 10)
                   .arg(Stat(w, w.meanCount, 7), 11)
                   .arg(Stat(w, w.sdCount, 4), 9)
                   .arg(Stat(w, w.meanLux, 6), 10);
        out += QStringLiteral(" %1 %2 %3 %4%5\n")
                   .arg(Stat(w, w.sdLux, 4), 10)
                   .arg(Stat(w, w.peakToPeak, 6), 6)
                   .arg(QStringLiteral("%1/%2/%3").arg(w.saturated).arg(w.failed).arg(w.early), 14)
                   .arg(w.errorPercent ? Num(*w.errorPercent, 3) : QString(), 8)
                   .arg(r.best == i ? QStringLiteral("  best") : QString());
    }
    if (!r.complete()) out += QStringLiteral("Sweep %1\n").arg(Status(r));
    return out;
}

std::optional<QString> WriteReport(const Result& r, const QString& path) {
    const QString u = r.unit();
    QStringList md;
    md << QStringLiteral("# Characterisation of the %1").arg(QString::fromStdString(r.sensor)) << QString();
    md << QStringLiteral("- Date: %1").arg(r.started.toString(Qt::ISODate))
       << QStringLiteral("- Measurement: %1, %2 readings per setting")
              .arg(QString::fromStdString(r.measure))
              .arg(r.readingsPerSetting)
       << QStringLiteral("- Registers before the sweep (from 00): %1").arg(Registers(r).join(QLatin1Char(' ')))
       << QStringLiteral("- Light: %1").arg(r.scene.isEmpty() ? QStringLiteral("as on the bench (not recorded)") : r.scene)
       << QStringLiteral("- Reference: %1")
              .arg(r.referenceLux ? Num(*r.referenceLux) + QStringLiteral(" lux") : QStringLiteral("none"))
       << QStringLiteral("- Sweep: %1, %2 s").arg(Status(r), Num(r.seconds, 4));
    if (r.best)
        md << QStringLiteral("- Best setting: %1 (the lowest noise with no saturated, failed or early reading)")
                  .arg(SettingText(r.rows[*r.best].setting));
    else
        md << QStringLiteral("- Best setting: none; every setting saturated, failed or read early");
    if (u != QLatin1String("lux"))
        md << QStringLiteral("- The %1 columns are the counts scaled as the range scales lux; the chip gives no lux "
                             "for this measurement")
                  .arg(u);
    md << QString()
       << QStringLiteral("| Range (lux) | Bits | Conversion (ms) | Measured (ms) | Full scale | %1 per count | Mean "
                         "count | SD count | Mean %1 | SD %1 | Peak-to-peak | Saturated | Failed | Early | Error % |")
              .arg(u)
       << QStringLiteral("|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|");
    for (std::size_t i = 0; i < r.rows.size(); ++i) {
        const Row& w = r.rows[i];
        const QString mark = r.best == i ? QStringLiteral(" **best**") : QString();
        md << QStringLiteral("| %1%2 | %3 | %4 | %5 | %6 | %7 | %8 | %9 | %10 | %11 | %12 | %13 | %14 | %15 | %16 |")
                  .arg(w.setting.rangeLux)
                  .arg(mark, w.setting.resolutionBits ? QString::number(w.setting.resolutionBits) : QStringLiteral("-"),
                       Num(w.nominalMs, 4), Stat(w, w.measuredMs, 4), Num(w.fullScaleLux, 6), Num(w.luxPerCount, 4),
                       Stat(w, w.meanCount, 7), Stat(w, w.sdCount, 4), Stat(w, w.meanLux, 6))
                  .arg(Stat(w, w.sdLux, 4), Stat(w, w.peakToPeak, 6), QString::number(w.saturated),
                       QString::number(w.failed), QString::number(w.early),
                       w.errorPercent ? Num(*w.errorPercent, 3) : QString());
    }
    return Write(path, (md.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8(), QStringLiteral("report"));
}

}  // namespace lxm::characterise
