#include "frmStartup.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "app/frmAbout2.h"
#include "core/Shape.h"
#include "core/Yield.h"
#include "device/BoardMenu.h"
#include "viewer/ViewerMenu.h"
#include "device/frmLXM410.h"
#include "device/frmLXM600.h"
#include "device/parts/FormMenus.h"
#include "device/parts/RegisterPanel.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/frmGPIO.h"
#include "transport/generic_usb_lib.h"

namespace lxm {

namespace {
const char* const kTypes[] = {"ALS Type Selections", "LXM410 Adr 88", "LXM430 Adr 88", "LXM450 Adr 88",
                              "LXM470 Adr 88"};
const char* const kTypeNames[] = {"", "LXM410", "LXM430", "LXM450", "LXM470"};

QLineEdit* AddressEntry(frmLXM410& form) {
    return form.txtI2CADR;
}
QLineEdit* AddressEntry(frmLXM600& form) {
    return form.panel().txtI2CADR();
}
}  // namespace

frmStartup::frmStartup(Session& session, QString commandLine, QWidget* parent)
    : QWidget(parent), s_(session), commandLine_(std::move(commandLine)) {
    setWindowTitle(QStringLiteral("Velmarin ALS / Proximity Evaluation Software"));
    BuildLayout();
    // Wide enough for the window manager to show the whole title, in its usually bold type,
    // beside its icon and three buttons.
    QFont title = font();
    title.setBold(true);
    setMinimumWidth(QFontMetrics(title).horizontalAdvance(windowTitle()) + kTitleBarExtras);
    s_.startupLamps = this;
}

frmStartup::~frmStartup() {
    others_.clear();
    lxm410_.reset();
    lxm600_.reset();
    s_.FormGone(this);
    if (s_.startupLamps == this) s_.startupLamps = nullptr;
}

void frmStartup::BuildLayout() {
    auto* root = new QVBoxLayout(this);
    menuBar = new QMenuBar(this);
    QMenu* sensors = menuBar->addMenu(QStringLiteral("Sensor"));
    mnuLXM600 = sensors->addAction(QStringLiteral("LXM600 Adr 88"));
    mnuLXM600->setToolTip(QStringLiteral("The multi-function ALS / IR and proximity sensor"));
    mnuAbout = menuBar->addAction(QStringLiteral("About"));
    AddOpenRunMenu(*menuBar, *this, s_.messages, s_.files);
    helpMenu = new HelpMenu(s_, *menuBar);
    helpMenu->SetAppLinks({}, [this] { mnuSystemInfo_Click(); });
    root->setMenuBar(menuBar);

    auto* sel = new QGroupBox(this);
    auto* sg = new QGridLayout(sel);
    Label1 = new QLabel(QStringLiteral("Select DCP Type"), sel);
    cboTypeSelect = new QComboBox(sel);
    cboTypeSelect->setMinimumWidth(200);
    CboVCC = new QComboBox(sel);
    CboVCC->addItems({"3.3 V", "2.5 V", "1.8 V"});
    CboVCC->setToolTip(QStringLiteral("Supply voltage of the evaluation board"));
    sg->addWidget(Label1, 0, 0);
    sg->addWidget(cboTypeSelect, 0, 1);
    sg->addWidget(new QLabel(QStringLiteral("VCC"), sel), 1, 0);
    sg->addWidget(CboVCC, 1, 1);
    root->addWidget(sel);

    auto* usb = new QGroupBox(this);
    auto* ug = new QGridLayout(usb);
    Label2[0] = new QLabel(QStringLiteral("USB Init              Attach"), usb);
    Label2[1] = new QLabel(QStringLiteral(" Info        Comm"), usb);
    Shp_USB_Init_ = new Shape(usb);
    ShpAttach_ = new Shape(usb);
    Shp_USB_Info_ = new Shape(usb);
    Shp_USB_Transfer_ = new Shape(usb);
    for (Shape* s : {Shp_USB_Init_, ShpAttach_, Shp_USB_Info_, Shp_USB_Transfer_}) s->setFixedSize(28, 16);
    ug->addWidget(Label2[0], 0, 0, 1, 2);
    ug->addWidget(Label2[1], 0, 2, 1, 2);
    ug->addWidget(Shp_USB_Init_, 1, 0, Qt::AlignCenter);
    ug->addWidget(ShpAttach_, 1, 1, Qt::AlignCenter);
    ug->addWidget(Shp_USB_Info_, 1, 2, Qt::AlignCenter);
    ug->addWidget(Shp_USB_Transfer_, 1, 3, Qt::AlignCenter);
    root->addWidget(usb);
    lblNoBoard = new QLabel(
        QStringLiteral("No board found: plug it in, check the udev rule (README), or start with --simulate."),
        this);
    lblNoBoard->setStyleSheet(QStringLiteral("color: #a00000;"));
    lblNoBoard->hide();
    root->addWidget(lblNoBoard);

    auto* buttons = new QHBoxLayout;
    Command1 = new QPushButton(QStringLiteral("Open USB"), this);
    Command2 = new QPushButton(QStringLiteral("Close USB"), this);
    Command3 = new QPushButton(QStringLiteral("Init Table"), this);
    Command3->hide();
    buttons->addWidget(Command1);
    buttons->addWidget(Command2);
    buttons->addWidget(Command3);
    root->addLayout(buttons);

    connect(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
    connect(Command2, &QPushButton::clicked, this, [this] { Command2_Click(); });
    connect(Command3, &QPushButton::clicked, this, [this] { Command3_Click(); });
    connect(mnuAbout, &QAction::triggered, this, [this] { mnuAbout_Click(); });
    connect(mnuLXM600, &QAction::triggered, this, AsUserAction(s_, [this] { mnuLXM600_Click(); }));
    // The board may come or go at any moment, from the driver's callbacks.
    hintTimer_ = new QTimer(this);
    hintTimer_->setInterval(kHintRefreshMs);
    connect(hintTimer_, &QTimer::timeout, this, [this] { ShowBoardHint(); });
    // Any change of the selection is a click, whether the user or the program made it.
    connect(cboTypeSelect, &QComboBox::currentIndexChanged, this,
            AsUserAction(s_, [this] { cboTypeSelect_Click(); }));
}

void frmStartup::Form_Load() {
    s_.activeForm = this;
    InitColours(s_.colours);
    s_.UsbConnected = false;
    s_.UsbDetached = false;
    s_.Collecting = false;

    s_.usb().InitDriver();
    s_.clock.Sleep(20);

    s_.SessionOpen = false;
    s_.usb().OpenDevice();
    DoEvents();

    s_.SelectedType.clear();
    cboTypeSelect->clear();
    for (const char* t : kTypes) cboTypeSelect->addItem(QString::fromLatin1(t));
    cboTypeSelect->setCurrentIndex(0);
    ShowBoardHint();
    hintTimer_->start();
    DoEvents();
}

void frmStartup::ShowBoardHint() {
    lblNoBoard->setVisible(!s_.UsbConnected);
}

void frmStartup::Form_Activate() {
    s_.activeForm = this;
    cboTypeSelect->setCurrentIndex(0);
}

void frmStartup::changeEvent(QEvent* e) {
    if (e->type() == QEvent::ActivationChange && isActiveWindow()) Form_Activate();
    QWidget::changeEvent(e);
}

void frmStartup::cboTypeSelect_Click() {
    const int index = cboTypeSelect->currentIndex();
    if (index < 0) return;  // the list is being refilled
    SelectType(kTypeNames[index]);
}

void frmStartup::mnuLXM600_Click() {
    SelectType("LXM600");
}

bool frmStartup::SelectSensor(const QString& name) {
    if (name == QLatin1String("LXM600")) {
        mnuLXM600_Click();
        return true;
    }
    for (int i = 1; i < cboTypeSelect->count() && i < int(std::size(kTypeNames)); ++i) {
        if (name == QLatin1String(kTypeNames[i])) {
            // A choice in the list, as the user makes it.
            cboTypeSelect->setCurrentIndex(i);
            return true;
        }
    }
    return false;
}

void frmStartup::SelectType(const std::string& type) {
    s_.activeForm = this;
    s_.Collecting = false;
    if (!type.empty() && !s_.UsbConnected) {
        s_.messages.MsgBox(
            QStringLiteral("Evaluation Board is not connected, or another application is using it."));
        // The list goes back to its first entry; that selection re-enters here and stops below.
        cboTypeSelect->setCurrentIndex(0);
        DoEvents();
        return;
    }
    if (!s_.UsbConnected) return;

    s_.usb().OpenDevice();
    s_.SessionOpen = true;
    s_.GpioForm().hide();
    s_.activeForm = this;
    DoEvents();

    if (type == "LXM600")
        ShowDeviceForm(lxm600_, type, s_);
    else if (!type.empty())
        ShowDeviceForm(lxm410_, type, s_);
    if (commandLine_.trimmed() != QStringLiteral("/d") && s_.UsbConnected) s_.GpioForm().hide();
    DoEvents();
}

BoardSteps frmStartup::Steps() {
    return BoardSteps{[this] { Command3_Click(); }, [this] { Command1_Click(); },
                      [this] { Command2_Click(); }, listBoards, chooseBoard};
}

template <class Form>
void frmStartup::ShowDeviceForm(std::unique_ptr<Form>& form, const std::string& type, Session& s) {
    s.SelectedType = type;
    // The window's own simulated board; another form's board is fitted when it is made.
    if (onTypeSelected && &s == &s_) onTypeSelected(type);
    // The address is set before the form loads: loading programs the chip, and it must reach
    // the sensor at its default address, not whatever was entered before.
    s.I2cWriteAddr = std::uint8_t(USB_Comm::HexValue(QStringLiteral("88")));
    s.I2cReadAddr = std::uint8_t(s.I2cWriteAddr + 1);
    if (!form) {
        form = std::make_unique<Form>(s);
        form->onClosed = [this] { ExitProgram(); };
        // Another form's Board steps are its own session's; the start-up window's act on the
        // first form's board.
        BoardSteps steps = &s == &s_ ? Steps() : BoardSteps{};
        for (const char* t : kTypeNames)
            if (*t) steps.anotherTypes.emplace_back(t);
        steps.anotherTypes.emplace_back("LXM600");
        steps.openAnother = [this](const std::string& t) { OpenAnother(t); };
        if (onFormMade) onFormMade(*form, s, steps);
        form->boardMenu->SetSteps(std::move(steps));
        // The start-up window is hidden from now on: its About and report go with the form. Its
        // simulated board is the first form's; another form's has a window of its own.
        form->formMenus->SetAppLinks({[this] { mnuAbout_Click(); }, [this] { mnuSystemInfo_Click(); },
                                      &s == &s_ ? showSimulatedBoard : std::function<void()>{}});
        // "Characterise..." is offered the light at this form's own board.
        form->characterise->bench = [this, &s] { return benchLight ? benchLight(s) : BenchLight{}; };
        form->Form_Load();
    }
    AddressEntry(*form)->setText(QStringLiteral("88"));
    form->show();
    hide();
}

template <class Form>
void frmStartup::ShowOtherForm(const std::string& type, Session& s) {
    std::unique_ptr<Form> form;
    ShowDeviceForm(form, type, s);
    others_.push_back(std::move(form));
}

void frmStartup::OpenAnother(const std::string& type) {
    Session* s = anotherBoard ? anotherBoard(type) : nullptr;
    if (!s) return;
    s->SessionOpen = true;
    s->GpioForm().hide();
    if (type == "LXM600")
        ShowOtherForm<frmLXM600>(type, *s);
    else
        ShowOtherForm<frmLXM410>(type, *s);
}

void frmStartup::Command1_Click() {
    s_.usb().OpenDevice();
    ShowBoardHint();
}

void frmStartup::Command2_Click() {
    s_.usb().CloseDevice();
    Command3->show();
}

void frmStartup::Command3_Click() {
    s_.usb().InitDriver();
    ShowBoardHint();
}

void frmStartup::mnuAbout_Click() {
    if (!about_) about_ = std::make_unique<frmAbout2>(this);
    about_->show();
    about_->raise();
    about_->activateWindow();
}

void frmStartup::mnuSystemInfo_Click() {
    if (!about_) about_ = std::make_unique<frmAbout2>(this);
    about_->cmdSysInfo_Click();
}

void frmStartup::Form_QueryUnload() {
    s_.activeForm = this;
    s_.usb().ShutdownUsb();
}

void frmStartup::closeEvent(QCloseEvent* e) {
    Form_QueryUnload();
    e->accept();
    if (lxm410_) lxm410_->hide();
    if (lxm600_) lxm600_->hide();
    s_.UnloadGpioForm();
    if (onExit)
        onExit();
    else
        QApplication::quit();
}

void frmStartup::ExitProgram() {
    s_.usb().ShutdownUsb();
    s_.clock.Sleep(100);
    if (onExit)
        onExit();
    else
        QApplication::quit();
}

}  // namespace lxm
