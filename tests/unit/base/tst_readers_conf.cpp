#include "support/testmain.h"

#include "base/common.h"
#include "base/platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

// readers.conf: how large an APDU each reader takes.
class TstReadersConf : public QObject {
    Q_OBJECT

private slots:
    void init();

    void fileLiesInTheFolderOfTheUser();
    void apduSizeOfAReader_data();
    void apduSizeOfAReader();
    void missingFileGivesTheDefault();
    void answerIsLoggedButNotTheDefault();
    void fileIsReadAnew();
    void contentIsGivenAsItStands();
    void clearingEmptiesTheFile();
    void clearingAMissingFileIsDoneAndMakesNone();
    void clearingWhatCannotBeOpenedFails();
};

namespace {

QString confPath()
{
#ifdef Q_OS_WIN
    return qEnvironmentVariable("APPDATA") + "\\velmor\\readers.conf";
#else
    return qEnvironmentVariable("XDG_CONFIG_HOME") + "/velmor/readers.conf";
#endif
}

void put(const QByteArray &content)
{
    QVERIFY(QDir().mkpath(QFileInfo(confPath()).path()));
    QFile file(confPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

void TstReadersConf::init()
{
    QDir(confPath()).removeRecursively();
    QFile::remove(confPath());
}

void TstReadersConf::fileLiesInTheFolderOfTheUser()
{
    QCOMPARE(Platform::readersConfPath("velmor"), confPath());
}

void TstReadersConf::apduSizeOfAReader_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reader");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &content, const QString &reader, const QString &expected) {
        QTest::newRow(name) << content << reader << expected;
    };
    row("whole name", "Reader A=2048E\r\n", "Reader A", "2048E");
    row("part of the name", "Reader A=2048E\r\n", "Vendor Reader A 00 00", "2048E");
    row("name is part of the key", "Reader AB=2048E\r\n", "Reader A", "200");
    row("other case", "reader a=2048E\r\n", "Reader A", "200");
    row("no line names it", "Reader B=2048E\r\n", "Reader A", "200");
    row("empty file", "", "Reader A", "200");
    row("first line wins", "Reader=250\r\nReader A=2048E\r\n", "Reader A", "250");
    row("a later line", "Reader B=250\r\nReader A=2048E\r\n", "Reader A", "2048E");
    row("no line end", "Reader B=250\r\nReader A=2048E", "Reader A", "2048E");
    row("empty lines are passed over", "\r\n\r\nReader A=2048E\r\n", "Reader A", "2048E");
    row("line without = is passed over", "Reader A\r\nReader A=2048E\r\n", "Reader A", "2048E");
    row("empty key is passed over", "=250\r\nReader A=2048E\r\n", "Reader A", "2048E");
    row("key with =", "A=B=2048E\r\n", "Reader A=B 00", "2048E");
    row("key with =, other name", "A=B=2048E\r\n", "Reader A", "200");
    row("empty value", "Reader A=\r\nReader=250\r\n", "Reader A", "");
    row("blanks belong to key and value", "Reader A = 2048E\r\nReader A= 2048E \r\n", "Reader A", " 2048E ");
    row("Polish name", "Czytnik łącza=2048E\r\n", "Czytnik łącza 0", "2048E");
    // Lines end in CR LF; with LF alone the whole is one line, and its key no reader's name.
    row("LF alone, two lines", "Reader A=250\nReader B=2048E\n", "Reader A", "200");
    row("LF alone, one line", "Reader A=250\n", "Reader A", "250\n");
}

void TstReadersConf::apduSizeOfAReader()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, reader);
    put(content);

    QTEST(Common::maxApduSize(reader), "expected");
}

void TstReadersConf::missingFileGivesTheDefault()
{
    QCOMPARE(Common::maxApduSize("Reader A"), QString("200"));
    QVERIFY(!QFile::exists(confPath()));
}

void TstReadersConf::answerIsLoggedButNotTheDefault()
{
    put("Reader A=2048E\r\n");
    const LogCatcher log;

    Common::maxApduSize("Reader B");
    QCOMPARE(log.lines(), QStringList());
    Common::maxApduSize("Reader A");

    QCOMPARE(log.lines(), QStringList({ "reader maxApdu is 2048E" }));
}

void TstReadersConf::fileIsReadAnew()
{
    put("Reader A=2048E\r\n");
    QCOMPARE(Common::maxApduSize("Reader A"), QString("2048E"));

    put("Reader A=250\r\n");

    QCOMPARE(Common::maxApduSize("Reader A"), QString("250"));
}

void TstReadersConf::contentIsGivenAsItStands()
{
    QCOMPARE(Common::readReadersConf(), QString());

    put("Reader A=2048E\r\nŻ=1\n");

    QCOMPARE(Common::readReadersConf(), QString("Reader A=2048E\r\nŻ=1\n"));
}

void TstReadersConf::clearingEmptiesTheFile()
{
    put("Reader A=2048E\r\n");

    QVERIFY(Common::clearReadersConf());

    QVERIFY(QFile::exists(confPath()));
    QCOMPARE(QFileInfo(confPath()).size(), qint64(0));
    QCOMPARE(Common::maxApduSize("Reader A"), QString("200"));
}

void TstReadersConf::clearingAMissingFileIsDoneAndMakesNone()
{
    QVERIFY(Common::clearReadersConf());

    QVERIFY(!QFile::exists(confPath()));
}

void TstReadersConf::clearingWhatCannotBeOpenedFails()
{
    QVERIFY(QDir().mkpath(confPath()));

    QVERIFY(!Common::clearReadersConf());
}

VELMOR_TEST(TstReadersConf)
#include "tst_readers_conf.moc"
