#pragma once

#include <QString>
#include <cstdint>
#include <functional>

namespace lxm {

class Clock;
struct SessionState;

// The longest interval or delay the program waits, in milliseconds: one hour. A longer one typed
// into an entry box is taken as this, so that no wait, however absurd its number, can outlast a
// working day unnoticed.
constexpr std::int64_t kMaxWaitMs = 3'600'000;

// An interval typed as text, in whole milliseconds: the leading number cut to its whole part,
// at most kMaxWaitMs. Any text gives a defined number ("1e309" the maximum, "-5" -5).
std::int32_t WaitMsOf(const QString& text);

// Waits until the clock reaches untilUs while the window stays served: the wait is cut into
// slices of at most kServeSliceUs with a yield between them, so that Stop, a detach and window
// moves act within a slice at any length of wait. The transport busy mark is held for the whole
// wait (a click on a register during it is marked and left to its owner, never interleaved
// with the transfers around the wait) and put back as it was afterwards. keepWaiting, when
// given, is asked after every yield; the wait ends early once it says no. Returns false then.
constexpr std::int64_t kServeSliceUs = 10'000;
bool ServedWait(SessionState& session, Clock& clock, std::int64_t untilUs,
                const std::function<bool()>& keepWaiting = {});

// A wait of ms milliseconds from now, rounded half to even to whole milliseconds the way the
// pause call took them; zero, negative and NaN wait not at all, more than kMaxWaitMs waits that.
bool ServedPauseMs(SessionState& session, Clock& clock, double ms,
                   const std::function<bool()>& keepWaiting = {});

}  // namespace lxm
