#pragma once

#include <QDateTime>
#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Seams.h"
#include "measure/Board.h"

// Characterisation: every setting of a chip measured in the same light, so that an engineer can
// see what each takes before it saturates, how many lux a count is, how noisy a reading is and
// which setting suits this light. No window here: the command line and the device forms' dialog
// both drive it.
namespace lxm::characterise {

// One setting of the chip. resolutionBits 0: the chip has only one resolution.
struct Setting {
    int rangeLux = 0;
    int resolutionBits = 0;
    bool operator==(const Setting&) const = default;
};

// What a sweep drives: the measuring core's board, or a device form through its own option
// handlers.
class SweepTarget {
public:
    virtual ~SweepTarget() = default;
    virtual std::string Sensor() const = 0;  // "LXM410" ... "LXM600"
    // Every setting the chip offers, in sweep order.
    virtual std::vector<Setting> Settings() const = 0;
    // measure: "als", "ir" or "prox".
    virtual void Apply(const Setting& s, std::string_view measure) = 0;
    // One reading, triggered and waited for. May throw measure::Error (the board went away).
    virtual measure::Reading Read() = 0;
    // The register image, for the report.
    virtual std::array<std::uint8_t, 256> Image() const = 0;
    // Every setting as it was before the sweep began (registers, controls, derived state).
    virtual void Restore() = 0;
};

struct Options {
    std::string measure = "als";  // "als", "ir" or "prox"
    int readings = 64;            // per setting
    // What a lux meter beside the sensor reads; gives each row its error.
    std::optional<double> referenceLux;
    std::vector<Setting> settings;  // empty: every setting the target offers
};

// The figures of one setting. Counts are the chip's; the value columns (named lux) are the
// count times luxPerCount: lux for an ALS measurement, the same scale of the range otherwise.
struct Row {
    Setting setting;
    double nominalMs = 0;   // the conversion time the resolution stands for
    double measuredMs = 0;  // mean time one reading took, trigger to result, transfers included
    double fullScaleLux = 0;  // the value of the largest count: the most the setting can show
    double luxPerCount = 0;
    double meanCount = 0, sdCount = 0;
    double meanLux = 0, sdLux = 0;  // sdLux: the noise
    double peakToPeak = 0;          // in counts
    int readings = 0;               // counted in the statistics (not failed)
    int saturated = 0, failed = 0, early = 0;
    std::optional<double> errorPercent;  // mean lux against the reference
    // No saturated, failed or early reading: the row's figures describe the setting.
    bool clean() const { return saturated == 0 && failed == 0 && early == 0 && readings > 0; }
};

struct Result {
    std::string sensor;
    std::string measure;
    std::vector<Row> rows;          // the settings measured, in order; fewer when stopped
    std::optional<std::size_t> best;  // index into rows: the lowest sdLux among clean rows
    std::size_t planned = 0;        // settings the sweep was to measure
    int readingsPerSetting = 0;
    bool cancelled = false;
    QString error;  // why the sweep ended early (board gone, ...); empty when it did not
    std::array<std::uint8_t, 256> image{};  // registers before the sweep (restored after it)
    QDateTime started;
    double seconds = 0;  // the sweep's wall time
    std::optional<double> referenceLux;
    // The light as the simulated board sets it, for the exports; empty on a real board. Run
    // leaves it empty: the caller, who knows the bench, fills it in.
    QString scene;
    bool complete() const { return !cancelled && error.isEmpty() && rows.size() == planned; }
    QString unit() const;  // "lux", "IR units" or "counts x range"
};

// Progress after every reading: readings done and in all, the setting under way, seconds
// left. Returning false cancels, within one reading.
using Progress = std::function<bool(int done, int total, const Setting& under, double secondsLeft)>;

// Each setting's row as soon as its readings are in, so that a window can show the sweep
// filling in rather than at its end.
using RowDone = std::function<void(const Row& row)>;

// Measures every setting and restores the target's settings on every way out. A setting's
// readings count only after one whole nominal conversion since it was written.
Result Run(SweepTarget& target, Clock& clock, const Options& options, const Progress& progress = {},
           const RowDone& rowDone = {});

// The nominal conversion time (ms) of a setting of a sensor for a measurement.
double NominalConversionMs(std::string_view sensor, const Setting& s, std::string_view measure);

// Exports, each written atomically; a failure returns a message naming the path and the
// system's reason.
std::optional<QString> WriteCsv(const Result& result, const QString& path);
std::optional<QString> WritePlot(const Result& result, const QString& path);    // PNG
std::optional<QString> WriteReport(const Result& result, const QString& path);  // Markdown

// The table as text for a terminal, one line per setting.
QString TableText(const Result& result);

// The measuring core's board as a sweep target: the chip's own options, one-shot readings.
class BoardTarget final : public SweepTarget {
public:
    explicit BoardTarget(measure::Board& board);
    std::string Sensor() const override;
    std::vector<Setting> Settings() const override;
    void Apply(const Setting& s, std::string_view measure) override;
    measure::Reading Read() override;
    std::array<std::uint8_t, 256> Image() const override;
    void Restore() override;

private:
    measure::Board& board_;
    std::array<std::uint8_t, 256> image_;
    int range_, bits_;
    std::string measure_;
};

}  // namespace lxm::characterise
