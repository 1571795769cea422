#include "measure/Board.h"

#include <cmath>
#include <limits>

#include "acquisition/AutoRange.h"
#include "acquisition/Conversion.h"
#include "acquisition/Readings.h"
#include "acquisition/SensorFields.h"
#include "acquisition/Thresholds.h"

namespace lxm::measure {

namespace {

constexpr int kRegisters = 256;
constexpr std::uint8_t kFamilyData = 2;
constexpr std::uint8_t kFamilyThresholds = 4;
constexpr std::uint8_t kLxm600Data = 8;
// The host asks for a fixed reply length per kind of read: status + 5 after a one-register
// read, 3 after the two-byte data read, 5 after three- and four-byte reads.
int ReplyLength(int count) {
    return count == 1 ? 6 : count == 2 ? 3 : 5;
}

struct MeasureChoice {
    const char* name;
    int familyIndex;  // the family form's measurement option
    bool lux, prox, continuous;
};
constexpr MeasureChoice kMeasures[] = {
    {"power-down", 0, false, false, true}, {"als", 1, true, false, false},
    {"ir", 2, false, false, false},        {"prox", 3, false, true, false},
    {"als-cont", 5, true, false, true},    {"ir-cont", 6, false, false, true},
    {"prox-cont", 7, false, true, true},   {"prox-ir", 4, false, false, false},
};

const MeasureChoice& Choice(std::string_view name) {
    for (const auto& m : kMeasures)
        if (name == m.name) return m;
    throw Error(Error::Kind::BadValue,
                QStringLiteral("Unknown measurement \"%1\": use power-down, als, ir, prox, als-cont, ir-cont, "
                               "prox-cont or prox-ir")
                    .arg(QString::fromUtf8(name.data(), int(name.size()))));
}

QString Hex2(int v) {
    return QStringLiteral("%1").arg(v, 2, 16, QLatin1Char('0')).toUpper();
}

// A failed reading's bytes are no count; the status as a flag.
Reading Finished(Reading r) {
    if (r.status == SampleStatus::Failed) {
        r.raw = 0;
        r.value = std::numeric_limits<double>::quiet_NaN();
    }
    static constexpr unsigned kFlags[] = {0, kFailed, kSaturated, kEarly};
    r.flags = kFlags[std::size_t(r.status)];
    return r;
}

[[noreturn]] void BadValue(const QString& what) {
    throw Error(Error::Kind::BadValue, what);
}

template <class Table>
QString Choices(const Table& table) {
    QStringList l;
    for (const auto& v : table) l << QString::number(v);
    return l.join(QStringLiteral(", "));
}

}  // namespace

Board::Board(UsbDriver& driver, Clock& clock, std::optional<Where> where)
    : driver_(driver), clock_(clock), link_(driver) {
    Register(where);
    // Nothing is written until a sensor is selected: a script run takes the chip as it is.
    ResetImage("LXM410");
}

void Board::Register(std::optional<Where> where) {
    UsbEvents events;
    // Only the board asked for is taken, on interface 0 as the board has it; every other one is
    // left for another Board of this process or another program.
    events.attach = [this, where](DeviceHandle dev, const UsbDeviceInfo& info, void*) {
        if (device_ != 0 || info.interfaceNumber != 0) return false;
        if (where && !IsAt(info, *where)) return false;
        if (driver_.SetInterface(dev, 0, 0) != kUsbOk) return false;
        device_ = dev;
        where_ = Where{info.busNumber, info.deviceAddress};
        return true;
    };
    events.detach = [this](DeviceHandle dev, void*) {
        if (dev == device_) gone_ = true;
    };
    const std::uint32_t st = driver_.Init(&registration_, UsbMatch{kBoardVendorId, kBoardProductId}, events);
    if (st != kUsbOk || device_ == 0) {
        const std::string problem = driver_.LastOpenProblem();
        if (registration_) driver_.Uninit(registration_);
        registration_ = 0;
        QString text = where ? QStringLiteral("No evaluation board at %1:%2").arg(where->bus).arg(where->port)
                             : QStringLiteral("No evaluation board found");
        if (!problem.empty()) text += QStringLiteral(": ") + QString::fromStdString(problem);
        throw Error(Error::Kind::NoBoard, text + QStringLiteral(". Plug it in, or list the boards and pick one."));
    }
}

void Board::Reconnect() {
    std::lock_guard lock(mutex_);
    if (registration_) driver_.Uninit(registration_);
    registration_ = 0;
    device_ = 0;
    gone_ = false;
    Register(where_);
    if (IsFamily())
        WriteImage({1, 0});
    else
        WriteImage({1, 2});
}

Board::~Board() {
    if (registration_) driver_.Uninit(registration_);
}

void Board::SelectSensor(std::string_view type) {
    static constexpr std::string_view kTypes[] = {"LXM410", "LXM430", "LXM450", "LXM470", "LXM600"};
    if (!IndexOf(kTypes, type))
        BadValue(QStringLiteral("Unknown sensor \"%1\": use LXM410, LXM430, LXM450, LXM470 or LXM600")
                     .arg(QString::fromUtf8(type.data(), int(type.size()))));
    std::lock_guard lock(mutex_);
    ResetImage(type);
    if (IsFamily())
        WriteImage({1, 0});
    else
        WriteImage({1, 2});
}

void Board::ResetImage(std::string_view type) {
    sensor_ = std::string(type);
    image_.fill(0);
    measure_ = "power-down";
    measureIndex_ = 0;
    rangeIndex_ = 0;
    if (IsFamily()) {
        resolutionIndex_ = 1;  // 12 bits, as the family form starts
        kFamilyResolution.Apply(image_.data(), resolutionIndex_);
    } else {
        std::copy(kLxm600Image.begin(), kLxm600Image.end(), image_.begin());
        kLxm600Range.Apply(image_.data(), 0, true);
    }
}

void Board::CheckRegister(int reg, int count) const {
    if (count < 1 || count > 4)
        throw Error(Error::Kind::OutOfRange,
                    QStringLiteral("A block is 1 to 4 registers; %1 asked for").arg(count));
    if (reg < 0 || reg + count > kRegisters)
        throw Error(Error::Kind::OutOfRange,
                    QStringLiteral("Register %1 is out of range: registers are 0 to 255").arg(reg));
}

void Board::Fail(std::uint32_t status, std::uint8_t reg) const {
    if (gone_ || status == kUsbNoDevice)
        throw Error(Error::Kind::BoardGone,
                    QStringLiteral("Device has been disconnected, reconnect and re-initialize all registers"));
    if (status == kUsbOk)
        throw Error(Error::Kind::Timeout,
                    QStringLiteral("The sensor did not acknowledge register %1: check the sensor type and "
                                   "that the chip sits on the board")
                        .arg(Hex2(reg)));
    throw Error(Error::Kind::Timeout,
                QStringLiteral("No answer from the board reading register %1 (%2): check the cable and try again")
                    .arg(Hex2(reg), QString::fromLatin1(UsbStatusText(status))));
}

Board::Reply Board::ReadLocked(std::uint8_t reg, int count, bool raise) {
    if (gone_) Fail(kUsbNoDevice, reg);
    std::vector<std::uint8_t> packet = CommandPacket(std::uint8_t(count), std::uint8_t(writeAddr_ + 1), reg);
    std::uint32_t done = 0;
    const auto out = link_.Out(device_, 2, packet.data(), std::uint32_t(packet.size()), &done, timeoutMs_);
    Reply reply;
    reply.bytes.assign(std::size_t(ReplyLength(count)), 0);
    const auto in = link_.In(device_, 2 + 128, reply.bytes.data(), std::uint32_t(reply.bytes.size()), &done,
                             timeoutMs_);
    const std::uint32_t status = out.ok ? in.status : out.status;
    if (status == kUsbNoDevice) gone_ = true;
    reply.ok = in.ours && reply.bytes[0] == count;
    if (!reply.ok && (raise || gone_)) Fail(in.ours ? kUsbOk : status, reg);
    return reply;
}

void Board::WriteLocked(std::uint8_t reg, const std::vector<std::uint8_t>& bytes) {
    if (gone_) Fail(kUsbNoDevice, reg);
    std::vector<std::uint8_t> packet = CommandPacket(0, writeAddr_, reg, bytes);
    std::uint32_t done = 0;
    const auto out = link_.Out(device_, 2, packet.data(), std::uint32_t(packet.size()), &done, timeoutMs_);
    if (out.status == kUsbNoDevice) gone_ = true;
    if (!out.ok) Fail(out.status, reg);
    for (std::size_t i = 0; i < bytes.size(); ++i) image_[(reg + i) & 0xFF] = bytes[i];
    // A write to a command register restarts the conversion.
    if (reg <= 1) conversionStartUs_ = clock_.Micros();
}

void Board::WriteImage(std::initializer_list<int> regs) {
    for (int r : regs) WriteLocked(std::uint8_t(r), {image_[std::size_t(r)]});
}

std::uint8_t Board::Read(int reg) {
    CheckRegister(reg, 1);
    std::lock_guard lock(mutex_);
    return ReadLocked(std::uint8_t(reg), 1, true).bytes[1];
}

void Board::Write(int reg, int value) {
    WriteBlock(reg, {value});
}

std::vector<std::uint8_t> Board::ReadBlock(int reg, int n) {
    CheckRegister(reg, n);
    std::lock_guard lock(mutex_);
    const Reply r = ReadLocked(std::uint8_t(reg), n, true);
    return {r.bytes.begin() + 1, r.bytes.begin() + 1 + n};
}

void Board::WriteBlock(int reg, const std::vector<int>& values) {
    CheckRegister(reg, int(values.size()));
    std::vector<std::uint8_t> bytes;
    for (int v : values) {
        if (v < 0 || v > 255) BadValue(QStringLiteral("%1 does not fit a register: values are 0 to 255").arg(v));
        bytes.push_back(std::uint8_t(v));
    }
    std::lock_guard lock(mutex_);
    WriteLocked(std::uint8_t(reg), bytes);
}

std::vector<std::uint8_t> Board::Exchange(const std::vector<std::uint8_t>& packet, int replyLen, bool* ok) {
    if (packet.empty() || packet.size() > 64 || replyLen < 0 || replyLen > 64)
        BadValue(QStringLiteral("A packet is 1 to 64 bytes"));
    std::lock_guard lock(mutex_);
    if (gone_) Fail(kUsbNoDevice, packet.size() > 2 ? packet[2] : 0);
    std::vector<std::uint8_t> out = packet;
    std::uint32_t done = 0;
    const auto o = link_.Out(device_, 2, out.data(), std::uint32_t(out.size()), &done, timeoutMs_);
    if (o.status == kUsbNoDevice) gone_ = true;
    if (ok) *ok = o.ok;
    std::vector<std::uint8_t> reply(std::size_t(replyLen), 0);
    if (replyLen > 0) {
        const auto in = link_.In(device_, 2 + 128, reply.data(), std::uint32_t(reply.size()), &done, timeoutMs_);
        if (in.made && in.status == kUsbNoDevice) gone_ = true;
        if (ok) *ok = *ok && in.ok;
    }
    if (gone_) Fail(kUsbNoDevice, packet.size() > 2 ? packet[2] : 0);
    return reply;
}

int Board::rangeLux() const {
    return IsFamily() ? kFamilyRangesLux[std::size_t(rangeIndex_)] : kLxm600RangesLux[std::size_t(rangeIndex_)];
}

int Board::LuxRangeAt(int index) const {
    // The multi-function form converts at its first range whichever is set, unless Auto Range
    // steps it.
    if (!IsFamily()) return kLxm600RangesLux[std::size_t(autoRange_ ? index : 0)];
    return kFamilyRangesLux[std::size_t(index)];
}

int Board::luxRangeLux() const {
    return LuxRangeAt(rangeIndex_);
}

int Board::resolutionBits() const {
    return IsFamily() ? kFamilyResolutions[std::size_t(resolutionIndex_)].bits : 12;
}

bool Board::continuous() const {
    return Choice(measure_).continuous || !IsFamily();
}

bool Board::luxMeasure() const {
    return Choice(measure_).lux;
}

int Board::DefaultIntervalMs() const {
    return IsFamily() ? int(kFamilyResolutions[std::size_t(resolutionIndex_)].intervalMs) : 50;
}

void Board::SetRange(int lux) {
    std::lock_guard lock(mutex_);
    // The conversion under way is dropped; the last one that ended stays in the data registers.
    if (clock_.Micros() - conversionStartUs_ >= ConversionUs()) convertedRangeIndex_ = rangeIndex_;
    if (IsFamily()) {
        const auto i = IndexOf(kFamilyRangesLux, lux);
        if (!i) BadValue(QStringLiteral("Range %1 lux is not one of %2").arg(lux).arg(Choices(kFamilyRangesLux)));
        rangeIndex_ = *i;
        kFamilyRange.Apply(image_.data(), *i);
        WriteImage({1, 0});
    } else {
        const auto i = IndexOf(kLxm600RangesLux, lux);
        if (!i) BadValue(QStringLiteral("Range %1 lux is not one of %2").arg(lux).arg(Choices(kLxm600RangesLux)));
        rangeIndex_ = *i;
        kLxm600Range.Apply(image_.data(), *i, *i == kLxm600Range.member);
        WriteImage({1});
    }
}

void Board::SetResolution(int bits) {
    std::lock_guard lock(mutex_);
    std::array<int, 4> table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = kFamilyResolutions[i].bits;
    const auto i = IndexOf(table, bits);
    if (!IsFamily() && bits != 12) BadValue(QStringLiteral("The LXM600 converts at 12 bits only"));
    if (!IsFamily()) return;
    if (!i) BadValue(QStringLiteral("Resolution %1 bits is not one of 16, 12, 8, 4").arg(bits));
    resolutionIndex_ = *i;
    kFamilyResolution.Apply(image_.data(), *i);
    WriteImage({1, 0});
}

void Board::SetMeasure(std::string_view name) {
    const MeasureChoice& m = Choice(name);
    std::lock_guard lock(mutex_);
    if (!IsFamily() && m.familyIndex == 4)
        BadValue(QStringLiteral("The proximity-minus-IR dual mode is for the family sensors (LXM410 to LXM470)"));
    measure_ = m.name;
    measureIndex_ = m.familyIndex;
    if (IsFamily()) {
        // A proximity measurement reads the chip's two's-complement scheme, which subtracts the
        // ambient IR, as the device form chooses it; every other one the plain scheme. Power down
        // leaves register 1 as it is.
        if (m.familyIndex != 0) {
            proxScheme_ = m.prox ? 1 : 0;
            kFamilyScheme.Apply(image_.data(), 0, m.prox);
        }
        image_[0] = std::uint8_t(FamilyCommand(image_[0], m.familyIndex) | (m.prox ? 0x01 : 0x00));
        WriteImage({1, 0});
    } else {
        const bool als = m.familyIndex != 0 && !m.prox;
        kLxm600AlsEnable.Apply(image_.data(), 0, als);
        kLxm600IrMode.Apply(image_.data(), std::string_view(m.name).starts_with("ir") ? 1 : 0,
                            std::string_view(m.name).starts_with("ir"));
        kLxm600ProxEnable.Apply(image_.data(), 0, m.prox);
        WriteImage({1});
    }
}

void Board::SetDrive(double milliamps) {
    std::lock_guard lock(mutex_);
    const auto i = IndexOf(kFamilyDriveMa, milliamps);
    if (!IsFamily() || !i)
        BadValue(QStringLiteral("Drive %1 mA is not one of 100, 50, 25, 12.5 (family sensors)").arg(milliamps));
    SetField(image_[1], kFamilyDriveMask, FamilyDriveBits(*i));
    WriteImage({1, 0});
}

void Board::SetPersistence(int readings) {
    static constexpr std::array<int, 4> kPersistence{1, 4, 8, 16};
    std::lock_guard lock(mutex_);
    const auto i = IndexOf(kPersistence, readings);
    if (!i) BadValue(QStringLiteral("Persistence %1 is not one of 1, 4, 8, 16").arg(readings));
    if (IsFamily()) {
        kFamilyPersistence.Apply(image_.data(), *i);
        WriteImage({1, 0});
    } else {
        kLxm600AlsPersistence.Apply(image_.data(), *i);
        WriteImage({2});
    }
}

void Board::SetThresholds(std::int32_t low, std::int32_t high) {
    std::lock_guard lock(mutex_);
    if (!IsFamily()) {
        if (low < 0 || high > kLxm600FullScale || low > high)
            BadValue(QStringLiteral("ALS/IR limits are 0 to 4095, lower first"));
        const auto regs = PackAls12Thresholds(low, high);
        WriteLocked(5, {regs.begin(), regs.end()});
        return;
    }
    const int bits = resolutionBits();
    const std::int32_t max = std::int32_t(TopCount(bits));
    if (low < 0 || high > max || low > high)
        BadValue(QStringLiteral("Limits at %1 bits are 0 to %2, lower first").arg(bits).arg(max));
    const auto lo = EncodeFamilyThreshold(ThresholdEntry{double(low), low, true}, bits);
    const auto hi = EncodeFamilyThreshold(ThresholdEntry{double(high), high, true}, bits);
    WriteLocked(kFamilyThresholds, {lo.low, lo.high, hi.low, hi.high});
}

std::int64_t Board::ConversionUs() const {
    return IsFamily() ? ConversionMicros(resolutionBits()) : kLxm600ConversionUs;
}

Reading Board::Convert(const Reply& reply, std::int64_t readUs) {
    Reading r;
    r.lux = luxMeasure();
    const bool prox = Choice(measure_).prox;
    const Resolution& res = kFamilyResolutions[std::size_t(resolutionIndex_)];
    if (IsFamily()) {
        r.raw = InterpretData(reply.bytes[1], reply.bytes[2], prox, proxScheme_, res.bits, res.countMax).value;
        const bool early = readUs - conversionStartUs_ < ConversionUs();
        r.status = FamilyCountStatus(reply.ok, r.raw, prox && proxScheme_ == 1, res.bits, early);
    } else {
        const Lxm600Reading m =
            TakeLxm600Reading(reply.ok, reply.bytes[1], reply.bytes[2], reply.bytes[3], prox, readUs - conversionStartUs_);
        r.raw = m.raw;
        r.status = m.status;
    }
    // An early reading is the result of a conversion made before the latest range change.
    if (r.status == SampleStatus::Ok || r.status == SampleStatus::Saturated) convertedRangeIndex_ = rangeIndex_;
    const std::int32_t fullScale = IsFamily() ? res.fullScale : kLxm600FullScale;
    r.value = r.lux ? ConvertToLux(r.raw, LuxRangeAt(convertedRangeIndex_), 500000, fullScale) : double(r.raw);
    return Finished(r);
}

Reading Board::TakeDualReading() {
    const Resolution& res = kFamilyResolutions[std::size_t(resolutionIndex_)];
    DualModeReading previous;
    previous.irBefore = irBefore_;
    previous.irAfter = irAfter_;
    DualModeBus bus;
    bus.writeCommand = [this](std::uint8_t command) { WriteLocked(0, {command}); };
    bus.pause = [this](double ms) { WaitMicros(std::int64_t(ms * 1000)); };
    bus.readData = [this] {
        const Reply reply = ReadLocked(kFamilyData, 2, false);
        return DataBytes{reply.bytes[1], reply.bytes[2], reply.ok};
    };
    bus.micros = [this] { return clock_.Micros(); };
    const double delayMs = oneShotDelayMs_ ? *oneShotDelayMs_ : double(ConversionMicros(res.bits)) / 1000.0;
    const DualModeReading d =
        TakeDualModeReading(image_[0], 0, AmbientIrMode::Before, delayMs, res.bits, res.fullScale, previous, bus);
    irBefore_ = d.irBefore;
    irAfter_ = d.irAfter;
    Reading r;
    r.status = d.status();
    r.ir = d.ambientIr;
    r.prox = d.proxCount;
    r.raw = d.difference.proxMinusIr;
    // A saturated part leaves no difference: the -9999 of the form's "NA" is no number.
    r.value = d.difference.available() ? double(r.raw) : std::numeric_limits<double>::quiet_NaN();
    return Finished(r);
}

Reading Board::TakeReading() {
    std::lock_guard lock(mutex_);
    if (gone_) Fail(kUsbNoDevice, 0);
    if (measureIndex_ == 0 && IsFamily())
        BadValue(QStringLiteral("The sensor is powered down: choose a measurement first"));
    if (dualMeasure()) return TakeDualReading();
    if (IsFamily() && !continuous()) {
        // One conversion per reading, waited for as long as the resolution takes.
        WriteImage({0});
        WaitMicros(oneShotDelayMs_ ? std::int64_t(*oneShotDelayMs_ * 1000) : ConversionMicros(resolutionBits()));
    }
    // The multi-function chip's three data registers in one read, as its form reads them.
    const Reply reply = IsFamily() ? ReadLocked(kFamilyData, 2, false) : ReadLocked(kLxm600Data, 3, false);
    // Early as the forms take it: by the time since the conversion began, the read's own
    // transfers included.
    return Convert(reply, clock_.Micros());
}

void Board::WaitMicros(std::int64_t us) {
    constexpr std::int64_t kSliceUs = 100'000;
    const std::int64_t until = clock_.Micros() + us;
    for (std::int64_t left; !waitCut_ && (left = until - clock_.Micros()) > 0;) {
        clock_.SleepMicros(std::min(left, kSliceUs));
        if (keepWaiting_ && left > kSliceUs && !keepWaiting_()) waitCut_ = true;
    }
}

void Board::Collect(std::int64_t n, int intervalMs, const std::function<bool(const Sample&)>& sink,
                    const std::function<bool()>& keepWaiting) {
    if (intervalMs < 0 || intervalMs > 3'600'000)
        BadValue(QStringLiteral("Interval %1 ms is outside 0 to 3600000").arg(intervalMs));
    // A reading's own waits (a one-shot's conversion, the dual mode's) listen to keepWaiting too;
    // a reading whose wait was cut short is not taken.
    keepWaiting_ = keepWaiting;
    waitCut_ = false;
    struct Done {
        Board& b;
        ~Done() {
            b.keepWaiting_ = nullptr;
            b.waitCut_ = false;
        }
    } done{*this};
    const std::int64_t startUs = clock_.Micros();
    std::int64_t deadlineUs = startUs + std::int64_t(intervalMs) * 1000;
    const bool paced = continuous();
    AutoRange decide(IsFamily() ? std::span<const std::int32_t>(kFamilyRangesLux)
                                : std::span<const std::int32_t>(kLxm600RangesLux));
    for (std::int64_t i = 0; n <= 0 || i < n; ++i) {
        if (paced)
            if (const auto until = PaceSleepUntil(clock_.Micros(), deadlineUs)) WaitMicros(*until - clock_.Micros());
        if (waitCut_) return;
        Sample s;
        s.index = i + 1;
        s.reading = TakeReading();
        if (waitCut_) return;
        const std::int64_t now = clock_.Micros();
        s.seconds = double(now - startUs) / 1e6;
        deadlineUs = now + std::int64_t(intervalMs) * 1000;
        if (!sink(s)) break;
        if (autoRange_ && luxMeasure()) StepRange(s.reading, decide);
    }
}

void Board::StepRange(const Reading& r, AutoRange& decide) {
    const std::int64_t top = IsFamily() ? TopCount(resolutionBits()) : kLxm600FullScale;
    if (const auto to = decide.Next(r.raw, top, r.status, rangeIndex_)) SetRange(decide.lux(*to));
}

}  // namespace lxm::measure
