#pragma once

#include <QCoreApplication>
#include <memory>

#include "FakeClock.h"
#include "RecordingSeams.h"
#include "simboard/SimBoard.h"
#include "simboard/SimDriver.h"
#include "transport/Session.h"
#include "transport/generic_usb_lib.h"

namespace lxm::test {

// A fresh simulated board, driver and session for one test. The board attaches when the
// driver is initialised; nothing is opened until a test says so.
struct BoardFixture {
    FakeClock clock;
    RecordingMessages messages;
    ScriptedFileDialogs files;
    sim::SimBoard board{clock};
    sim::SimDriver driver{board};
    Session session{driver, messages, files, clock};

    BoardFixture() {
        session.usb().openWaitYields = 50;
        // The noise-free chip: these tests compare counts exactly.
        board.scene().ideal = true;
    }

    sim::WireLog& wire() { return board.controller().wireLog(); }
    std::uint8_t chip(int reg) { return board.sensor().Peek(std::uint8_t(reg)); }

    // Driver registered, board attached and opened, held open for the session, the sensor at
    // its default address.
    void OpenSession() {
        session.usb().InitDriver();
        session.usb().OpenDevice();
        session.SessionOpen = true;
        session.I2cWriteAddr = 0x88;
        session.I2cReadAddr = 0x89;
    }

    static void Pump(int times = 3) {
        for (int i = 0; i < times; ++i) QCoreApplication::processEvents();
    }
};

}  // namespace lxm::test
