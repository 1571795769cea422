#pragma once

#include <QString>
#include <functional>
#include <string>

#include "measure/Board.h"
#include "scripts/ScriptPort.h"

namespace lxm::measure {

// A register script run on the measuring core: the same runner as the script window's, with
// the board's packets. What the runner tells the user goes to `tell`.
class BoardScriptPort final : public scripts::ScriptPort {
public:
    BoardScriptPort(Board& board, std::function<void(const QString&)> tell)
        : board_(board), tell_(std::move(tell)) {}
    Start StartRun() override { return board_.gone() ? Start::NoBoard : Start::Ready; }
    void EndRun() override {}
    bool StartRow() override { return true; }
    void EndRow() override {}
    std::vector<std::uint8_t> Exchange(const std::vector<std::uint8_t>& packet, int replyLength,
                                       bool& failed) override;
    bool Connected() override { return !board_.gone(); }
    void Tell(const QString& text) override {
        if (tell_) tell_(text);
    }
    Clock& clock() override { return board_.clock(); }

private:
    Board& board_;
    std::function<void(const QString&)> tell_;
};

struct ScriptOutcome {
    int passed = 0;  // compared reads that matched
    int failed = 0;
    int rows = 0;    // rows run, over all loops
};

// Runs a register script file on the board `loops` times, each pass from the default address
// 0x88. A file that cannot be loaded, a row that cannot run and a key-press pause (nobody is
// there to press a key) are errors; so is a board that goes away.
ScriptOutcome RunScriptFile(Board& board, const std::string& path, int loops = 1, bool abortOnFail = false);

}  // namespace lxm::measure
