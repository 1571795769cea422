#pragma once

#include <QString>
#include <optional>

class QWidget;

namespace lxm {

// Channels of the applications board.
inline constexpr int kSetupChannels = 32;

// Object name of one member of a control array, e.g. "txtIn4out(5)": the writer finds the
// controls of the form it is given by these names.
QString SetupControlName(const char* array, int index);

// Why a setup file is not complete.
struct SetupFileError {
    enum class Kind {
        MissingControl,  // the form lacks a control; the file holds the lines written before it
        NotWritten,      // the file could not be created or written; an existing one is unchanged
    };
    Kind kind;
    QString path;
    QString detail;  // the name of the missing control, or the system's reason
};

// Writes the board set-up shown by the named controls of `form` to `fileName`, replacing the
// file, lines ending in CR LF: txtIn4out(k), tbGain(k) and tbOutenable(k) for the 32
// channels, then tbPower, tbOe, txtBroadcastchan, tbBroadcast and tbClamp. Writing stops at
// the first control the form does not carry; the lines before it are still saved, so a form
// without any of them gives a file of just the three header lines.
std::optional<SetupFileError> WriteSetupFile(const QString& fileName, const QWidget& form);

}  // namespace lxm
