#include "measure/Logging.h"

#include <cmath>

#include "acquisition/Readings.h"
#include "acquisition/SensorFields.h"

namespace lxm::measure {

SampleLogHeader LogHeader(const Board& board, int intervalMs) {
    SampleLogHeader h;
    h.sensor = QString::fromStdString(board.sensor());
    const bool family = board.sensor() != "LXM600";
    // The captions of the measurement options the user knows from the form of the chip.
    const std::string& m = board.measure();
    h.measurement = family ? QString::fromLatin1(kFamilyMeasureCaptions[std::size_t(board.measureIndex())])
                    : m.starts_with("prox") ? QStringLiteral("Proximity")
                    : m.starts_with("ir")   ? QStringLiteral("IR")
                                            : QStringLiteral("ALS");
    h.reg0 = board.image()[0];
    h.reg1 = board.image()[1];
    h.intervalMs = intervalMs;
    // The range the values are converted at, and the proximity part's own 8 bits on the LXM600,
    // as the window's log records them.
    h.rangeLux = board.luxRangeLux();
    h.resolutionBits = family || !m.starts_with("prox") ? board.resolutionBits() : kLxm600ProxBits;
    h.lux = board.luxMeasure();
    h.dual = board.dualMeasure();
    return h;
}

LoggedSample LogRow(const Sample& sample) {
    LoggedSample row;
    // A reading that is no number (a failed read, the dual mode's "NA") leaves its count empty.
    if (!std::isnan(sample.reading.value)) row.raw = sample.reading.raw;
    row.value = sample.reading.value;
    row.ir = sample.reading.ir;
    row.prox = sample.reading.prox;
    row.status = sample.reading.status;
    return row;
}

}  // namespace lxm::measure
