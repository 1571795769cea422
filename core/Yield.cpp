#include "Yield.h"

#include <QCoreApplication>

namespace lxm {

void DoEvents() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

}  // namespace lxm
