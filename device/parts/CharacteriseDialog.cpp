// "Tools > Characterise...": the sweep's choices, its progress and its table, on either form.
#include "device/parts/CharacteriseDialog.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>
#include <cmath>

#include "acquisition/Recording.h"
#include "core/MenuBar.h"
#include "core/ServedWait.h"
#include "device/FormFit.h"
#include "device/parts/FormSweepTarget.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"

namespace lxm {

namespace {

struct MeasureChoice {
    const char* caption;
    const char* name;
};
constexpr MeasureChoice kMeasures[] = {{"ALS (lux)", "als"}, {"IR (counts)", "ir"}, {"Proximity (counts)", "prox"}};

QString SettingText(const characterise::Setting& s) {
    const QString range = QStringLiteral("%1 lux").arg(s.rangeLux);
    return s.resolutionBits ? range + QStringLiteral(", %1 bits").arg(s.resolutionBits) : range;
}

// A figure the sweep could not give (no reading of the setting was ok) is left blank.
QString Figure(double v, int decimals) {
    if (!std::isfinite(v)) return {};
    // -0.001 is shown as 0.00, not -0.00.
    return QString::number(std::abs(v) < 0.5 * std::pow(10.0, -decimals) ? 0.0 : v, 'f', decimals);
}

// Enough digits for the smallest step of each column: lux per count goes down to 0.015.
QString Fine(double v) {
    return !std::isfinite(v) ? QString() : std::abs(v) < 10 ? QString::number(v, 'g', 4) : QString::number(v, 'f', 1);
}

// Two lines each, so that the whole table fits the dialog at 1280x800 without scrolling sideways.
// The value columns are lux for ALS; other measurements are put on the range's scale, which is
// not lux.
QStringList Columns(const QString& unit) {
    const QString perCount = unit.left(1).toUpper() + unit.mid(1) + QStringLiteral(" per\ncount");
    return {QStringLiteral("Range\nlux"),       QStringLiteral("Reso-\nlution"),   QStringLiteral("Conversion\nms"),
            QStringLiteral("Measured\nms"),     QStringLiteral("Full scale\n") + unit, perCount,
            QStringLiteral("Mean\ncounts"),     QStringLiteral("SD\ncounts"),      QStringLiteral("Mean\n") + unit,
            QStringLiteral("SD ") + unit + QStringLiteral("\n(noise)"),
            QStringLiteral("Peak-to-\npeak"),   QStringLiteral("Satu-\nrated"),    QStringLiteral("Failed /\nearly"),
            QStringLiteral("Error\n%")};
}
const int kColumnCount = int(Columns({}).size());

}  // namespace

void ServedClock::SleepMicros(std::int64_t us) {
    if (us > 0) ServedWait(s_, clock_, clock_.Micros() + us, keepWaiting_);
}

CharacteriseDialog::CharacteriseDialog(Session& session, std::function<SweepForm()> parts, QWidget* form)
    : QDialog(form), s_(session), parts_(std::move(parts)), form_(form) {
    setWindowTitle(QStringLiteral("Characterise"));
    auto* top = new QVBoxLayout(this);
    auto* row = new QHBoxLayout;
    top->addLayout(row, 1);

    // Left: what to sweep.
    auto* choose = new QGroupBox(QStringLiteral("Sweep"), this);
    auto* form1 = new QFormLayout(choose);
    cboMeasure = new QComboBox(choose);
    form1->addRow(QStringLiteral("Measurement"), cboMeasure);
    spnReadings = new QSpinBox(choose);
    spnReadings->setRange(2, 100000);
    spnReadings->setValue(64);
    spnReadings->setToolTip(QStringLiteral("Readings taken at each setting, after one whole conversion is let pass"));
    form1->addRow(QStringLiteral("Readings per setting"), spnReadings);
    chkReference = new QCheckBox(QStringLiteral("Reference lux"), choose);
    chkReference->setToolTip(QStringLiteral("What a lux meter beside the sensor reads; each setting's error is "
                                            "given against it"));
    spnReference = new QDoubleSpinBox(choose);
    spnReference->setRange(0, 200000);
    spnReference->setDecimals(1);
    spnReference->setEnabled(false);
    connect(chkReference, &QCheckBox::toggled, spnReference, &QWidget::setEnabled);
    form1->addRow(chkReference, spnReference);
    lstSettings = new QListWidget(choose);
    lstSettings->setToolTip(QStringLiteral("The settings swept, in this order"));
    form1->addRow(new QLabel(QStringLiteral("Settings"), choose));
    form1->addRow(lstSettings);
    auto* all = new QPushButton(QStringLiteral("All"), choose);
    auto* none = new QPushButton(QStringLiteral("None"), choose);
    for (auto [button, state] : {std::pair{all, Qt::Checked}, std::pair{none, Qt::Unchecked}})
        connect(button, &QPushButton::clicked, this, [this, state] {
            for (int i = 0; i < lstSettings->count(); ++i) lstSettings->item(i)->setCheckState(state);
        });
    auto* allNone = new QHBoxLayout;
    allNone->addWidget(all);
    allNone->addWidget(none);
    form1->addRow(allNone);
    choose->setMaximumWidth(260);
    row->addWidget(choose);

    // Right: the results.
    auto* results = new QVBoxLayout;
    row->addLayout(results, 1);
    tblResults = new QTableWidget(0, kColumnCount, this);
    tblResults->setHorizontalHeaderLabels(Columns(QStringLiteral("lux")));
    tblResults->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tblResults->setSelectionBehavior(QAbstractItemView::SelectRows);
    tblResults->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    tblResults->verticalHeader()->setVisible(false);
    tblResults->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    results->addWidget(tblResults, 1);
    lblStatus = new QLabel(this);
    lblStatus->setWordWrap(true);
    results->addWidget(lblStatus);

    // Bottom: progress and the buttons.
    auto* run = new QHBoxLayout;
    top->addLayout(run);
    cmdStart = new QPushButton(QStringLiteral("Start"), this);
    cmdStart->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdCancel->setToolTip(QStringLiteral("Stops the sweep within one reading; the form gets its settings back"));
    progress = new QProgressBar(this);
    progress->setRange(0, 1);
    progress->setValue(0);
    lblUnder = new QLabel(this);
    lblUnder->setMinimumWidth(300);
    cmdApplyBest = new QPushButton(QStringLiteral("Apply Best"), this);
    cmdApplyBest->setToolTip(QStringLiteral("Sets the marked setting on the form: the lowest noise in lux "
                                            "without a saturated reading"));
    cmdSaveCsv = new QPushButton(QStringLiteral("Save CSV..."), this);
    cmdSavePlot = new QPushButton(QStringLiteral("Save Plot..."), this);
    cmdSaveReport = new QPushButton(QStringLiteral("Save Report..."), this);
    for (QWidget* w : std::initializer_list<QWidget*>{cmdStart, cmdCancel, progress, lblUnder, cmdApplyBest,
                                                      cmdSaveCsv, cmdSavePlot, cmdSaveReport})
        run->addWidget(w, w == progress ? 1 : 0);

    connect(cmdStart, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdStart_Click(); }));
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
    connect(cmdApplyBest, &QPushButton::clicked, this, AsUserAction(s_, [this] { cmdApplyBest_Click(); }));
    connect(cmdSaveCsv, &QPushButton::clicked, this, [this] { Save(Export::Csv); });
    connect(cmdSavePlot, &QPushButton::clicked, this, [this] { Save(Export::Plot); });
    connect(cmdSaveReport, &QPushButton::clicked, this, [this] { Save(Export::Report); });
    ShowRunning(false);
    resize(1200, 620);
    form_->installEventFilter(this);
}

