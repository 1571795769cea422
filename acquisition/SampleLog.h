#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "acquisition/SampleStatus.h"
#include "core/Seams.h"

namespace lxm {

// What a log's "#" lines record about the run, as the form or the command line has it.
struct SampleLogHeader {
    QString sensor;       // "LXM410"
    QString measurement;  // the measurement type as the user chose it; no line when empty
    std::uint8_t reg0 = 0, reg1 = 0;
    int intervalMs = 0;
    double rangeLux = 0;
    int resolutionBits = 0;  // no line when 0 (a chip of one resolution)
    bool lux = false;   // the values are lux, else counts
    bool dual = false;  // proximity-minus-IR: each row also carries its IR and proximity parts
};

// One sample as the collection took it. An absent part (a reading that was not a number)
// leaves its field empty; a failed read leaves its raw count and value empty whatever they hold.
struct LoggedSample {
    std::optional<std::int64_t> raw;
    double value = 0;  // NaN leaves the field empty
    std::optional<std::int64_t> ir, prox;
    SampleStatus status = SampleStatus::Ok;
};

// Every sample of a collection appended to a CSV file as it is taken, for runs of hours that
// no sample buffer would hold. Rows are gathered in a buffer allocated once and written at
// least once a second of the clock, so a crash loses at most the last second and a row costs
// no system call. A disk error ends the logging (never the collection): it is reported once,
// with the path and the system's reason, and what was written stays in the file.
class SampleLog {
public:
    // The handler must outlive the log: the destructor may still report a last error.
    using ErrorHandler = std::function<void(const QString& path, const QString& reason)>;

    explicit SampleLog(Clock& clock, ErrorHandler onError = {});
    ~SampleLog();
    SampleLog(const SampleLog&) = delete;
    SampleLog& operator=(const SampleLog&) = delete;

    // Creates the file with its header (a log already open is closed first). An existing
    // file is replaced only once the new one holds its header, so a log that cannot start
    // leaves an earlier one as it was. False, after reporting, when it cannot.
    bool Open(const QString& path, const SampleLogHeader& header);
    void Append(const LoggedSample& sample);
    // The settings now, during a run: each one that differs from what the log last recorded
    // gets its "#" line of the header's form before the next row, so every row reads alone.
    void NoteSettings(const SampleLogHeader& now);
    // For the idle points of a caller whose samples come slowly or stop: writes what waits
    // once a second has passed since the last write.
    void FlushIfDue();
    // Writes what waits and closes the file; nothing happens when it is not open.
    void Close();

    bool IsOpen() const { return fd_ >= 0; }
    const QString& Path() const { return path_; }
    std::uint64_t Rows() const { return rows_; }

private:
    bool Flush();
    void Fail(int err);
    void FormatTime(std::int64_t elapsedUs, char*& p);

    Clock& clock_;
    ErrorHandler onError_;
    QString path_;
    int fd_ = -1;
    bool regularFile_ = false;
    bool lux_ = false, dual_ = false;
    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
    std::uint64_t rows_ = 0;
    SampleLogHeader recorded_;  // the settings as the log last wrote them
    std::int64_t startUs_ = 0, lastFlushUs_ = 0, lastRowUs_ = 0;
    std::int64_t startWallMs_ = 0;
    // The local date and time to the second of the last row, formatted once per second.
    std::int64_t cachedSecond_ = INT64_MIN;
    char cachedTime_[24] = {};
};

// Why a log could not be created at path (the system's reason), or empty when it could: for
// a caller that must know before its run starts. Nothing is left behind by the check.
QString LogCreationProblem(const QString& path);

// A file for a further run beside path that holds no earlier run: "run1.csv" gives
// "run1-2.csv", or "run1-3.csv" when that one exists too.
QString NextFreeLogPath(const QString& path);

// The message for a log that stopped: the path, the reason, and what to do.
QString SampleLogErrorMessage(const QString& path, const QString& reason);

}  // namespace lxm
