#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "acquisition/AutoRange.h"
#include "acquisition/SampleStatus.h"
#include "core/Seams.h"
#include "transport/BoardPlace.h"
#include "transport/PacketLink.h"
#include "transport/UsbDriver.h"

// The measuring core: one evaluation board driven without any window, for the command line,
// the characterisation and the Python module. Registers, operating fields, readings and a paced
// collection, with the same packets, bit fields and arithmetic as the device forms.
namespace lxm::measure {

// Why an operation could not be done; the message is the one the user reads.
class Error : public std::runtime_error {
public:
    enum class Kind { NoBoard, BoardGone, Timeout, OutOfRange, BadValue };
    Error(Kind kind, const QString& message) : std::runtime_error(message.toStdString()), kind_(kind) {}
    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

using Where = BoardPlace;

// What a reading is worth. A failed, saturated or not yet converted reading is never an
// ordinary number: its status says so.
// Its status as a flag bit, for a column of flags.
enum ReadingFlag : unsigned { kFailed = 1u, kSaturated = 2u, kEarly = 4u };

struct Reading {
    std::int32_t raw = 0;  // the count (signed in the proximity scheme 1); 0 when failed
    double value = 0;      // lux for an ALS measurement, else the count; NaN when failed
    SampleStatus status = SampleStatus::Ok;
    unsigned flags = 0;  // the status as a ReadingFlag, 0 for ok
    bool lux = false;
    // The dual mode's parts: the ambient IR and the proximity count it was subtracted from.
    std::optional<std::int32_t> ir, prox;
    // "ok", "failed", "saturated" or "early", as the per-sample log writes it.
    const char* Status() const { return StatusWord(status); }
};

struct Sample {
    double seconds = 0;  // since the start of the collection
    std::int64_t index = 0;
    Reading reading;
};

class Board {
public:
    // Registers with the driver and takes the board at `where`, or the first one offered when
    // no place is given. Throws Error(NoBoard) when there is none to take.
    Board(UsbDriver& driver, Clock& clock, std::optional<Where> where = {});
    ~Board();
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;

    Where where() const { return where_; }
    const std::string& sensor() const { return sensor_; }
    // The sensor on the board: "LXM410", "LXM430", "LXM450", "LXM470" or "LXM600". Writes the
    // power-on image of the operating registers so that the fields below start from known bits;
    // until then the board writes nothing.
    void SelectSensor(std::string_view type);

    std::uint8_t Read(int reg);
    void Write(int reg, int value);
    // n registers from reg, 1 to 4 of them, as one transfer.
    std::vector<std::uint8_t> ReadBlock(int reg, int n);
    void WriteBlock(int reg, const std::vector<int>& values);

    // A raw packet of a script row on the command pipe and, when replyLen > 0, its reply
    // (status byte first; zeros when none came). Only a board that went away is an error here.
    // ok, when given, is cleared when a transfer failed.
    std::vector<std::uint8_t> Exchange(const std::vector<std::uint8_t>& packet, int replyLen, bool* ok = nullptr);
    Clock& clock() { return clock_; }

    // Operating fields. Each writes the register it lives in (family: register 1 and then 0).
    void SetRange(int lux);
    void SetResolution(int bits);
    // "power-down", "als", "ir", "prox", "als-cont", "ir-cont", "prox-cont", and on the family
    // sensors "prox-ir" (proximity minus IR, the IR taken before the proximity conversion).
    void SetMeasure(std::string_view name);
    void SetDrive(double milliamps);
    void SetPersistence(int readings);
    void SetThresholds(std::int32_t low, std::int32_t high);

    int rangeLux() const;
    int resolutionBits() const;
    const std::string& measure() const { return measure_; }
    bool continuous() const;
    bool luxMeasure() const;
    bool dualMeasure() const { return IsFamily() && measureIndex_ == 4; }
    // The range lux are converted at. The multi-function chip's are converted at its first range
    // whichever is set, unless auto-range steps it, as its device form shows them.
    int luxRangeLux() const;
    // The collection interval the resolution suggests, in milliseconds.
    int DefaultIntervalMs() const;
    const std::array<std::uint8_t, 256>& image() const { return image_; }

