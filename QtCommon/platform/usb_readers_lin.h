#pragma once

#include <QString>
#include <QStringList>

// USB devices with an interface of class 0b, which is that of smart-card readers (CCID), as the kernel lists them.
namespace UsbReaders {

constexpr char systemFolder[] = "/sys/bus/usb/devices";

// Names of maker and product, or the numbers of both where the device tells no name; sorted, without duplicates.
QStringList namesIn(const QString &usbDevices);

} // namespace UsbReaders