void CharacteriseDialog::Prepare() {
    if (running_) return;
    light_ = bench ? bench() : BenchLight{};
    if (light_.trueLux) {
        spnReference->setValue(*light_.trueLux);
        chkReference->setChecked(true);
        chkReference->setToolTip(QStringLiteral("The simulated scene's true light: ") + light_.scene);
    }
    const SweepForm parts = parts_();
    if (cboMeasure->count() == 0)
        for (const MeasureChoice& m : kMeasures)
            if (std::find(parts.measures.begin(), parts.measures.end(), m.name) != parts.measures.end())
                cboMeasure->addItem(QLatin1String(m.caption), QLatin1String(m.name));
    if (lstSettings->count() != int(parts.settings.size())) {
        lstSettings->clear();
        for (const characterise::Setting& s : parts.settings) {
            auto* item = new QListWidgetItem(SettingText(s), lstSettings);
            item->setCheckState(Qt::Checked);
        }
    }
    setWindowTitle(QStringLiteral("Characterise ") + QString::fromStdString(parts.sensor));
}

void CharacteriseDialog::ShowRunning(bool running) {
    for (QWidget* w : std::initializer_list<QWidget*>{cboMeasure, spnReadings, chkReference, lstSettings, cmdStart,
                                                      cmdSaveCsv, cmdSavePlot, cmdSaveReport})
        w->setEnabled(!running);
    spnReference->setEnabled(!running && chkReference->isChecked());
    cmdCancel->setEnabled(running);
    const bool done = !running && result_ && !result_->rows.empty();
    for (QPushButton* b : {cmdSaveCsv, cmdSavePlot, cmdSaveReport}) b->setEnabled(done);
    cmdApplyBest->setEnabled(done && result_->complete() && result_->best.has_value());
}

