#include "device/parts/ReadingFlag.h"

namespace lxm {

ReadingFlag::ReadingFlag(QWidget* parent) : QLabel(parent) {
    setStyleSheet(QStringLiteral("color: #c00000; font-weight: bold;"));
    QFont bold = font();
    bold.setBold(true);
    setFixedWidth(QFontMetrics(bold).horizontalAdvance(QStringLiteral("saturated")) + 8);
    setToolTip(QStringLiteral(
        "saturated: the count is at the top of the scale, the light may be stronger (choose a higher "
        "range); failed: the read failed, its bytes are no reading; early: read before the conversion "
        "could end (lengthen the delay)"));
}

void ReadingFlag::Show(SampleStatus status) {
    if (status == shown_) return;
    shown_ = status;
    setText(status == SampleStatus::Ok ? QString() : QString::fromLatin1(StatusWord(status)));
}

}  // namespace lxm
