#include <algorithm>

#include "SimBoard.h"
#include "transport/UsbDriver.h"

namespace lxm::sim {

namespace {

constexpr std::uint8_t kGpioOut = 0x01;
constexpr std::uint8_t kI2cOut = 0x02;
constexpr std::uint8_t kGpioIn = 0x81;
constexpr std::uint8_t kI2cIn = 0x82;

constexpr std::size_t kGpioReplyLength = 25;
constexpr std::uint8_t kInterruptLine = 0x80;  // PB7
constexpr std::uint8_t kExternalLed = 0x40;    // PB6
constexpr std::uint8_t kGreenLed = 0x10;       // PC4
constexpr std::uint8_t kRedLed = 0x20;         // PC5

constexpr std::uint8_t kSensorWrite = Sensor::kAddress7 << 1;
constexpr std::uint8_t kSensorRead = kSensorWrite | 1;

}  // namespace

BoardController::BoardController(Clock& clock, Sensor& sensor) : clock_(clock), sensor_(&sensor) {}

std::uint32_t BoardController::BulkOut(std::uint8_t endpoint, const std::uint8_t* data, std::size_t len) {
    std::uint32_t status = kUsbOk;
    if (!data && len > 0) {
        status = kUsbInvalidArg;
        len = 0;
    } else if (endpoint == kI2cOut) {
        status = I2cPacket(data, len);
    } else if (endpoint == kGpioOut) {
        status = GpioPacket(data, len);
    } else {
        status = kUsbInvalidArg;
    }
    Log(WireDir::Out, endpoint, data, len, status);
    return status;
}

std::uint32_t BoardController::BulkIn(std::uint8_t endpoint, std::uint8_t* data, std::size_t len,
                                      std::size_t* actual) {
    if (actual) *actual = 0;
    std::deque<Reply>* queue = endpoint == kI2cIn    ? &i2cReplies_
                               : endpoint == kGpioIn ? &gpioReplies_
                                                     : nullptr;
    std::uint32_t status = kUsbOk;
    if (!queue || (!data && len > 0)) {
        status = kUsbInvalidArg;
    } else if (queue->empty()) {
        status = kUsbTimeout;
    } else if (queue->front().late) {
        queue->front().late = false;
        status = kUsbTimeout;
    } else {
        const std::vector<std::uint8_t> reply = std::move(queue->front().bytes);
        queue->pop_front();
        // The host asks for a fixed length per kind of read; the board fills the rest with
        // zeros. A buffer too short for the reply is a babbling device on a real bus.
        const std::size_t n = std::min(len, reply.size());
        std::copy_n(reply.begin(), n, data);
        std::fill(data + n, data + len, std::uint8_t(0));
        if (actual) *actual = len;
        if (reply.size() > len) status = kUsbOverflow;
    }
    Log(WireDir::In, endpoint, data, status == kUsbOk || status == kUsbOverflow ? len : 0, status);
    return status;
}

void BoardController::Reset() {
    i2cReplies_.clear();
    gpioReplies_.clear();
    pbEn_ = pcEn_ = pbLvl_ = pcLvl_ = 0;
}

bool BoardController::ReplyPending(std::uint8_t endpoint) const {
    const std::deque<Reply>* queue = endpoint == kI2cIn    ? &i2cReplies_
                                     : endpoint == kGpioIn ? &gpioReplies_
                                                           : nullptr;
    return queue && !queue->empty() && !queue->front().late;
}

std::uint32_t BoardController::I2cPacket(const std::uint8_t* data, std::size_t len) {
    // Too short to be a transaction: the controller ignores it, the USB transfer itself is fine.
    if (len < 3) return kUsbOk;
    const std::uint8_t count = data[0];
    const std::uint8_t address = data[1];
    std::uint8_t reg = data[2];

    const bool read = count != 0;
    // The chip acknowledges only its own address with the direction bit the controller is
    // about to use, so a host that mixes up read and write addresses sees a NACK.
    bool ack = sensorPresent_ && address == (read ? kSensorRead : kSensorWrite);
    if (nackNext_ > 0) {
        --nackNext_;
        ack = false;
    }

    if (!read) {
        if (ack) {
            for (std::size_t i = 3; i < len; ++i) sensor_->Write(reg++, data[i]);
        }
        return kUsbOk;
    }
    std::vector<std::uint8_t> reply(std::size_t(count) + 1, 0);
    if (ack) {
        reply[0] = count;
        for (std::size_t i = 1; i <= count; ++i) reply[i] = sensor_->Read(reg++);
    }
    Queue(i2cReplies_, std::move(reply));
    return kUsbOk;
}

std::uint32_t BoardController::GpioPacket(const std::uint8_t* data, std::size_t len) {
    if (len < 4) return kUsbOk;
    pbLvl_ = data[0];
    pcLvl_ = data[1];
    pbEn_ = data[2];
    pcEn_ = data[3];

    std::uint8_t portB = pbLvl_;
    if (!(pbEn_ & kInterruptLine)) {
        // PB7 as an input follows the sensor's open-drain line, pulled up on the board.
        const bool high = !sensorPresent_ || sensor_->InterruptLineHigh();
        portB = std::uint8_t((portB & ~kInterruptLine) | (high ? kInterruptLine : 0));
    }
    std::vector<std::uint8_t> reply(kGpioReplyLength, 0);
    reply[0] = portB;
    reply[1] = pcLvl_;
    reply[2] = pbEn_;
    reply[3] = pcEn_;
    Queue(gpioReplies_, std::move(reply));
    return kUsbOk;
}

void BoardController::Queue(std::deque<Reply>& queue, std::vector<std::uint8_t> bytes) {
    if (dropReplies_ > 0) {
        --dropReplies_;
        return;
    }
    bool late = false;
    if (delayReplies_ > 0) {
        --delayReplies_;
        late = true;
    }
    queue.push_back({std::move(bytes), late});
}

bool BoardController::ExternalLedOn() const {
    return (pbEn_ & kExternalLed) && (pbLvl_ & kExternalLed);
}
bool BoardController::GreenLedOn() const {
    return (pcEn_ & kGreenLed) && !(pcLvl_ & kGreenLed);
}
bool BoardController::RedLedOn() const {
    return (pcEn_ & kRedLed) && !(pcLvl_ & kRedLed);
}

void BoardController::Log(WireDir dir, std::uint8_t ep, const std::uint8_t* data, std::size_t len,
                          std::uint32_t status) {
    if (logCapacity_ == 0) return;
    if (log_.size() >= logCapacity_) log_.pop_front();
    log_.push_back({dir, ep, std::vector<std::uint8_t>(data, data + len), status});
}

void BoardController::SetWireLogCapacity(std::size_t packets) {
    logCapacity_ = packets;
    while (log_.size() > logCapacity_) log_.pop_front();
}

}  // namespace lxm::sim
