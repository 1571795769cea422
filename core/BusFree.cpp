#include "BusFree.h"

#include <QTimer>

#include "core/SessionState.h"

namespace lxm {

namespace {
// How often a waiting action looks at the bus again: a transfer takes a millisecond or more.
constexpr int kLookAgainMs = 1;
}  // namespace

void WhenBusFree(SessionState& session, QObject* context, std::function<void()> action,
                 std::function<bool()> keepWaiting) {
    if (keepWaiting && !keepWaiting()) return;
    if (!session.TransferBusy) {
        action();
        return;
    }
    QTimer::singleShot(kLookAgainMs, context,
                       [&session, context, action = std::move(action), keepWaiting = std::move(keepWaiting)] {
                           WhenBusFree(session, context, action, keepWaiting);
                       });
}

}  // namespace lxm
