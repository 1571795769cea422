#include "frmBoardSetup.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <QValidator>

#include "setup/SetupMenu.h"

namespace lxm {

namespace {

const char* const kGains[] = {"1", "2", "4", "8"};

// A channel number 0 to 31, digits only. A number the board does not have is refused as it
// is typed; a box left empty goes back to 0 rather than writing a line with a missing field.
class ChannelValidator final : public QValidator {
public:
    using QValidator::QValidator;
    State validate(QString& input, int&) const override {
        if (input.isEmpty()) return Intermediate;
        if (input.size() > 2) return Invalid;
        for (QChar c : input)
            if (c < QLatin1Char('0') || c > QLatin1Char('9')) return Invalid;
        return input.toInt() < kSetupChannels ? Acceptable : Invalid;
    }
    void fixup(QString& input) const override {
        if (input.isEmpty()) input = QStringLiteral("0");
    }
};

QLineEdit* ChannelBox(const QString& name, const QString& text, QWidget* parent) {
    auto* e = new QLineEdit(text, parent);
    e->setObjectName(name);
    e->setValidator(new ChannelValidator(e));
    e->setFixedWidth(40);
    e->setAlignment(Qt::AlignCenter);
    return e;
}

QToolButton* Toggle(const QString& name, const QString& caption, QWidget* parent) {
    auto* b = new QToolButton(parent);
    b->setObjectName(name);
    b->setText(caption);
    b->setCheckable(true);
    return b;
}

}  // namespace

frmBoardSetup::frmBoardSetup(Messages& messages, FileDialogs& files, QWidget* parent)
    : QWidget(parent, Qt::Window), messages_(messages), files_(files) {
    setObjectName(QStringLiteral("frmBoardSetup"));
    setWindowTitle(QStringLiteral("Applications Board Setup"));
    BuildLayout();
}

void frmBoardSetup::BuildLayout() {
    auto* root = new QVBoxLayout(this);

    // Two columns of sixteen channels keep the form within a small screen.
    auto* channels = new QGroupBox(QStringLiteral("Channels"), this);
    auto* grid = new QGridLayout(channels);
    grid->setVerticalSpacing(2);
    constexpr int kPerColumn = kSetupChannels / 2;
    for (int half = 0; half < 2; ++half) {
        const int col = half * 5;
        grid->addWidget(new QLabel(QStringLiteral("Out"), channels), 0, col, Qt::AlignCenter);
        grid->addWidget(new QLabel(QStringLiteral("In"), channels), 0, col + 1);
        grid->addWidget(new QLabel(QStringLiteral("Gain"), channels), 0, col + 2);
        grid->addWidget(new QLabel(QStringLiteral("Enable"), channels), 0, col + 3);
    }
    grid->setColumnMinimumWidth(4, 24);
    grid->setColumnStretch(9, 1);  // spare width goes right of the channels
    for (int k = 0; k < kSetupChannels; ++k) {
        const int row = 1 + k % kPerColumn;
        const int col = (k / kPerColumn) * 5;
        txtIn4out[k] = ChannelBox(SetupControlName("txtIn4out", k), QString::number(k), channels);
        tbGain[k] = new QToolButton(channels);
        tbGain[k]->setObjectName(SetupControlName("tbGain", k));
        tbGain[k]->setText(QLatin1String(kGains[0]));
        tbGain[k]->setMinimumWidth(32);
        tbGain[k]->setToolTip(QStringLiteral("Click for the next gain"));
        tbOutenable[k] = Toggle(SetupControlName("tbOutenable", k), QStringLiteral("Off"), channels);
        tbOutenable[k]->setMinimumWidth(36);
        // The caption says the state: a pressed toggle is hard to tell from a released one.
        connect(tbOutenable[k], &QToolButton::toggled, tbOutenable[k], [b = tbOutenable[k]](bool on) {
            b->setText(on ? QStringLiteral("On") : QStringLiteral("Off"));
        });
        grid->addWidget(new QLabel(QString::number(k), channels), row, col, Qt::AlignCenter);
        grid->addWidget(txtIn4out[k], row, col + 1);
        grid->addWidget(tbGain[k], row, col + 2);
        grid->addWidget(tbOutenable[k], row, col + 3);
        connect(tbGain[k], &QToolButton::clicked, this, [this, k] { tbGain_Click(k); });
    }
    root->addWidget(channels);

    auto* board = new QGroupBox(QStringLiteral("Board"), this);
    auto* row = new QHBoxLayout(board);
    tbPower = Toggle(QStringLiteral("tbPower"), QStringLiteral("Power"), board);
    tbOe = Toggle(QStringLiteral("tbOe"), QStringLiteral("Common OE"), board);
    txtBroadcastchan = ChannelBox(QStringLiteral("txtBroadcastchan"), QStringLiteral("0"), board);
    tbBroadcast = Toggle(QStringLiteral("tbBroadcast"), QStringLiteral("Broadcast"), board);
    tbClamp = Toggle(QStringLiteral("tbClamp"), QStringLiteral("Clamp"), board);
    row->addWidget(tbPower);
    row->addWidget(tbOe);
    row->addSpacing(12);
    row->addWidget(new QLabel(QStringLiteral("Broadcast in"), board));
    row->addWidget(txtBroadcastchan);
    row->addWidget(tbBroadcast);
    row->addSpacing(12);
    row->addWidget(tbClamp);
    row->addStretch();
    root->addWidget(board);

    auto* buttons = new QHBoxLayout;
    cmdSave = new QPushButton(QStringLiteral("Save Setup..."), this);
    cmdLoad = new QPushButton(QStringLiteral("Load Setup..."), this);
    cmdLoad->setToolTip(QStringLiteral("Reads a *.lxm file saved with \"Save Setup...\" into this window"));
    cmdClose = new QPushButton(QStringLiteral("Close"), this);
    buttons->addStretch();
    buttons->addWidget(cmdLoad);
    buttons->addWidget(cmdSave);
    buttons->addWidget(cmdClose);
    root->addLayout(buttons);

    connect(cmdSave, &QPushButton::clicked, this, [this] { cmdSave_Click(); });
    connect(cmdLoad, &QPushButton::clicked, this, [this] { cmdLoad_Click(); });
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
}

void frmBoardSetup::tbGain_Click(int Index) {
    QToolButton* b = tbGain.at(std::size_t(Index));
    const int n = int(std::size(kGains));
    int i = 0;
    while (i < n && b->text() != QLatin1String(kGains[i])) ++i;
    b->setText(QLatin1String(kGains[(i + 1) % n]));
}

void frmBoardSetup::cmdSave_Click() {
    SaveSetup(*this, messages_, files_);
}

}  // namespace lxm