// The form's own controls are out of reach while the sweep drives them; the dialog, a window of
// the form, is let on again.
void CharacteriseDialog::cmdStart_Click() {
    if (running_) return;
    characterise::Options options;
    options.measure = cboMeasure->currentData().toString().toStdString();
    options.readings = spnReadings->value();
    if (chkReference->isChecked()) options.referenceLux = spnReference->value();
    const SweepForm parts = parts_();
    for (int i = 0; i < lstSettings->count() && i < int(parts.settings.size()); ++i)
        if (lstSettings->item(i)->checkState() == Qt::Checked) options.settings.push_back(parts.settings[std::size_t(i)]);
    if (options.settings.empty()) {
        lblStatus->setText(QStringLiteral("No setting is checked: check the settings to sweep, then Start."));
        return;
    }
    if (s_.Collecting) {
        lblStatus->setText(QStringLiteral("The form is collecting: click Stop on the form, then Start."));
        return;
    }

    running_ = true;
    cancel_ = false;
    sweeping_ = options.settings;
    result_.reset();
    tblResults->setRowCount(0);
    ShowColumns(options.measure, options.referenceLux.has_value());
    lblStatus->clear();
    ShowRunning(true);
    form_->setEnabled(false);
    setEnabled(true);

    const auto keepGoing = [this] { return !cancel_; };
    characterise::Result result;
    // The sweep puts the form back on every way out, an unforeseen error's included; the dialog
    // then says what happened.
    try {
        FormSweepTarget target(s_, parts);
        target.keepWaiting = keepGoing;
        ServedClock clock(s_, s_.clock, keepGoing);
        result = characterise::Run(
            target, clock, options,
            [this](int done, int total, const characterise::Setting& under, double left) {
                return Progress(done, total, under, left);
            },
            [this](const characterise::Row& row) {
                const int i = tblResults->rowCount();
                tblResults->setRowCount(i + 1);
                ShowRow(i, row, false);
                tblResults->scrollToItem(tblResults->item(i, 0));
            });
    } catch (const std::exception& e) {
        result.error = QStringLiteral("The sweep stopped: %1. The form has its settings back; start again.")
                           .arg(QString::fromLocal8Bit(e.what()));
    }
    result.scene = light_.scene;
    form_->setEnabled(true);
    running_ = false;
    result_ = std::move(result);
    ShowResult();
    ShowRunning(false);
}

bool CharacteriseDialog::Progress(int done, int total, const characterise::Setting& under, double secondsLeft) {
    progress->setRange(0, std::max(total, 1));
    progress->setValue(done);
    const auto at = std::find(sweeping_.begin(), sweeping_.end(), under);
    const int left = int(std::ceil(std::clamp(secondsLeft, 0.0, 1e7)));
    lblUnder->setText(QStringLiteral("Setting %1 of %2: %3, %4 left")
                          .arg(at - sweeping_.begin() + 1)
                          .arg(sweeping_.size())
                          .arg(SettingText(under),
                               left < 60 ? QStringLiteral("%1 s").arg(left)
                                         : QStringLiteral("%1 min %2 s").arg(left / 60).arg(left % 60)));
    if (onProgress) onProgress(done);
    return !cancel_;
}

void CharacteriseDialog::cmdCancel_Click() {
    cancel_ = true;
}

// A sweep that did not end whole says why; its rows so far stay in the table, but none of them
// is offered as the best.
void CharacteriseDialog::ShowResult() {
    const characterise::Result& r = *result_;
    lblUnder->setText(r.cancelled        ? QStringLiteral("Cancelled")
                      : !r.error.isEmpty() ? QString()
                                           : QStringLiteral("Done: %1 settings in %2 s").arg(r.rows.size()).arg(std::lround(r.seconds)));
    if (!r.error.isEmpty())
        lblStatus->setText(r.error);
    else if (r.cancelled)
        lblStatus->setText(QStringLiteral("Cancelled: the form has its settings back. Start again to sweep."));
    tblResults->setRowCount(int(r.rows.size()));
    for (int i = 0; i < int(r.rows.size()); ++i) ShowRow(i, r.rows[std::size_t(i)], r.complete() && r.best == std::size_t(i));
    ShowColumns(r.measure, r.referenceLux.has_value());
    if (!r.best && !r.rows.empty() && r.error.isEmpty() && !r.cancelled)
        lblStatus->setText(QStringLiteral("Every setting saturated or failed: no setting is marked best. Lower the "
                                          "light or sweep the higher ranges."));
}

// The error column only for light held against a reference.
void CharacteriseDialog::ShowColumns(const std::string& measure, bool referenced) {
    tblResults->setHorizontalHeaderLabels(Columns(measure == "als" ? QStringLiteral("lux") : QStringLiteral("lux eq.")));
    tblResults->setColumnHidden(kColumnCount - 1, !referenced || measure != "als");
}

