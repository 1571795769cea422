#pragma once

#include <QDialog>
#include <QString>
#include <functional>
#include <optional>

#include "characterise/Sweep.h"
#include "core/Seams.h"
#include "device/parts/FormSweepTarget.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QListWidget;
class QMenuBar;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace lxm {

class Session;
struct SessionState;

// What the program knows of the light at the sensor: on the simulated board the scene's true
// lux, which a reference lux meter beside the sensor would read, and the scene in words.
struct BenchLight {
    std::optional<double> trueLux;
    QString scene;
};

// The session's clock with every pause served: the window moves and Cancel acts during the
// waits of a sweep, whoever makes them.
class ServedClock final : public Clock {
public:
    ServedClock(SessionState& session, Clock& clock, std::function<bool()> keepWaiting)
        : s_(session), clock_(clock), keepWaiting_(std::move(keepWaiting)) {}
    std::uint32_t timeGetTime() override { return clock_.timeGetTime(); }
    std::int64_t Micros() override { return clock_.Micros(); }
    void Sleep(std::uint32_t ms) override { SleepMicros(std::int64_t(ms) * 1000); }
    void SleepMicros(std::int64_t us) override;
    QDateTime Now() override { return clock_.Now(); }

private:
    SessionState& s_;
    Clock& clock_;
    std::function<bool()> keepWaiting_;
};

// "Characterise...": sweeps the chosen settings of the form's sensor, a number of readings each,
// and shows per setting the noise, the mean, the saturated readings and, against a reference,
// the error; the quietest setting without saturation can be applied to the form. The form
// cannot start a run or a read of its own while a sweep runs, and is as it was afterwards.
class CharacteriseDialog : public QDialog {
public:
    CharacteriseDialog(Session& session, std::function<SweepForm()> parts, QWidget* form);

    // Asked when the dialog opens; on a real board nothing is known of the light.
    std::function<BenchLight()> bench;
    // The light offered again and the settings listed anew, as the dialog opens.
    void Prepare();

    void cmdStart_Click();
    void cmdCancel_Click();
    void cmdApplyBest_Click();
    // The table as CSV, the noise plot as PNG, the report as Markdown.
    enum class Export { Csv, Plot, Report };
    void Save(Export what);

    bool running() const { return running_; }
    const std::optional<characterise::Result>& result() const { return result_; }
    // Called after every progress report of a running sweep (tests cancel or unplug from here).
    std::function<void(int done)> onProgress;

    QComboBox* cboMeasure = nullptr;
    QListWidget* lstSettings = nullptr;
    QSpinBox* spnReadings = nullptr;
    QCheckBox* chkReference = nullptr;
    QDoubleSpinBox* spnReference = nullptr;
    QPushButton *cmdStart = nullptr, *cmdCancel = nullptr, *cmdApplyBest = nullptr;
    QPushButton *cmdSaveCsv = nullptr, *cmdSavePlot = nullptr, *cmdSaveReport = nullptr;
    QProgressBar* progress = nullptr;
    QLabel *lblUnder = nullptr, *lblStatus = nullptr;  // the setting under way; why a sweep ended
    QTableWidget* tblResults = nullptr;

protected:
    void closeEvent(QCloseEvent* e) override;
    // The form closing (the program ends with it) cancels a sweep under way.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ShowRunning(bool running);
    bool Progress(int done, int total, const characterise::Setting& under, double secondsLeft);
    void ShowResult();
    void ShowColumns(const std::string& measure, bool referenced);
    // Row i of the table, as soon as its setting is measured; the best one marked once the
    // sweep has ended whole.
    void ShowRow(int i, const characterise::Row& row, bool best);

    Session& s_;
    std::function<SweepForm()> parts_;
    QWidget* form_;
    BenchLight light_;
    bool running_ = false;
    bool cancel_ = false;
    std::optional<characterise::Result> result_;
    std::vector<characterise::Setting> sweeping_;
};

// "Tools > Characterise..." of a device form, and the dialog it opens.
class CharacteriseMenu : public QObject {
public:
    CharacteriseMenu(Session& session, QMenuBar& bar, QWidget& form, std::function<SweepForm()> parts);
    void mnuCharacterise_Click();
    // Made on first use, with the bench below.
    CharacteriseDialog& dialog();
    // Lent by the application: the light at the sensor, known on the simulated board.
    std::function<BenchLight()> bench;

private:
    Session& s_;
    QWidget& form_;
    std::function<SweepForm()> parts_;
    CharacteriseDialog* dialog_ = nullptr;
};

}  // namespace lxm
