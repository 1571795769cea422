#include "EntryCheck.h"

#include <QEvent>
#include <QLineEdit>
#include <QPalette>

namespace lxm {

namespace {
const char* const kCheckName = "lxmEntryCheck";
const QColor kInvalidBase(255, 214, 214);

bool IsHexDigit(QChar c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
}  // namespace

QString HexByteProblem(const QString& text) {
    if (text.isEmpty()) return QStringLiteral("Empty: enter a byte in hex, 00 to FF.");
    for (QChar c : text) {
        if (!IsHexDigit(c))
            return QStringLiteral("\"%1\" is not a hex digit: enter a byte in hex, 00 to FF.").arg(c);
    }
    if (text.size() > 2)
        return QStringLiteral("%1 is more than one byte: enter 00 to FF.").arg(text.toUpper());
    return {};
}

EntryCheck::EntryCheck(QLineEdit* box, Rule rule) : QObject(box), box_(box), rule_(std::move(rule)) {
    setObjectName(QString::fromLatin1(kCheckName));
    ownTip_ = box->toolTip();
    normal_ = box->palette();
    box->installEventFilter(this);
    connect(box, &QLineEdit::textChanged, this, [this] { Check(); });
    Check();
}

EntryCheck* EntryCheck::Attach(QLineEdit* box, Rule rule) {
    if (EntryCheck* existing = Of(box)) return existing;
    return new EntryCheck(box, std::move(rule));
}

EntryCheck* EntryCheck::Of(const QLineEdit* box) {
    return box ? box->findChild<EntryCheck*>(QString::fromLatin1(kCheckName), Qt::FindDirectChildrenOnly)
               : nullptr;
}

void EntryCheck::Check() {
    problem_ = rule_(box_->text());
    QPalette palette = normal_;
    if (IsInvalid()) palette.setColor(QPalette::Base, kInvalidBase);
    box_->setPalette(palette);
    box_->setProperty("invalid", IsInvalid());
    ShowTip();
}

void EntryCheck::ShowTip() {
    settingTip_ = true;
    box_->setToolTip(IsInvalid() ? (ownTip_.isEmpty() ? problem_ : problem_ + QStringLiteral("\n") + ownTip_)
                                 : ownTip_);
    settingTip_ = false;
}

bool EntryCheck::eventFilter(QObject* watched, QEvent* event) {
    // Someone else set the box's tool tip: that is its own one from now on.
    if (watched == box_ && event->type() == QEvent::ToolTipChange && !settingTip_) {
        ownTip_ = box_->toolTip();
        if (IsInvalid()) ShowTip();
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace lxm
