#include "support/testmain.h"

#include "base/common.h"
#include "platform/usb_readers_lin.h"

// Readers among the USB devices, in a folder of the shape that the kernel gives.
class TstUsbReaders : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;

    void addInterface(const QString &device, const QString &number, const QByteArray &interfaceClass)
    {
        write(device + ':' + number, "bInterfaceClass", interfaceClass + '\n');
    }
    void addDevice(const QString &device, const QMap<QString, QByteArray> &attributes)
    {
        for (auto attribute = attributes.begin(); attribute != attributes.end(); ++attribute)
            write(device, attribute.key(), attribute.value() + '\n');
    }
    // The kernel keeps a device elsewhere, and a link to it in the folder of the bus.
    void write(const QString &entry, const QString &name, const QByteArray &content)
    {
        QDir(folder->path()).mkpath("pci/" + entry);
        QDir(folder->path()).mkpath("bus");
        QFile::link("../pci/" + entry, bus() + '/' + entry);
        QVERIFY(QFileInfo(bus() + '/' + entry).isSymLink());
        QVERIFY(writeFileBytes(folder->filePath("pci/" + entry + '/' + name), content));
    }
    QString bus() const { return folder->filePath("bus"); }
    QStringList names() const { return UsbReaders::namesIn(bus()); }

private slots:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void nameIsMadeOfMakerAndProduct_data()
    {
        QTest::addColumn<QByteArray>("maker");
        QTest::addColumn<QByteArray>("product");
        QTest::addColumn<QString>("name");
        QTest::newRow("both") << QByteArray("OMNIA") << QByteArray("Smart 3121") << "OMNIA Smart 3121";
        QTest::newRow("product with its maker")
            << QByteArray("OMNIA") << QByteArray("Omnia Smart 3121") << "Omnia Smart 3121";
        QTest::newRow("product alone") << QByteArray() << QByteArray("Smart 3121") << "Smart 3121";
        QTest::newRow("no product") << QByteArray("OMNIA") << QByteArray() << "076b:3031";
        QTest::newRow("blanks") << QByteArray(" OMNIA ") << QByteArray("Smart\t 3121 ") << "OMNIA Smart 3121";
        QTest::newRow("Polish letters") << QByteArray("Łącze") << QByteArray("Czytnik żółty") << "Łącze Czytnik żółty";
        QTest::newRow("markup") << QByteArray("<a href='x'>") << QByteArray("y</a>") << "<a href='x'> y</a>";
    }
    void nameIsMadeOfMakerAndProduct()
    {
        QFETCH(QByteArray, maker);
        QFETCH(QByteArray, product);
        addInterface("1-4", "1.0", "0b");
        addDevice(
            "1-4",
            { { "manufacturer", maker }, { "product", product }, { "idVendor", "076b" }, { "idProduct", "3031" } });

        QTEST(names().join('|'), "name");
    }

    void onlyInterfacesOfTheReaderClassCount()
    {
        addInterface("1-1", "1.0", "03");
        addDevice("1-1", { { "product", "Klawiatura" } });
        addInterface("1-2", "1.0", "03");
        addInterface("1-2", "1.1", "0B");
        addDevice("1-2", { { "product", "Klawiatura z czytnikiem" } });
        addInterface("1-3", "1.0", "e0");
        addDevice("1-3", { { "product", "Bluetooth" } });
        addDevice("usb1", { { "product", "Hub" }, { "bInterfaceClass", "0b" } });

        QCOMPARE(names(), QStringList { "Klawiatura z czytnikiem" });
    }

    void namesAreSortedAndSingle()
    {
        for (const char *device : { "2-1", "1-1.3", "1-2" }) {
            addInterface(device, "1.0", "0b");
            addDevice(device, { { "product", qstrcmp(device, "1-2") == 0 ? "Alfa" : "beta" } });
        }

        QCOMPARE(names(), QStringList({ "Alfa", "beta" }));
    }

    void twoInterfacesOfOneReaderGiveOneName()
    {
        addInterface("1-1", "1.0", "0b");
        addInterface("1-1", "1.1", "0b");
        addDevice("1-1", { { "product", "Czytnik" } });

        QCOMPARE(names(), QStringList { "Czytnik" });
    }

    void systemWithoutReadersGivesNone()
    {
        QCOMPARE(names(), QStringList());
        QCOMPARE(UsbReaders::namesIn(folder->filePath("none")), QStringList());
    }

    void deviceThatVanishesMeanwhileIsLeftOut()
    {
        addInterface("1-1", "1.0", "0b");
        QFile::link("../pci/1-1", bus() + "/1-1");
        QFile::link("../pci/1-2:1.0", bus() + "/1-2:1.0");

        QCOMPARE(names(), QStringList());
    }
};

VELMOR_TEST(TstUsbReaders)
#include "tst_usb_readers_lin.moc"