    // One reading of the selected measurement. A one-shot measurement is triggered and waited
    // for; a continuous one reads the latest result.
    Reading TakeReading();
    // n readings paced interval milliseconds apart as the collection loop paces them (n <= 0:
    // until sink says stop). sink gets every sample and returns false to stop.
    // keepWaiting, when given, is asked every 100 ms of a long wait; the collection ends once it
    // says no.
    void Collect(std::int64_t n, int intervalMs, const std::function<bool(const Sample&)>& sink,
                 const std::function<bool()>& keepWaiting = {});
    // With auto-range on, a collection of ALS readings steps the range after a sample when the
    // reading nears the top of the scale or has stayed low (see AutoRange); the sample after a
    // step is the first under the new range, and rangeLux() says which.
    void SetAutoRange(bool on) { autoRange_ = on; }
    bool autoRange() const { return autoRange_; }

    // Takes the board again after it went away (the driver offers it anew) and writes its
    // operating registers back. Throws Error(NoBoard) when it is not back.
    void Reconnect();
    bool gone() const { return gone_; }

    // How long a one-shot reading waits between its trigger and its read (ms); without it, as long
    // as the conversion takes. A shorter wait gives early readings.
    void SetOneShotDelayMs(std::optional<double> ms) { oneShotDelayMs_ = ms; }
    // The family measurement option of the selected measurement (0 to 7).
    int measureIndex() const { return measureIndex_; }

    // Transfers fail at once from now on with this per-transfer time-out (ms).
    void SetTimeoutMs(std::uint32_t ms) { timeoutMs_ = ms; }

private:
    struct Reply {
        std::vector<std::uint8_t> bytes;
        bool ok = false;
    };
    void Register(std::optional<Where> where);
    void ResetImage(std::string_view type);
    Reply ReadLocked(std::uint8_t reg, int count, bool raise);
    void WriteLocked(std::uint8_t reg, const std::vector<std::uint8_t>& bytes);
    void WriteImage(std::initializer_list<int> regs);
    void CheckRegister(int reg, int count) const;
    [[noreturn]] void Fail(std::uint32_t status, std::uint8_t reg) const;
    Reading Convert(const Reply& reply, std::int64_t readUs);
    Reading TakeDualReading();
    // A wait inside a collection or a reading: cut into slices during a collection, whose
    // keepWaiting can end it.
    void WaitMicros(std::int64_t us);
    std::int64_t ConversionUs() const;
    void StepRange(const Reading& r, AutoRange& decide);
    // The full scale lux are converted at when the chip converted at range `index`.
    int LuxRangeAt(int index) const;
    bool IsFamily() const { return sensor_ != "LXM600"; }

    UsbDriver& driver_;
    Clock& clock_;
    PacketLink link_;
    std::recursive_mutex mutex_;
    DriverHandle registration_ = 0;
    DeviceHandle device_ = 0;
    Where where_;
    bool gone_ = false;
    std::uint32_t timeoutMs_ = kTransferTimeoutMs;

    std::string sensor_ = "LXM410";
    std::uint8_t writeAddr_ = 0x88;
    std::array<std::uint8_t, 256> image_{};
    std::string measure_ = "power-down";
    int measureIndex_ = 0;
    int rangeIndex_ = 0;
    // The range of the latest conversion that ended: an early reading holds its result.
    int convertedRangeIndex_ = 0;
    bool autoRange_ = false;
    int resolutionIndex_ = 1;
    int proxScheme_ = 0;  // family: 1 reads proximity as two's complement
    std::int32_t irBefore_ = 0, irAfter_ = 0;  // the dual mode's last IR readings
    std::function<bool()> keepWaiting_;  // the running collection's
    bool waitCut_ = false;
    // When the running conversion began: a reading before its end is early.
    std::int64_t conversionStartUs_ = 0;
    std::optional<double> oneShotDelayMs_;
};

}  // namespace lxm::measure
