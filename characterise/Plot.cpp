#include "characterise/Sweep.h"

namespace lxm::characterise {

std::optional<QString> WritePlot(const Result&, const QString& path) {
    return QStringLiteral("The plot could not be written to %1: not yet drawn").arg(path);
}

}  // namespace lxm::characterise
