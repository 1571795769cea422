#include "RunLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

namespace lxm::viewer {

namespace {

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

bool StartsWith(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

// A whole field as a finite number; blanks around it are allowed, anything else is not.
bool Number(std::string_view s, double& out) {
    s = Trim(s);
    if (!s.empty() && s.front() == '+') return false;
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    return ec == std::errc() && end == s.data() + s.size() && !s.empty() && std::isfinite(out);
}

bool Integer(std::string_view s, long long& out) {
    s = Trim(s);
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    return ec == std::errc() && end == s.data() + s.size() && !s.empty();
}

// Splits at commas into at most `max` fields; returns how many there were.
int Split(std::string_view line, std::string_view* fields, int max) {
    int n = 0;
    while (n < max) {
        const std::size_t comma = line.find(',');
        fields[n++] = line.substr(0, comma);
        if (comma == std::string_view::npos) return n;
        line.remove_prefix(comma + 1);
    }
    return n + 1;  // more than asked for
}

// "# key: value" into its parts; false for any other "#" line.
bool HashLine(std::string_view line, std::string& key, std::string& value) {
    line.remove_prefix(1);
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return false;
    key = Trim(line.substr(0, colon));
    value = Trim(line.substr(colon + 1));
    return !key.empty();
}

constexpr int kMaxColumns = 64;

}  // namespace

std::string Run::Header(std::string_view key) const {
    for (const auto& [k, v] : header)
        if (k == key) return v;
    return {};
}

void RunParser::Reserve(std::size_t rows) {
    reserve_ = rows;
    if (!result_.runs.empty() && format_ == Format::Csv) {
        Current().t.reserve(rows);
        Current().v.reserve(rows);
    }
}

std::size_t RunParser::Samples() const {
    std::size_t n = 0;
    for (const Run& run : result_.runs) n += run.Rows();
    return n;
}

void RunParser::Bad(const char* reason) {
    if (result_.badLines++ == 0) {
        result_.firstBadLine = lineNo_;
        result_.firstBadReason = reason;
    }
}

void RunParser::Line(std::string_view line) {
    ++lineNo_;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (format_ == Format::Unknown) {
        if (Trim(line).empty()) return;
        // A byte-order mark from an editor is not part of the first line.
        if (StartsWith(line, "\xEF\xBB\xBF")) line.remove_prefix(3);
        if (StartsWith(line, "#") || StartsWith(line, "time,") || StartsWith(line, "seconds,")) {
            format_ = Format::Csv;
            result_.runs.emplace_back();
        } else if (StartsWith(line, "Collect ")) {
            format_ = Format::Record;
        } else {
            format_ = Format::NotALog;
            Bad("neither a sample log nor a record file");
            return;
        }
    }
    switch (format_) {
        case Format::Csv: CsvLine(line); break;
        case Format::Record: RecordLine(line); break;
        default: break;  // a file that is not a log is not read further
    }
}

void RunParser::ColumnRow(std::string_view line) {
    std::string_view f[kMaxColumns];
    const int n = Split(line, f, kMaxColumns);
    for (int i = 0; i < n && i < kMaxColumns; ++i) {
        const std::string_view name = Trim(f[i]);
        if (name == "seconds") secondsCol_ = i;
        else if (name == "value") valueCol_ = i;
        else if (name == "status") statusCol_ = i;
        else if (name == "unit") unitCol_ = i;
    }
    if (secondsCol_ < 0 || valueCol_ < 0) {
        Bad("the column row has no seconds or value column");
        format_ = Format::NotALog;
        return;
    }
    columns_ = true;
    lastCol_ = std::max(std::max(secondsCol_, valueCol_), std::max(statusCol_, unitCol_));
    if (reserve_ > 0) Reserve(reserve_);
}

void RunParser::CsvLine(std::string_view line) {
    Run& run = Current();
    if (StartsWith(line, "#")) {
        std::string key, value;
        if (!HashLine(line, key, value)) return;  // the log's title line
        if (!columns_)
            run.header.emplace_back(std::move(key), std::move(value));
        else
            pending_.push_back({0, std::move(key), std::move(value)});
        return;
    }
    if (Trim(line).empty()) return;
    if (!columns_) {
        ColumnRow(line);
        return;
    }

    std::string_view f[kMaxColumns];
    const int n = Split(line, f, lastCol_ + 1);
    if (n <= lastCol_) return Bad("a row with fewer fields than the column row");
    double t = 0;
    if (!Number(f[secondsCol_], t) || t < 0) return Bad("a row whose seconds are not a number");
    if (anyRow_ && t < lastT_) return Bad("a row earlier than the one before it");
    const std::string_view status = statusCol_ >= 0 ? Trim(f[statusCol_]) : std::string_view("ok");
    double v = 0;
    const bool hasValue = Number(f[valueCol_], v);
    if (status == "failed") {
        run.failedT.push_back(t);
    } else if (!hasValue) {
        return Bad("a row whose value is not a number");
    } else if (status == "ok") {
        run.t.push_back(t);
        run.v.push_back(v);
    } else if (status == "saturated") {
        run.saturatedT.push_back(t);
        run.saturatedV.push_back(v);
    } else if (status == "early") {
        run.earlyT.push_back(t);
        run.earlyV.push_back(v);
    } else {
        return Bad("a row with an unknown status");
    }
    if (run.unit.empty() && unitCol_ >= 0) run.unit = Trim(f[unitCol_]);
    for (SettingChange& c : pending_) {
        c.t = t;
        run.changes.push_back(std::move(c));
    }
    pending_.clear();
    lastT_ = t;
    anyRow_ = true;
}

// "Collect Reg0:&hA0 :Reg1 &h03,Interval 100, 11/15/2009,2:30:00 PM, Qty 20"
void RunParser::StartBlock(std::string_view line) {
    Run& run = result_.runs.emplace_back();
    run.header.emplace_back("format", "record file");
    auto after = [&](std::string_view mark, std::string_view stops) {
        const std::size_t at = line.find(mark);
        if (at == std::string_view::npos) return std::string_view();
        std::string_view rest = line.substr(at + mark.size());
        return Trim(rest.substr(0, rest.find_first_of(stops)));
    };
    const std::string_view reg0 = after("Reg0:&h", " ,"), reg1 = after("Reg1 &h", " ,");
    if (!reg0.empty()) run.header.emplace_back("register 0", std::string(reg0));
    if (!reg1.empty()) run.header.emplace_back("register 1", std::string(reg1));
    const std::string_view interval = after(",Interval", ",");
    run.header.emplace_back("interval", std::string(interval) + " ms");
    // The date and the time are the two fields between the interval and the quantity.
    std::string_view f[8];
    if (Split(line, f, 6) == 5) run.header.emplace_back("recorded", std::string(Trim(f[2])) + " " + std::string(Trim(f[3])));
    double ms = 0;
    intervalS_ = Number(interval, ms) && ms > 0 ? ms / 1000.0 : 0;
    run.timeIsSample = intervalS_ == 0;
    if (!Integer(after("Qty", ","), quantity_)) quantity_ = -1;
    nextIndex_ = 0;
    inBlock_ = true;
}

void RunParser::RecordLine(std::string_view line) {
    const std::string_view text = Trim(line);
    if (!inBlock_) {
        if (text.empty()) return;
        if (StartsWith(text, "Collect ")) return StartBlock(text);
        return Bad("a line outside a block that starts no block");
    }
    if (text == "END") {
        inBlock_ = false;
        if (quantity_ >= 0 && nextIndex_ != quantity_) Bad("a block whose count differs from its Qty");
        return;
    }
    std::string_view f[2];
    long long index = 0;
    double v = 0;
    if (Split(text, f, 2) != 2 || !Integer(f[0], index) || !Number(f[1], v))
        return Bad("a line that is not a sample number and a value");
    if (index != nextIndex_) return Bad("a sample out of order");
    ++nextIndex_;
    Run& run = Current();
    run.t.push_back(run.timeIsSample ? double(index) : double(index) * intervalS_);
    run.v.push_back(v);
}

ReadResult RunParser::Finish() {
    ++lineNo_;
    if (format_ == Format::Record && inBlock_) Bad("the file ends inside a block (no END)");
    if (format_ == Format::Csv && !columns_) Bad("the file ends before its column row");
    if (format_ == Format::Unknown) Bad("the file is empty");
    // A change after the last row still happened; it is shown at the end of the run.
    if (!result_.runs.empty())
        for (SettingChange& c : pending_) Current().changes.push_back({lastT_, std::move(c.key), std::move(c.value)});
    pending_.clear();
    ReadResult out = std::move(result_);
    result_ = {};
    return out;
}

ReadResult ReadRunText(std::string_view text) {
    RunParser parser;
    while (!text.empty()) {
        const std::size_t nl = text.find('\n');
        parser.Line(text.substr(0, nl));
        if (nl == std::string_view::npos) break;
        text.remove_prefix(nl + 1);
    }
    return parser.Finish();
}

namespace {

void NameRuns(ReadResult& r, const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string file = slash == std::string::npos ? path : path.substr(slash + 1);
    for (std::size_t i = 0; i < r.runs.size(); ++i)
        r.runs[i].name = r.runs.size() == 1 ? file : file + " #" + std::to_string(i + 1);
}

}  // namespace

ReadResult ReadRunFile(const std::string& path) {
    ReadResult failed;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st {};
    if (fd < 0 || ::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        failed.fileError = std::strerror(fd < 0 ? errno : S_ISDIR(st.st_mode) ? EISDIR : errno);
        if (fd >= 0) ::close(fd);
        return failed;
    }
    constexpr std::size_t kChunk = 1 << 20;
    std::unique_ptr<char[]> buffer(new char[kChunk]);
    std::string carry;  // a line cut by the end of a chunk
    RunParser parser;
    bool reserved = false;
    for (;;) {
        const ssize_t got = ::read(fd, buffer.get(), kChunk);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            failed.fileError = std::strerror(errno);
            ::close(fd);
            return failed;
        }
        if (got == 0) break;
        std::string_view chunk(buffer.get(), std::size_t(got));
        while (!chunk.empty()) {
            const std::size_t nl = chunk.find('\n');
            if (nl == std::string_view::npos) {
                carry.append(chunk);
                break;
            }
            if (!carry.empty()) {
                carry.append(chunk.substr(0, nl));
                parser.Line(carry);
                carry.clear();
            } else {
                parser.Line(chunk.substr(0, nl));
            }
            chunk.remove_prefix(nl + 1);
        }
        // The rows of a log are all alike: the samples of the first chunk tell how many to
        // expect (lines that are not samples, however many, reserve nothing).
        if (!reserved && S_ISREG(st.st_mode)) {
            reserved = true;
            const double samples = double(parser.Samples());
            if (samples > 0) parser.Reserve(std::size_t(double(st.st_size) / double(got) * samples * 1.02) + 16);
        }
    }
    ::close(fd);
    if (!carry.empty()) parser.Line(carry);
    ReadResult r = parser.Finish();
    NameRuns(r, path);
    return r;
}

std::string SettingsText(const Run& run) {
    std::string s;
    auto add = [&](const std::string& text) {
        if (text.empty()) return;
        if (!s.empty()) s += ", ";
        s += text;
    };
    add(run.Header("sensor"));
    add(run.Header("measurement"));
    if (const std::string r = run.Header("range"); !r.empty()) add("range " + r);
    add(run.Header("resolution"));
    if (const std::string r = run.Header("register 0"); !r.empty())
        add("reg0 " + r + " reg1 " + run.Header("register 1"));
    if (const std::string r = run.Header("interval"); !r.empty()) add("interval " + r);
    return s;
}

}  // namespace lxm::viewer
