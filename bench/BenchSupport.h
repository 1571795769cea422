#pragma once
// What the benchmarks share: seams that stay silent, a driver that passes everything on to
// another one, and the rows of a sample log.

#include <QString>

#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include "core/Seams.h"
#include "transport/UsbDriver.h"

namespace lxm::bench {

class SilentMessages final : public Messages {
public:
    void MsgBox(const QString&, const QString&) override {}
    bool Ask(const QString&, const QString&) override { return true; }
};

class NoFiles final : public FileDialogs {
public:
    std::optional<QString> OpenFile(const QString&, const QString&, const QString&) override { return {}; }
    std::optional<QString> SaveFile(const QString&, const QString&, const QString&) override { return {}; }
};

// Passes every call on to `inner`; a benchmark overrides Transfer to watch the bus.
class ForwardingDriver : public UsbDriver {
public:
    explicit ForwardingDriver(UsbDriver& inner) : inner_(inner) {}
    std::uint32_t Init(DriverHandle* out, const UsbMatch& match, const UsbEvents& events) override {
        return inner_.Init(out, match, events);
    }
    std::uint32_t Uninit(DriverHandle handle) override { return inner_.Uninit(handle); }
    std::uint32_t SetInterface(DeviceHandle dev, int i, int alt) override {
        return inner_.SetInterface(dev, i, alt);
    }
    std::uint32_t GetDeviceInfo(DeviceHandle dev, const UsbDeviceInfo** info) override {
        return inner_.GetDeviceInfo(dev, info);
    }
    void PutDeviceInfo(const UsbDeviceInfo* info) override { inner_.PutDeviceInfo(info); }
    std::uint32_t Transfer(DeviceHandle dev, std::uint32_t pipe, UsbDir dir, std::uint8_t* buf,
                           std::uint32_t size, std::uint32_t* done, std::uint32_t timeoutMs) override {
        return inner_.Transfer(dev, pipe, dir, buf, size, done, timeoutMs);
    }
    std::uint32_t ResetPipe(DeviceHandle dev, std::uint32_t pipe) override {
        return inner_.ResetPipe(dev, pipe);
    }
    std::uint32_t ResetDevice(DeviceHandle dev, std::uint32_t options) override {
        return inner_.ResetDevice(dev, options);
    }

    // The command of a data read: two bytes from register 2.
    static bool DataRead(UsbDir dir, const std::uint8_t* buf, std::uint32_t size) {
        return dir == UsbDir::Out && size == 3 && buf[0] == 2 && buf[2] == 2;
    }

private:
    UsbDriver& inner_;
};

// Calls `row` with each sample row of a log, after its "#" lines and its column names.
inline void ForEachLogRow(const QString& path, const std::function<void(const std::string&)>& row) {
    std::ifstream in(path.toStdString());
    std::string line;
    bool columns = false;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        if (columns) row(line);
        columns = true;
    }
}

// The field at `index` (from 0) of a CSV row without quotes.
inline std::string Field(const std::string& row, int index) {
    std::size_t from = 0;
    for (int i = 0; i < index && from != std::string::npos; ++i) {
        from = row.find(',', from);
        if (from != std::string::npos) ++from;
    }
    if (from == std::string::npos) return {};
    return row.substr(from, row.find(',', from) - from);
}

}  // namespace lxm::bench
