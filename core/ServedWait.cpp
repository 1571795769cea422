#include "ServedWait.h"

#include <algorithm>
#include <cmath>

#include "core/Seams.h"
#include "core/SessionState.h"
#include "core/VbText.h"
#include "core/Yield.h"

namespace lxm {

std::int32_t WaitMsOf(const QString& text) {
    return std::min(TruncInt32(Val(text)), std::int32_t(kMaxWaitMs));
}

bool ServedWait(SessionState& session, Clock& clock, std::int64_t untilUs,
                const std::function<bool()>& keepWaiting) {
    const bool wasBusy = session.TransferBusy;
    session.TransferBusy = true;
    bool completed = true;
    for (;;) {
        const std::int64_t remaining = untilUs - clock.Micros();
        if (remaining <= 0) break;
        if (remaining <= kServeSliceUs) {
            // The last slice lands on the deadline itself: pacing depends on it.
            clock.SleepMicros(remaining);
            break;
        }
        clock.SleepMicros(kServeSliceUs);
        session.TransferBusy = true;
        DoEvents();
        if (keepWaiting && !keepWaiting()) {
            completed = false;
            break;
        }
    }
    session.TransferBusy = wasBusy;
    return completed;
}

bool ServedPauseMs(SessionState& session, Clock& clock, double ms, const std::function<bool()>& keepWaiting) {
    if (!(ms > 0)) return true;
    const std::int64_t whole = RoundEven(std::min(ms, double(kMaxWaitMs)));
    if (whole <= 0) return true;
    return ServedWait(session, clock, clock.Micros() + whole * 1000, keepWaiting);
}

}  // namespace lxm