namespace lxm {

void frmBoardSetup::cmdLoad_Click() {
    LoadSetup(*this, messages_, files_);
}

BoardSetup frmBoardSetup::Setup() const {
    BoardSetup s;
    for (int k = 0; k < kSetupChannels; ++k) {
        auto& c = s.channels[std::size_t(k)];
        c.in = txtIn4out[k]->text().toInt();
        c.gain = tbGain[k]->text().toInt();
        c.enable = tbOutenable[k]->isChecked();
    }
    s.power = tbPower->isChecked();
    s.commonOe = tbOe->isChecked();
    s.broadcastChannel = txtBroadcastchan->text().toInt();
    s.broadcast = tbBroadcast->isChecked();
    s.clamp = tbClamp->isChecked();
    return s;
}

void frmBoardSetup::Apply(const BoardSetup& setup) {
    for (int k = 0; k < kSetupChannels; ++k) {
        const auto& c = setup.channels[std::size_t(k)];
        txtIn4out[k]->setText(QString::number(c.in));
        tbGain[k]->setText(QString::number(c.gain));
        tbOutenable[k]->setChecked(c.enable);
    }
    tbPower->setChecked(setup.power);
    tbOe->setChecked(setup.commonOe);
    txtBroadcastchan->setText(QString::number(setup.broadcastChannel));
    tbBroadcast->setChecked(setup.broadcast);
    tbClamp->setChecked(setup.clamp);
}

}  // namespace lxm
