#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Reading back what a run logged: the per-sample CSV log and the blocks of a record file. No
// widgets and no Qt, so that it can be fuzzed on its own and read an hour's log in a blink.
namespace lxm::viewer {

// A setting the run changed while it went on ("range" to "4000 lux"), placed at the first
// sample taken with it.
struct SettingChange {
    double t = 0;
    std::string key, value;
};

// One run: the samples of a per-sample log, or one block of a record file. Times are seconds
// since the run's own start and never go back. Only ordinary readings are in t/v; a failed,
// saturated or early reading is kept apart so that it is never drawn or counted as one.
struct Run {
    std::string name;  // what the legend calls it: the file name, and the block when a file has several
    std::vector<std::pair<std::string, std::string>> header;  // the "key: value" lines before the samples
    std::string unit;           // "lux", "counts", or empty when the file does not say
    bool timeIsSample = false;  // a record block without an interval: the x axis counts samples
    std::vector<double> t, v;
    std::vector<double> saturatedT, saturatedV, earlyT, earlyV, failedT;
    std::vector<SettingChange> changes;

    // The header's value for `key`, empty when absent.
    std::string Header(std::string_view key) const;
    std::size_t Rows() const { return t.size() + saturatedT.size() + earlyT.size() + failedT.size(); }
};

struct ReadResult {
    std::vector<Run> runs;
    // The first line that could not be read (1-based; one past the last line when the file
    // ends inside a block), 0 when every line was read; and how many lines were skipped.
    std::size_t firstBadLine = 0;
    std::size_t badLines = 0;
    std::string firstBadReason;
    // Set when the file itself could not be read (the system's reason).
    std::string fileError;
};

// Takes the lines of one file in order; the reader of a whole text and the chunked file
// reader both feed it. `line` excludes its line feed; a trailing carriage return is ignored.
class RunParser {
public:
    void Line(std::string_view line);
    // A guess at the number of samples to come, so that the columns grow once.
    void Reserve(std::size_t rows);
    // The samples read so far, of every run.
    std::size_t Samples() const;
    ReadResult Finish();

private:
    enum class Format { Unknown, Csv, Record, NotALog };
    void CsvLine(std::string_view line);
    void RecordLine(std::string_view line);
    void ColumnRow(std::string_view line);
    void Bad(const char* reason);
    void StartBlock(std::string_view header);
    Run& Current() { return result_.runs.back(); }

    Format format_ = Format::Unknown;
    ReadResult result_;
    std::size_t lineNo_ = 0;
    // CSV: column indexes (-1 absent) and whether the column row was seen.
    bool columns_ = false;
    int secondsCol_ = -1, valueCol_ = -1, statusCol_ = -1, unitCol_ = -1, lastCol_ = -1;
    std::vector<SettingChange> pending_;
    double lastT_ = 0;
    bool anyRow_ = false;
    // Record files: inside a block, its interval in seconds and the next sample number.
    bool inBlock_ = false;
    double intervalS_ = 0;
    long long nextIndex_ = 0, quantity_ = -1;
    std::size_t reserve_ = 0;
};

ReadResult ReadRunText(std::string_view text);
// Reads a file in chunks (an hour's log is never held whole) and names its runs after the
// file. On a file that cannot be opened, fileError holds the system's reason.
ReadResult ReadRunFile(const std::string& path);

// The settings a run was taken with, in one line for a legend or a footer
// ("LXM410, ALS Continuous, range 1000 lux, 16 bits, interval 8 ms").
std::string SettingsText(const Run& run);

}  // namespace lxm::viewer
