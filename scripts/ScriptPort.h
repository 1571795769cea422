#pragma once

#include <QString>
#include <cstdint>
#include <vector>

namespace lxm {
class Clock;
}

namespace lxm::scripts {

// What a script run needs of the board it runs on: the window's session, or the measuring core
// of a run without any window.
class ScriptPort {
public:
    virtual ~ScriptPort() = default;
    // Before the first row: whether the run can start now; when not, the user has been told why.
    enum class Start { Ready, Refused, NoBoard };
    virtual Start StartRun() = 0;
    virtual void EndRun() = 0;
    // Around the packets of one row: false when the bus is held by another transfer (told).
    virtual bool StartRow() = 0;
    virtual void EndRow() = 0;
    // One packet and, when replyLength > 0, its reply; failed is set when a transfer failed.
    virtual std::vector<std::uint8_t> Exchange(const std::vector<std::uint8_t>& packet, int replyLength,
                                               bool& failed) = 0;
    virtual bool Connected() = 0;
    virtual void Tell(const QString& text) = 0;
    virtual Clock& clock() = 0;
};

}  // namespace lxm::scripts