void CharacteriseDialog::ShowRow(int i, const characterise::Row& row, bool best) {
    // A saturated reading stands for at least the top of the scale: a mean over such
    // readings, and its error, are lower bounds.
    const QString atLeast = row.saturated > 0 ? QStringLiteral("\u2265 ") : QString();
    const QStringList cells{QString::number(row.setting.rangeLux),
                            row.setting.resolutionBits ? QStringLiteral("%1 bits").arg(row.setting.resolutionBits)
                                                       : QStringLiteral("fixed"),
                            Figure(row.nominalMs, 2),
                            Figure(row.measuredMs, 2),
                            Figure(row.fullScaleLux, 0),
                            Fine(row.luxPerCount),
                            atLeast + Figure(row.meanCount, 1),
                            Figure(row.sdCount, 2),
                            atLeast + Figure(row.meanLux, 2),
                            Fine(row.sdLux),
                            Figure(row.peakToPeak, 0),
                            QString::number(row.saturated),
                            QStringLiteral("%1 / %2").arg(row.failed).arg(row.early),
                            row.errorPercent ? atLeast + Figure(*row.errorPercent, 2) : QString()};
    for (int c = 0; c < cells.size(); ++c) {
        auto* item = new QTableWidgetItem(c == 0 && best ? cells[c] + QStringLiteral("  (best)") : cells[c]);
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        if (best) {
            QFont f = item->font();
            f.setBold(true);
            item->setFont(f);
            item->setBackground(QColor(200, 240, 200));
        }
        if (row.saturated > 0 && (c == 6 || c == 8 || c == 11 || c == 13)) item->setForeground(Qt::red);
        tblResults->setItem(i, c, item);
    }
}

void CharacteriseDialog::cmdApplyBest_Click() {
    if (!result_ || !result_->complete() || !result_->best || running_) return;
    if (s_.comm().RefuseUnopenedBoard()) return;
    const characterise::Row& best = result_->rows[*result_->best];
    parts_().apply(best.setting, result_->measure);
    lblStatus->setText(QStringLiteral("The form is set to %1.").arg(SettingText(best.setting)));
}

void CharacteriseDialog::Save(Export what) {
    if (!result_ || result_->rows.empty()) return;
    struct Kind {
        const char* title;
        const char* filter;
        const char* extension;
    };
    static constexpr Kind kKinds[] = {{"Save Table", "CSV Files (*.csv)|*.csv", "*.csv"},
                                      {"Save Plot", "PNG Pictures (*.png)|*.png", "*.png"},
                                      {"Save Report", "Markdown Files (*.md)|*.md", "*.md"}};
    const Kind& k = kKinds[int(what)];
    const QString offered = QStringLiteral("characterise-%1-%2%3")
                                .arg(QString::fromStdString(result_->sensor), QString::fromStdString(result_->measure),
                                     QLatin1String(k.extension + 1));
    const auto chosen = s_.files.SaveFile(QLatin1String(k.title), offered, DialogFilter(QLatin1String(k.filter)));
    if (!chosen || chosen->isEmpty()) return;
    const QString path = WithDefaultExtension(*chosen, QLatin1String(k.extension));
    const auto failed = what == Export::Csv    ? characterise::WriteCsv(*result_, path)
                        : what == Export::Plot ? characterise::WritePlot(*result_, path)
                                               : characterise::WriteReport(*result_, path);
    if (failed) s_.messages.MsgBox(*failed + QStringLiteral("\nClick the button again and choose another file."));
}

void CharacteriseDialog::closeEvent(QCloseEvent* e) {
    cancel_ = true;
    QDialog::closeEvent(e);
}

bool CharacteriseDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == form_ && event->type() == QEvent::Close) cancel_ = true;
    return QDialog::eventFilter(watched, event);
}

CharacteriseMenu::CharacteriseMenu(Session& session, QMenuBar& bar, QWidget& form, std::function<SweepForm()> parts)
    : QObject(&bar), s_(session), form_(form), parts_(std::move(parts)) {
    QAction* a = MenuNamed(bar, QStringLiteral("Tools"))->addAction(QStringLiteral("Characterise..."));
    a->setToolTip(QStringLiteral("Noise, mean and saturation of the sensor at each range and resolution"));
    connect(a, &QAction::triggered, this, [this] { mnuCharacterise_Click(); });
}

CharacteriseDialog& CharacteriseMenu::dialog() {
    if (!dialog_) dialog_ = new CharacteriseDialog(s_, parts_, &form_);
    dialog_->bench = bench;
    return *dialog_;
}

void CharacteriseMenu::mnuCharacterise_Click() {
    dialog();
    dialog_->Prepare();
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
    KeepOnScreen(*dialog_);
}

}  // namespace lxm
