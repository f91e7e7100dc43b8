#include "fuzz/dg_probe.h"
#include "support/dg_builder.h"
#include "support/testmain.h"

#include "card/card-parser.h"

// Damaged files: nothing crashes, nothing is read outside the file, and no result is larger than what went in.
class TstCardParserDamage : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyTruncation_data() { addFiles(); }
    void everyTruncation();
    void everyByteSetToEveryValue_data() { addFiles(); }
    void everyByteSetToEveryValue();
    void everyLengthByteInEveryTruncation_data() { addFiles(); }
    void everyLengthByteInEveryTruncation();
    void filesOfOneByteAndOfTwo();
    void largeFiles_data();
    void largeFiles();

private:
    static void addFiles();
};

namespace {

using namespace DgBuilder;

void discard(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        qt_message_output(type, {}, message);
}

// Positions of the bytes that the layout of the file makes a length.
QList<int> lengthPositions(const QByteArray &file)
{
    QList<int> positions = { 1, 2, 3, 4 };
    for (int position = 0; position + 2 < file.size(); ++position) {
        if (file.at(position) == '\x5F')
            positions << position + 2;
    }
    return positions;
}

} // namespace

void TstCardParserDamage::initTestCase()
{
    // Each call of an accessor may log; hundreds of thousands of lines help nobody.
    qInstallMessageHandler(discard);
}

void TstCardParserDamage::addFiles()
{
    QTest::addColumn<QByteArray>("file");
    Dg2 picture;
    picture.picture = jpeg(60);
    picture.headers = QByteArray(30, '\x11');
    QTest::newRow("DG1") << Dg1().file();
    QTest::newRow("DG2") << picture.file();
    QTest::newRow("DG11") << Dg11().file();
    QTest::newRow("DG12") << Dg12().file();
    QTest::newRow("DG13") << Dg13().file();
}

void TstCardParserDamage::everyTruncation()
{
    QFETCH(QByteArray, file);

    for (int size = 0; size <= file.size(); ++size)
        QCOMPARE(DgProbe::complaintInAnySurroundings(file.left(size)), QString());
}

void TstCardParserDamage::everyByteSetToEveryValue()
{
    QFETCH(QByteArray, file);

    for (int position = 0; position < file.size(); ++position) {
        QByteArray damaged = file;
        for (int value = 0; value <= 0xFF; ++value) {
            damaged[position] = static_cast<char>(value);
            QCOMPARE(DgProbe::complaintInAnySurroundings(damaged), QString());
        }
    }
}

void TstCardParserDamage::everyLengthByteInEveryTruncation()
{
    QFETCH(QByteArray, file);

    for (const int position : lengthPositions(file)) {
        for (int size = position + 1; size <= file.size(); ++size) {
            QByteArray damaged = file.left(size);
            for (const int value : { 0, 1, 0x7F, 0x80, 0x81, 0x82, 0xFF }) {
                damaged[position] = static_cast<char>(value);
                QCOMPARE(DgProbe::complaintInAnySurroundings(damaged), QString());
            }
        }
    }
}

void TstCardParserDamage::filesOfOneByteAndOfTwo()
{
    for (const int first : { 0x00, 0x5F, 0x61, 0x6D, 0x75, 0x82, 0xFF }) {
        QByteArray file(1, static_cast<char>(first));
        QCOMPARE(DgProbe::complaintInAnySurroundings(file), QString());
        file.append('\0');
        for (int second = 0; second <= 0xFF; ++second) {
            file[1] = static_cast<char>(second);
            QCOMPARE(DgProbe::complaintInAnySurroundings(file), QString());
        }
    }
}

void TstCardParserDamage::largeFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    constexpr int size = 1 << 20;
    QTest::newRow("zeros") << QByteArray(size, '\0');
    QTest::newRow("first bytes of tags") << QByteArray(size, '\x5F');
    QTest::newRow("first bytes of markers") << QByteArray::fromHex("7582FFFF") + QByteArray(size, '\xFF');
    QTest::newRow("tags without end") << QByteArray::fromHex("5F10").repeated(size / 2);
    QTest::newRow("a marker at the very end")
        << QByteArray::fromHex("7582FFFF") + QByteArray(size, '\0') + QByteArray::fromHex("FFD8");
}

void TstCardParserDamage::largeFiles()
{
    QFETCH(QByteArray, file);

    QCOMPARE(DgProbe::complaintInAnySurroundings(file), QString());
}

VELMOR_TEST(TstCardParserDamage)
#include "tst_card_parser_damage.moc"
