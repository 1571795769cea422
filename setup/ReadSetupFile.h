#pragma once

#include <QString>
#include <array>
#include <optional>
#include <variant>

#include "setup/WriteSetupFile.h"

namespace lxm {

// The settings a setup file holds, as the applications-board window shows them.
struct BoardSetup {
    struct Channel {
        int in = 0;
        int gain = 1;  // 1, 2, 4 or 8
        bool enable = false;
        bool operator==(const Channel&) const = default;
    };
    std::array<Channel, kSetupChannels> channels{};
    bool power = false;
    bool commonOe = false;
    int broadcastChannel = 0;
    bool broadcast = false;
    bool clamp = false;
    bool operator==(const BoardSetup&) const = default;
};

// Why a text is not a setup file: the line (counted from 1) and what is wrong with it.
struct SetupParseError {
    int line = 0;
    QString reason;
};

// Reads what WriteSetupFile writes: ";" comment lines and blank lines are skipped, any line
// ending is accepted, and the items may come in any order. An item the text leaves out keeps
// its value from `start`, so a file saved short of a control still loads what it has.
std::variant<BoardSetup, SetupParseError> ParseSetupFile(const QString& text, const BoardSetup& start = {});

}  // namespace lxm
