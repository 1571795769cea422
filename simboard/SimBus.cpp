#include "simboard/SimBus.h"

#include "simboard/SimDriver.h"

namespace lxm::sim {

namespace {
constexpr int kBoardShift = 24;
constexpr DeviceHandle kInnerMask = (DeviceHandle(1) << kBoardShift) - 1;
}  // namespace

void SimBus::Add(SimDriver& board) {
    boards_.push_back(&board);
    std::vector<DriverHandle> regs;
    for (const auto& entry : regs_) regs.push_back(entry.first);
    for (DriverHandle reg : regs)
        if (regs_.count(reg)) Register(reg, boards_.size() - 1);
}

SimDriver* SimBus::At(int bus, int address) const {
    for (SimDriver* b : boards_)
        if (b->info().busNumber == bus && b->info().deviceAddress == address) return b;
    return nullptr;
}

void SimBus::Register(DriverHandle reg, std::size_t board) {
    Registration& r = regs_.at(reg);
    const DeviceHandle tag = DeviceHandle(board + 1) << kBoardShift;
    UsbEvents events;
    events.userData = r.events.userData;
    events.attach = [outer = r.events.attach, tag](DeviceHandle dev, const UsbDeviceInfo& info, void* user) {
        return outer && outer(tag | dev, info, user);
    };
    events.detach = [outer = r.events.detach, tag](DeviceHandle dev, void* user) {
        if (outer) outer(tag | dev, user);
    };
    // The slot first: a board already plugged in attaches inside its Init.
    r.inner.push_back(0);
    const std::size_t slot = r.inner.size() - 1;
    DriverHandle inner = 0;
    boards_[board]->Init(&inner, r.match, events);
    // An attach handler may have ended the registration meanwhile.
    auto it = regs_.find(reg);
    if (it != regs_.end())
        it->second.inner[slot] = inner;
    else
        boards_[board]->Uninit(inner);
}

std::uint32_t SimBus::Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) {
    if (!out) return kUsbInvalidArg;
    const DriverHandle reg = nextReg_++;
    regs_[reg] = Registration{match, events, {}};
    *out = reg;
    for (std::size_t i = 0; i < boards_.size(); ++i) Register(reg, i);
    return kUsbOk;
}

std::uint32_t SimBus::Uninit(DriverHandle handle) {
    auto it = regs_.find(handle);
    if (it == regs_.end()) return kUsbInvalidArg;
    for (std::size_t i = 0; i < it->second.inner.size(); ++i) boards_[i]->Uninit(it->second.inner[i]);
    regs_.erase(it);
    return kUsbOk;
}

SimDriver* SimBus::Route(DeviceHandle dev, DeviceHandle* inner) const {
    const std::size_t board = dev >> kBoardShift;
    *inner = dev & kInnerMask;
    return board >= 1 && board <= boards_.size() ? boards_[board - 1] : nullptr;
}

std::uint32_t SimBus::SetInterface(DeviceHandle dev, int interfaceNumber, int alternateSetting) {
    DeviceHandle inner = 0;
    SimDriver* b = Route(dev, &inner);
    return b ? b->SetInterface(inner, interfaceNumber, alternateSetting) : std::uint32_t(kUsbNoDevice);
}

std::uint32_t SimBus::GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) {
    DeviceHandle inner = 0;
    SimDriver* b = Route(dev, &inner);
    if (b) return b->GetDeviceInfo(inner, info);
    if (info) *info = nullptr;
    return kUsbNoDevice;
}

// Each board takes back only the block it handed out.
void SimBus::PutDeviceInfo(const UsbDeviceInfo* info) {
    for (SimDriver* b : boards_) b->PutDeviceInfo(info);
}

std::uint32_t SimBus::Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                               std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) {
    DeviceHandle inner = 0;
    SimDriver* b = Route(dev, &inner);
    if (b) return b->Transfer(inner, pipe, dir, buf, size, done, timeoutMs);
    if (done) *done = 0;
    return kUsbNoDevice;
}

std::uint32_t SimBus::ResetPipe(DeviceHandle dev, std::uint32_t pipe) {
    DeviceHandle inner = 0;
    SimDriver* b = Route(dev, &inner);
    return b ? b->ResetPipe(inner, pipe) : std::uint32_t(kUsbNoDevice);
}

std::uint32_t SimBus::ResetDevice(DeviceHandle dev, std::uint32_t options) {
    DeviceHandle inner = 0;
    SimDriver* b = Route(dev, &inner);
    return b ? b->ResetDevice(inner, options) : std::uint32_t(kUsbNoDevice);
}

}  // namespace lxm::sim
