#include "device/parts/StatusStrip.h"

#include <QCheckBox>
#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>

#include "core/ColorLabel.h"
#include "core/Colours.h"
#include "core/Options.h"
#include "core/Shape.h"
#include "core/Yield.h"
#include "transport/Session.h"
#include "transport/frmGPIO.h"

namespace lxm {

StatusStrip::StatusStrip(Session& session, QWidget* parent) : QWidget(parent), s_(session) {
    row_ = new QHBoxLayout(this);
    row_->setContentsMargins(0, 0, 0, 0);
    label13_ = new QLabel(QStringLiteral("USB COMM"), this);
    label13_->setToolTip(QStringLiteral("Double-click to switch between the compact and the full view"));
    label13_->installEventFilter(this);
    attach_ = new Shape(this);
    attach_->setToolTip(QStringLiteral("Attach / outgoing transfer"));
    transfer_ = new Shape(this);
    transfer_->setToolTip(QStringLiteral("Incoming transfer"));
    status_ = new Shape(this);
    status_->hide();
    frmMode_ = new QGroupBox(QString(), this);
    // A flat frame keeps the strip one control high.
    frmMode_->setFlat(true);
    auto* modeRow = new QHBoxLayout(frmMode_);
    modeRow->setContentsMargins(6, 2, 6, 2);
    testComm_ = new QRadioButton(QStringLiteral("Test Comm"), frmMode_);
    commTest_ = new ColorLabel(QStringLiteral("Fail"), frmMode_);
    commTest_->setMinimumWidth(48);
    modeRow->addWidget(testComm_);
    modeRow->addWidget(commTest_);
    row_->addWidget(label13_);
    row_->addWidget(attach_);
    row_->addWidget(transfer_);
    row_->addWidget(status_);
    row_->addSpacing(12);
    row_->addWidget(frmMode_);
    row_->addSpacing(12);
}

void StatusStrip::ShowBoard(const QString& where) {
    if (!board_) {
        if (where.isEmpty()) return;
        board_ = new QLabel(this);
        board_->setToolTip(QStringLiteral("The board this window talks to (bus:address)"));
        row_->insertWidget(row_->indexOf(label13_) + 1, board_);
    }
    board_->setText(where);
    board_->setVisible(!where.isEmpty());
}

bool StatusStrip::eventFilter(QObject* watched, QEvent* event) {
    if (watched == label13_ && event->type() == QEvent::MouseButtonDblClick) {
        if (onLabel13DblClick) onLabel13DblClick();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void StatusStrip::Fail() {
    commTest_->setBackColor(kRgbRed);
    commTest_->setForeColor(kRgbWhite);
    commTest_->setText(QStringLiteral("Fail"));
}

void StatusStrip::OptMode_Click(int index, const std::function<void()>& readRegister0) {
    if (index != 2) return;
    if (!s_.UsbDetached && !s_.UsbConnected) {
        Fail();
        SetOptionValue(testComm_, false);
        s_.messages.MsgBox(QStringLiteral("USB is not Connected"));
        return;
    }
    if (s_.UsbDetached) {
        Fail();
        s_.messages.MsgBox(QStringLiteral("USB has been disconnected"));
        return;
    }
    frmGPIO& gpio = s_.GpioForm();
    for (int n = 0; n < 2; ++n) {
        QCheckBox* box = gpio.chkOutEn.at(n);
        box->setChecked(!box->isChecked());
        gpio.chkOutEn_Click(n);
    }
    gpio.cmdGPIO_Write_Click();
    readRegister0();
    commTest_->setBackColor(kRgbGreen);
    commTest_->setForeColor(LongFromColor(palette().color(QPalette::ButtonText)));
    commTest_->setText(QStringLiteral("Good"));
    if (s_.ReadStatusByte != 1) Fail();
    commTest_->show();
    SetOptionValue(testComm_, false);
    DoEvents();
    DoEvents();
}

bool ToggleView(bool compactView, const ViewSets& sets) {
    if (!compactView) {
        for (QWidget* w : sets.hideOnCompact) w->hide();
        return true;
    }
    for (QWidget* w : sets.showOnFull) w->show();
    for (QWidget* w : sets.keepHiddenOnFull) w->hide();
    return false;
}

}  // namespace lxm
