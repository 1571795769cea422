#pragma once

#include "scripts/ScriptPort.h"

namespace lxm {
class Session;
}

namespace lxm::scripts {

// A script run on the window's session: the board opened around the run unless the session
// holds it, the transport's busy mark around each row, and the session's messages.
class SessionPort final : public ScriptPort {
public:
    explicit SessionPort(Session& session) : s_(session) {}
    Start StartRun() override;
    void EndRun() override;
    bool StartRow() override;
    void EndRow() override;
    std::vector<std::uint8_t> Exchange(const std::vector<std::uint8_t>& packet, int replyLength,
                                       bool& failed) override;
    bool Connected() override;
    void Tell(const QString& text) override;
    Clock& clock() override;

private:
    Session& s_;
    bool openHere_ = false;
};

}  // namespace lxm::scripts
