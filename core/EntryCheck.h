#pragma once

#include <QObject>
#include <QPalette>
#include <QString>
#include <functional>

class QLineEdit;

namespace lxm {

// Why a text is not one byte in hexadecimal (one or two hex digits, either case); empty when
// it is one.
QString HexByteProblem(const QString& text);

// Shows an entry box as invalid while its text is not a valid value: a light-red field and,
// first in its tool tip, why. It only looks: what the box's handlers send is theirs to decide.
// The box's own tool tip may change at any time; it is kept under the reason.
class EntryCheck : public QObject {
public:
    using Rule = std::function<QString(const QString& text)>;

    // Owned by the box.
    static EntryCheck* Attach(QLineEdit* box, Rule rule);
    // The check on a box, or nullptr.
    static EntryCheck* Of(const QLineEdit* box);

    bool IsInvalid() const { return !problem_.isEmpty(); }
    const QString& Problem() const { return problem_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    EntryCheck(QLineEdit* box, Rule rule);
    void Check();
    void ShowTip();

    QLineEdit* box_;
    Rule rule_;
    QString problem_;
    QString ownTip_;
    QPalette normal_;
    bool settingTip_ = false;
};

// The hex byte check on a box.
inline EntryCheck* CheckHexByte(QLineEdit* box) {
    return EntryCheck::Attach(box, &HexByteProblem);
}

}  // namespace lxm
