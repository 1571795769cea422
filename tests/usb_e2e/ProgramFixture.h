#pragma once

#include <gtest/gtest.h>

#include <QString>
#include <cstdint>
#include <memory>

#include "app/frmStartup.h"
#include "device/frmLXM410.h"
#include "support/FakeClock.h"
#include "support/RecordingSeams.h"
#include "transport/Session.h"
#include "transport/USB_Comm.h"
#include "transport/generic_usb_lib.h"
#include "transport/libusb/LibusbDriver.h"
#include "usb_e2e/EmulatedBoard.h"

namespace lxm::test::usb {

inline constexpr int kOk = 10;

// The whole program on the real libusb path: the emulated board plugged in, the start-up
// window loaded (the driver initialised and the board opened), no type chosen yet.
class ProgramOnEmulatedBus : public ::testing::Test {
protected:
    void SetUp() override {
        bus.Plug();
        driver = std::make_unique<lxm::usb::LibusbDriver>();
        session = std::make_unique<Session>(*driver, messages, files, clock);
        session->comm().timeoutMs = 100;
        session->usb().openWaitYields = 200;
        startup = std::make_unique<frmStartup>(*session, QString());
        startup->onExit = [] {};
        startup->show();
        startup->Form_Load();
    }
    // libusb goes before the bus it runs on.
    void TearDown() override {
        startup.reset();
        session.reset();
        driver.reset();
    }
    frmLXM410& Select(int index) {
        startup->cboTypeSelect->setCurrentIndex(index);
        return *startup->DeviceForm();
    }
    std::uint8_t Chip(int reg) {
        return bus.WithBoard([reg](sim::SimBoard& b) { return b.sensor().Peek(std::uint8_t(reg)); });
    }

    EmulatedBoard bus;  // before libusb comes up, gone after it
    FakeClock clock;
    RecordingMessages messages;
    ScriptedFileDialogs files;
    std::unique_ptr<lxm::usb::LibusbDriver> driver;
    std::unique_ptr<Session> session;
    std::unique_ptr<frmStartup> startup;
};

}  // namespace lxm::test::usb
