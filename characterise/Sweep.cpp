#include "characterise/Sweep.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "acquisition/Conversion.h"
#include "acquisition/RunningStats.h"
#include "acquisition/SampleStatus.h"
#include "acquisition/SensorFields.h"

namespace lxm::characterise {

namespace {

bool IsFamily(std::string_view sensor) {
    return sensor != "LXM600";
}

// The count the conversion divides by, and the resolution whose top count saturates.
struct Scale {
    std::int32_t fullScaleCounts;
    int bits;
};
Scale ScaleOf(std::string_view sensor, const Setting& s, std::string_view measure) {
    if (!IsFamily(sensor)) return measure == "prox" ? Scale{kLxm600ProxFullScale, 8} : Scale{kLxm600FullScale, 12};
    for (const Resolution& r : kFamilyResolutions)
        if (r.bits == s.resolutionBits) return {r.fullScale, r.bits};
    return {kFamilyResolutions[1].fullScale, kFamilyResolutions[1].bits};
}

// Fills the setting's figures that follow from the chip's tables alone.
Row NominalRow(std::string_view sensor, const Setting& s, std::string_view measure) {
    Row row;
    row.setting = s;
    row.nominalMs = NominalConversionMs(sensor, s, measure);
    const Scale sc = ScaleOf(sensor, s, measure);
    row.luxPerCount = ConvertToLux(1, s.rangeLux, 500000, sc.fullScaleCounts);
    row.fullScaleLux = ConvertToLux(double(TopCount(sc.bits)), s.rangeLux, 500000, sc.fullScaleCounts);
    return row;
}

// A setting whose readings never change is no quieter than its step: the noise a row is
// judged by is never less than the quantisation's (one step over the root of 12).
double NoiseFloor(const Row& r) {
    return std::max(r.sdLux, r.luxPerCount / std::sqrt(12.0));
}

std::optional<std::size_t> Best(const std::vector<Row>& rows) {
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i].clean() && (!best || NoiseFloor(rows[i]) < NoiseFloor(rows[*best]))) best = i;
    return best;
}

// Restores the target on every way out; a normal end restores through Finish, which can report
// a failure to restore, while an exception on its way out is not to be replaced by another.
class RestoreGuard {
public:
    explicit RestoreGuard(SweepTarget& target) : target_(target) {}
    ~RestoreGuard() {
        if (armed_) try {
                target_.Restore();
            } catch (...) {
            }
    }
    QString Finish() {
        armed_ = false;
        try {
            target_.Restore();
        } catch (const std::exception& e) {
            return QStringLiteral("The settings before the sweep could not be written back: %1")
                .arg(QString::fromStdString(e.what()));
        }
        return {};
    }

private:
    SweepTarget& target_;
    bool armed_ = true;
};

}  // namespace

double NominalConversionMs(std::string_view sensor, const Setting& s, std::string_view measure) {
    if (!IsFamily(sensor)) return double(measure == "prox" ? kLxm600ProxConversionUs : kLxm600ConversionUs) / 1000.0;
    return double(ConversionMicros(s.resolutionBits)) / 1000.0;
}

QString Result::unit() const {
    return measure == "als" ? QStringLiteral("lux") : QStringLiteral("lux-equivalent");
}

Result Run(SweepTarget& target, Clock& clock, const Options& options, const Progress& progress,
           const RowDone& rowDone) {
    Result result;
    result.sensor = target.Sensor();
    result.measure = options.measure;
    result.referenceLux = options.referenceLux;
    result.started = clock.Now();
    result.image = target.Image();
    const std::vector<Setting> settings = options.settings.empty() ? target.Settings() : options.settings;
    result.planned = settings.size();
    const int n = std::max(1, options.readings);
    result.readingsPerSetting = n;
    const int total = int(settings.size()) * n;

    // The time left: what is still to convert, plus the overhead per reading seen so far.
    std::vector<double> nominal;
    for (const Setting& s : settings) nominal.push_back(NominalConversionMs(result.sensor, s, options.measure));
    const std::int64_t startUs = clock.Micros();
    double nominalDoneMs = 0;
    int done = 0;
    auto secondsLeft = [&](std::size_t setting, int readingsLeftHere) {
        const double elapsedMs = double(clock.Micros() - startUs) / 1000.0;
        const double overheadMs = done > 0 ? std::max(0.0, (elapsedMs - nominalDoneMs) / done) : 0;
        double ms = readingsLeftHere * (nominal[setting] + overheadMs);
        for (std::size_t j = setting + 1; j < settings.size(); ++j) ms += (n + 1) * nominal[j] + n * overheadMs;
        return ms / 1000.0;
    };

    RestoreGuard guard(target);
    for (std::size_t i = 0; i < settings.size() && !result.cancelled && result.error.isEmpty(); ++i) {
        const Setting& s = settings[i];
        Row row = NominalRow(result.sensor, s, options.measure);
        RunningStats stats;
        double lo = std::numeric_limits<double>::infinity(), hi = -lo;
        std::int64_t readUs = 0;
        // A board that goes away ends the sweep with what it measured, the setting under way
        // included.
        try {
            target.Apply(s, options.measure);
            // A setting written mid-conversion leaves a result of the old one: wait one whole
            // conversion of the new one before a reading counts.
            clock.SleepMicros(std::llround(row.nominalMs * 1000.0));
            nominalDoneMs += row.nominalMs;
            for (int k = 0; k < n; ++k) {
                const std::int64_t t0 = clock.Micros();
                const measure::Reading r = target.Read();
                readUs += clock.Micros() - t0;
                stats.Add(double(r.raw), r.status);
                if (r.status != SampleStatus::Failed) {
                    lo = std::min(lo, double(r.raw));
                    hi = std::max(hi, double(r.raw));
                }
                ++done;
                nominalDoneMs += row.nominalMs;
                row.measuredMs = double(readUs) / 1000.0 / (k + 1);
                if (progress && !progress(done, total, s, secondsLeft(i, n - k - 1))) {
                    result.cancelled = true;
                    break;
                }
            }
        } catch (const measure::Error& e) {
            result.error = QString::fromStdString(e.what());
        }
        row.readings = int(stats.Count());
        row.failed = int(stats.Failed());
        row.saturated = int(stats.Saturated());
        row.early = int(stats.Early());
        row.meanCount = stats.Mean();
        row.sdCount = stats.StdDev();
        row.peakToPeak = row.readings > 0 ? hi - lo : 0;
        row.meanLux = row.meanCount * row.luxPerCount;
        row.sdLux = row.sdCount * row.luxPerCount;
        if (options.referenceLux && *options.referenceLux > 0 && options.measure == "als" && row.readings > 0)
            row.errorPercent = (row.meanLux - *options.referenceLux) / *options.referenceLux * 100.0;
        if (row.readings + row.failed > 0) {
            result.rows.push_back(row);
            if (rowDone) rowDone(result.rows.back());
        }
    }
    const QString restoreError = guard.Finish();
    if (result.error.isEmpty()) result.error = restoreError;
    result.best = Best(result.rows);
    result.seconds = double(clock.Micros() - startUs) / 1e6;
    return result;
}

}  // namespace lxm::characterise
