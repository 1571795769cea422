#include "measure/Logging.h"

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
    h.rangeLux = board.rangeLux();
    h.resolutionBits = family ? board.resolutionBits() : 0;  // the LXM600 has one
    h.lux = board.luxMeasure();
    return h;
}

LoggedSample LogRow(const Sample& sample) {
    LoggedSample row;
    row.raw = sample.reading.raw;
    row.value = sample.reading.value;
    row.status = sample.reading.status;
    return row;
}

}  // namespace lxm::measure
