#include "PacketLink.h"

#include <algorithm>

namespace lxm {

namespace {
// Owed replies are drained with this much shorter time-out before the next command goes out.
constexpr std::uint32_t kDrainTimeoutMs = 20;
constexpr int kMaxDrain = 4;
// Empty INs in a row after which a reply still owed is taken as lost.
constexpr int kForgetAfterSilent = 4;
// Empty INs in a row that prove a pipe holds no reply we do not know of.
constexpr int kQuietToTrust = 2;
constexpr std::uint32_t kScratchSize = 64;

bool Replied(std::uint32_t status) {
    return status == kUsbOk || status == kUsbOverflow;
}
}  // namespace

std::vector<std::uint8_t> CommandPacket(std::uint8_t count, std::uint8_t address, std::uint8_t reg,
                                        const std::vector<std::uint8_t>& data) {
    std::vector<std::uint8_t> p(3 + data.size());
    p[0] = count;
    p[1] = address;
    p[2] = reg;
    std::copy(data.begin(), data.end(), p.begin() + 3);
    return p;
}

// Keeping replies in step with their commands.
//
// The board answers every read command with exactly one reply, in the order of the commands, and
// a reply carries nothing that says which command it answers. A reply that misses the host's
// time-out is not lost: the board hands it to a later IN. So the host counts, per IN pipe, the
// replies the board still owes (owed_): a command that reached the board and was followed by its
// IN adds one, every reply that arrives pays the oldest. The rule is then:
//   1. Before a new command, owed replies are drained with short INs. A drain that times out
//      forgets nothing: the reply is still owed and the next IN pays it.
//   2. The IN of a command takes the reply that pays its own debt. Replies that arrive while
//      older ones are owed are those older ones and are thrown away.
//   3. A command that never reached the board owes nothing, and its IN is not made: it could
//      only return an older reply.
//   4. A reply that stays away through kForgetAfterSilent empty INs in a row is taken as lost
//      (the board dropped it). Being wrong about that would leave every later read one behind,
//      so the pipe is then on probation: after each reply, short INs look for a newer one until
//      kQuietToTrust of them in a row come back empty. A newer reply found there is the true
//      answer to the command, and the one before it was a stale one.
// A new board (a new device handle) starts with nothing owed. The drains and probes are
// housekeeping, not the caller's transfers: their outcome is not reported.
std::uint32_t PacketLink::RawIn(DeviceHandle dev, std::uint8_t pipe, std::uint8_t* buf, std::uint32_t size,
                                std::uint32_t timeout) {
    std::uint32_t done = 0;
    return driver_.Transfer(dev, pipe, UsbDir::In, buf, size, &done, timeout);
}

void PacketLink::SyncDevice(DeviceHandle dev) {
    if (dev == device_) return;
    device_ = dev;
    owed_.fill(0);
    silent_.fill(0);
    probation_.fill(false);
    commandSent_.fill(false);
}

void PacketLink::NoteSilence(std::uint8_t pipe) {
    if (owed_[pipe] == 0) return;
    if (++silent_[pipe] < kForgetAfterSilent) return;
    owed_[pipe] = 0;
    silent_[pipe] = 0;
    probation_[pipe] = true;
}

void PacketLink::DrainOwed(DeviceHandle dev, std::uint8_t pipe) {
    std::uint8_t scratch[kScratchSize];
    for (int i = 0; i < kMaxDrain && owed_[pipe] > 0; ++i) {
        const std::uint32_t st = RawIn(dev, pipe, scratch, kScratchSize, kDrainTimeoutMs);
        if (Replied(st)) {
            --owed_[pipe];
            silent_[pipe] = 0;
        } else if (st == kUsbTimeout) {
            NoteSilence(pipe);
        } else {
            break;
        }
    }
}

void PacketLink::Probe(DeviceHandle dev, std::uint8_t pipe, std::uint8_t* buf, std::uint32_t size) {
    std::vector<std::uint8_t> newer(std::max<std::uint32_t>(size, 1));
    for (int quiet = 0, tries = 0; quiet < kQuietToTrust && tries < kMaxDrain + kQuietToTrust; ++tries) {
        std::fill(newer.begin(), newer.end(), std::uint8_t(0));
        const std::uint32_t st = RawIn(dev, pipe, newer.data(), size, kDrainTimeoutMs);
        if (Replied(st)) {
            std::copy_n(newer.begin(), size, buf);
            quiet = 0;
        } else if (st == kUsbTimeout) {
            if (++quiet == kQuietToTrust) probation_[pipe] = false;
        } else {
            return;
        }
    }
}

PacketLink::Result PacketLink::Out(DeviceHandle dev, std::uint32_t pipe, std::uint8_t* buf, std::uint32_t size,
                                   std::uint32_t* done, std::uint32_t timeoutMs) {
    SyncDevice(dev);
    const std::uint8_t in = std::uint8_t((pipe + 128) & 0xFF);
    // A command whose IN was never asked for (a write) owes no reply.
    commandSent_[in] = false;
    if (owed_[in] > 0) DrainOwed(dev, in);
    *done = 0;
    Result r;
    r.status = driver_.Transfer(dev, pipe, UsbDir::Out, buf, size, done, timeoutMs);
    r.ok = r.ours = r.status == kUsbOk;
    commandSent_[in] = r.ok;
    return r;
}

PacketLink::Result PacketLink::In(DeviceHandle dev, std::uint32_t inPipe, std::uint8_t* buf, std::uint32_t size,
                                  std::uint32_t* done, std::uint32_t timeoutMs) {
    SyncDevice(dev);
    const std::uint8_t pipe = std::uint8_t(inPipe & 0xFF);
    *done = 0;
    Result r;
    if (!commandSent_[pipe]) {
        // The status stays that of the failed command.
        std::fill_n(buf, size, std::uint8_t(0));
        r.made = false;
        return r;
    }
    commandSent_[pipe] = false;
    ++owed_[pipe];
    for (;;) {
        r.status = driver_.Transfer(dev, inPipe, UsbDir::In, buf, size, done, timeoutMs);
        if (Replied(r.status)) {
            silent_[pipe] = 0;
            if (--owed_[pipe] == 0) {
                r.ours = true;
                r.ok = r.status == kUsbOk;
                break;
            }
            continue;  // an older reply
        }
        if (r.status == kUsbTimeout) NoteSilence(pipe);
        break;
    }
    if (!r.ours) {
        std::fill_n(buf, size, std::uint8_t(0));
        return r;
    }
    if (probation_[pipe]) Probe(dev, pipe, buf, size);
    return r;
}

}  // namespace lxm
