#pragma once

#include <QString>
#include <QStringList>
#include <deque>
#include <functional>
#include <optional>

#include "core/Seams.h"

namespace lxm::test {

// The two texts a missing board shows: when it goes, and at a click while it is gone.
inline const QString kDisconnected =
    QStringLiteral("Device has been disconnected, reconnect and re-initialize all registers");
inline const QString kNotConnected = QStringLiteral("USB is not Connected");

// Records every message the program shows; answers questions from a queue (Yes by default).
class RecordingMessages final : public Messages {
public:
    void MsgBox(const QString& text, const QString& = {}) override {
        texts.append(text);
        if (onMessage) onMessage(text);
    }
    bool Ask(const QString& text, const QString& = {}) override {
        texts.append(text);
        if (answers.empty()) return true;
        bool a = answers.front();
        answers.pop_front();
        return a;
    }
    int count(const QString& text) const { return int(texts.count(text)); }
    void clear() { texts.clear(); }

    QStringList texts;
    std::deque<bool> answers;
    std::function<void(const QString&)> onMessage;
};

// Answers file dialogs from a queue; an empty queue answers "cancelled".
class ScriptedFileDialogs final : public FileDialogs {
public:
    std::optional<QString> OpenFile(const QString& title, const QString&, const QString&) override {
        titles.append(title);
        return Next();
    }
    std::optional<QString> SaveFile(const QString& title, const QString&, const QString&) override {
        titles.append(title);
        return Next();
    }
    std::deque<std::optional<QString>> answers;
    QStringList titles;

private:
    std::optional<QString> Next() {
        std::optional<QString> a;
        if (!answers.empty()) {
            a.swap(answers.front());
            answers.pop_front();
        }
        return a;
    }
};

}  // namespace lxm::test
