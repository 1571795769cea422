#pragma once

#include <QObject>
#include <functional>

namespace lxm {

struct SessionState;

// Runs action once no transfer holds the bus: at once when none does, else as soon as the one
// in progress has ended. Whoever holds the bus is further down this one thread's stack, waiting
// for the handler that asks to return, so the wait is made from the event loop rather than
// inside the handler: the holder finishes, lets go of the bus, and the action follows. Nothing
// runs once context is gone. keepWaiting, asked before each look, ends the wait when it says no.
void WhenBusFree(SessionState& session, QObject* context, std::function<void()> action,
                 std::function<bool()> keepWaiting = {});

}  // namespace lxm
