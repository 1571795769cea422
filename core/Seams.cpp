#include "Seams.h"

#include <QFileDialog>
#include <QMessageBox>
#include <chrono>
#include <thread>

namespace lxm {

namespace {
std::int64_t NowMicros() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}
}  // namespace

SteadyClock::SteadyClock() : start_(NowMicros()) {}

std::uint32_t SteadyClock::timeGetTime() {
    return std::uint32_t((NowMicros() - start_) / 1000);
}

std::int64_t SteadyClock::Micros() {
    return NowMicros() - start_;
}

void SteadyClock::Sleep(std::uint32_t ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void SteadyClock::SleepMicros(std::int64_t us) {
    if (us > 0) std::this_thread::sleep_for(std::chrono::microseconds(us));
}

QDateTime SteadyClock::Now() {
    return QDateTime::currentDateTime();
}

void QtMessages::MsgBox(const QString& text, const QString& title) {
    QMessageBox::information(parent_, title.isEmpty() ? QString::fromLatin1(kAppTitle) : title, text);
}

bool QtMessages::Ask(const QString& text, const QString& title) {
    return QMessageBox::question(parent_, title.isEmpty() ? QString::fromLatin1(kAppTitle) : title, text) ==
           QMessageBox::Yes;
}

std::optional<QString> QtFileDialogs::OpenFile(const QString& title, const QString& dir,
                                               const QString& filter) {
    QString f = QFileDialog::getOpenFileName(nullptr, title, start_.For(dir), filter);
    if (f.isEmpty()) return std::nullopt;
    start_.Chosen(f);
    return f;
}

std::optional<QString> QtFileDialogs::SaveFile(const QString& title, const QString& dir,
                                               const QString& filter) {
    QString f = QFileDialog::getSaveFileName(nullptr, title, start_.For(dir), filter);
    if (f.isEmpty()) return std::nullopt;
    start_.Chosen(f);
    return f;
}

}  // namespace lxm
