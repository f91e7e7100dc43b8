#include "platform/usb_readers_lin.h"

#include "base/common.h"

#include <QDir>

namespace {

QString attribute(const QString &device, const char *name)
{
    return readFileText(device + '/' + name).simplified();
}

// Empty for a device that has been pulled out meanwhile. Some makers begin the product's name with their own.
QString deviceName(const QString &device)
{
    const QString maker = attribute(device, "manufacturer");
    QString product = attribute(device, "product");
    const QString vendorNumber = attribute(device, "idVendor");
    if (product.isEmpty())
        return vendorNumber.isEmpty() ? QString() : vendorNumber + ':' + attribute(device, "idProduct");
    if (maker.isEmpty() || product.startsWith(maker, Qt::CaseInsensitive))
        return product;
    return maker + ' ' + product;
}

} // namespace

namespace UsbReaders {

QStringList namesIn(const QString &usbDevices)
{
    QStringList result;
    const QDir folder(usbDevices);
    // Interfaces are named after their device: "1-4:1.0" is one of "1-4".
    for (const QString &interface : folder.entryList({ "*:*" }, QDir::Dirs)) {
        if (attribute(folder.filePath(interface), "bInterfaceClass").compare("0b", Qt::CaseInsensitive) == 0)
            result << deviceName(folder.filePath(sliceText(interface, "^:^")));
    }
    result.removeAll({});
    result.removeDuplicates();
    result.sort(Qt::CaseSensitive);
    return result;
}

} // namespace UsbReaders
