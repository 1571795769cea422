#include "generic_usb_lib.h"

#include <QString>
#include <cstring>

#include "core/ActiveForm.h"
#include "core/Shape.h"
#include "core/Yield.h"
#include "transport/Session.h"

namespace lxm::generic_usb_lib {

namespace {
constexpr int kBlack = 0;
constexpr int kLightGreen = 10;
constexpr int kLightRed = 12;
}  // namespace

UsbLib::UsbLib(Session& session) : s_(session) {}

void UsbLib::AttachLamp(int colour) {
    if (s_.activeForm && s_.activeForm->ShpAttach()) s_.activeForm->ShpAttach()->setFillIndex(colour);
}

void UsbLib::TransferLamp(int colour) {
    if (s_.activeForm && s_.activeForm->Shp_USB_Transfer())
        s_.activeForm->Shp_USB_Transfer()->setFillIndex(colour);
}

void UsbLib::InfoLamp(int colour) {
    if (s_.startupLamps && s_.startupLamps->Shp_USB_Info())
        s_.startupLamps->Shp_USB_Info()->setFillIndex(colour);
}

void UsbLib::InitLamp(int colour) {
    if (s_.startupLamps && s_.startupLamps->Shp_USB_Init())
        s_.startupLamps->Shp_USB_Init()->setFillIndex(colour);
}

void UsbLib::InitDriver() {
    attachContext.interfaceNumber = 0;
    attachContext.alternateSetting = 0;

    UsbEvents events;
    events.attach = [this](DeviceHandle dev, const UsbDeviceInfo& info, void* user) {
        return OnDeviceAttach(dev, info, user);
    };
    events.detach = [this](DeviceHandle dev, void* user) { OnDeviceDetach(dev, user); };
    events.userData = &attachContext;

    DriverHandle handle = 0;
    s_.LastStatus = s_.driver.Init(&handle, UsbMatch{kBoardVendorId, kBoardProductId}, events);
    if (s_.LastStatus == kUsbOk) {
        // A later "Init Table" replaces the registration; the old one would otherwise keep
        // delivering a second copy of every attach and detach.
        if (driverHandle > 0 && driverHandle != handle) s_.driver.Uninit(driverHandle);
        driverHandle = handle;
        s_.DriverInitOK = true;
        InitLamp(kLightGreen);
    } else {
        s_.DriverInitOK = false;
        InitLamp(kLightRed);
    }
}

bool UsbLib::OnDeviceAttach(DeviceHandle device, const UsbDeviceInfo& info, void* userData) {
    auto* ctx = static_cast<AttachContext*>(userData);
    bool accept = false;
    s_.UsbConnected = false;
    AttachLamp(kLightRed);
    TransferLamp(kBlack);
    InfoLamp(kBlack);
    if (info.interfaceNumber == ctx->interfaceNumber) {
        ctx->deviceHandle = device;
        ctx->status =
            std::int32_t(s_.driver.SetInterface(device, ctx->interfaceNumber, ctx->alternateSetting));
        if (ctx->status == 0) {
            s_.UsbDetached = false;
            accept = true;
            s_.UsbConnected = true;
            AttachLamp(kLightGreen);
            TransferLamp(kBlack);
        } else {
            ctx->deviceHandle = 0;
            s_.UsbConnected = false;
            accept = false;
        }
    } else {
        accept = false;
        AttachLamp(kLightRed);
        TransferLamp(kBlack);
        InfoLamp(kBlack);
    }
    return accept;
}

void UsbLib::OnDeviceDetach(DeviceHandle /*device*/, void* userData) {
    AttachContext ctx;
    std::memcpy(&ctx, userData, sizeof ctx);
    s_.UsbConnected = false;
    s_.UsbDetached = true;
    s_.DeviceOpen = false;
    s_.ReopenNeeded = true;
    s_.Collecting = false;
    AttachLamp(kLightRed);
    TransferLamp(kBlack);
    InfoLamp(kBlack);
    ctx.deviceHandle = 0;
    std::memcpy(userData, &ctx, sizeof ctx);
    s_.messages.MsgBox(
        QStringLiteral("Device has been disconnected, reconnect and re-initialize all registers"));
}

void UsbLib::OpenDevice() {
    s_.DeviceOpen = false;
    AttachLamp(kLightRed);
    for (int i = 1; i <= openWaitYields; ++i) {
        DoEvents();
        if (s_.UsbConnected) {
            AttachLamp(kLightGreen);
            break;
        }
    }
    deviceHandle = attachContext.deviceHandle;
    if (deviceInfoPtr) {
        s_.driver.PutDeviceInfo(deviceInfoPtr);
        deviceInfoPtr = nullptr;
    }
    s_.LastStatus = s_.driver.GetDeviceInfo(deviceHandle, &deviceInfoPtr);
    if (s_.LastStatus == kUsbOk) {
        s_.DeviceInfoOK = true;
        InfoLamp(kLightGreen);
        DoEvents();
        s_.DeviceOpen = true;
        s_.ReopenNeeded = false;
        problemShown_ = false;
        DoEvents();
    } else {
        s_.DeviceInfoOK = false;
        InfoLamp(kLightRed);
        // A board that is there but may not be opened (no permission on its device node) is
        // the one failure the lamps cannot explain; say once what fixes it.
        std::string problem = s_.driver.LastOpenProblem();
        if (!problem.empty() && !problemShown_) {
            problemShown_ = true;
            s_.messages.MsgBox(QString::fromStdString(problem));
        }
    }
}

void UsbLib::CloseDevice() {
    if (driverHandle < 1) return;
    s_.driver.ResetDevice(deviceHandle, 0);
    s_.driver.Uninit(driverHandle);
    driverHandle = 0;
    s_.clock.Sleep(100);
    DoEvents();
    s_.DeviceOpen = false;
    DoEvents();
    DoEvents();
}

void UsbLib::ShutdownUsb() {
    const DeviceHandle dev = attachContext.deviceHandle;
    s_.driver.ResetPipe(dev, 1);
    s_.driver.ResetPipe(dev, 2);
    std::uint32_t last = s_.driver.ResetPipe(dev, 3);
    if (last != kUsbOk) return;
    if (deviceInfoPtr) {
        s_.driver.PutDeviceInfo(deviceInfoPtr);
        deviceInfoPtr = nullptr;
    }
    if (driverHandle > 0) {
        s_.driver.Uninit(driverHandle);
        driverHandle = 0;
    }
}

}  // namespace lxm::generic_usb_lib
