#include "support/testmain.h"

#include "base/common.h"
#include "support/ordinary_user.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

// Reading and writing of whole files.
class TstCommonFiles : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void textIsTheWholeFileAsUtf8_data();
    void textIsTheWholeFileAsUtf8();
    void textOfWhatCannotBeOpenedIsEmpty();
    void bytesMakeAFile();
    void bytesReplaceALongerFile();
    void bytesIntoNoFolderAreRefused();
    void contentIsLostWhenTheFileCannotBeOpenedAfterTheCut();
    void contentStaysWhenTheFileCannotBeCut();
    void failedWriteIsNotLookedAt();
    void emptyFileIsMade();
    void emptyFileIsCut();
    void emptyFileInNoFolderIsNotMade();
    void existingFileIsWritable();
    void missingFileIsWritableAndThereAfterwards();
    void folderAndFileInNoFolderAreNotWritable();
    void readOnlyFileIsNotWritable();

private:
    QString path(const QString &name = "file") const { return folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> folder;
};

namespace {

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be opened");
}

} // namespace

void TstCommonFiles::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
#ifdef Q_OS_UNIX
    // Whoever OrdinaryUser becomes gets as far as the files of the test.
    for (const QString &way : { TestHome::path(), QDir::tempPath(), folder->path() })
        QCOMPARE(chmod(QFile::encodeName(way).constData(), 0755), 0);
#endif
}

void TstCommonFiles::cleanup()
{
    folder.reset();
}

void TstCommonFiles::textIsTheWholeFileAsUtf8_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("Polish") << QByteArray("za\xC5\xBC\xC3\xB3\xC5\x82\xC4\x87") << QString("zażółć");
    QTest::newRow("line ends stay") << QByteArray("a\r\nb\nc\r") << "a\r\nb\nc\r";
    QTest::newRow("a megabyte") << QByteArray(1 << 20, 'x') << QString(1 << 20, 'x');
    QTest::newRow("zero byte") << QByteArray("a\0b", 3) << QString("a%1b").arg(QChar(0));
}

void TstCommonFiles::textIsTheWholeFileAsUtf8()
{
    QFETCH(QByteArray, content);
    put(path(), content);

    QTEST(readFileText(path()), "expected");
}

void TstCommonFiles::textOfWhatCannotBeOpenedIsEmpty()
{
    QCOMPARE(readFileText(path("missing")), QString());
    QCOMPARE(readFileText(folder->path()), QString());
    QVERIFY(!QFile::exists(path("missing")));
}

void TstCommonFiles::bytesMakeAFile()
{
    const QByteArray bytes("a\r\n\0\xFF\xC4", 6);

    QVERIFY(writeFileBytes(path(), bytes));

    QCOMPARE(contentOf(path()), bytes);
}

void TstCommonFiles::bytesReplaceALongerFile()
{
    put(path(), "a longer content");

    QVERIFY(writeFileBytes(path(), "short"));
    QCOMPARE(contentOf(path()), QByteArray("short"));

    QVERIFY(writeFileBytes(path(), QByteArray()));
    QCOMPARE(contentOf(path()), QByteArray());
}

void TstCommonFiles::bytesIntoNoFolderAreRefused()
{
    QVERIFY(!writeFileBytes(path("missing/file"), "bytes"));
    QVERIFY(!writeFileBytes(folder->path(), "bytes"));
    QVERIFY(!QFile::exists(path("missing")));
}

void TstCommonFiles::contentIsLostWhenTheFileCannotBeOpenedAfterTheCut()
{
#ifdef Q_OS_UNIX
    // A file that may be written and not read: the cut by name works, the opening for both does not.
    put(path(), "old content");
    QCOMPARE(chmod(QFile::encodeName(path()).constData(), 0622), 0);
    if (geteuid() != 0)
        QCOMPARE(chmod(QFile::encodeName(path()).constData(), 0200), 0);

    bool written = true;
    {
        const OrdinaryUser user;
        written = writeFileBytes(path(), "new content");
    }

    QVERIFY(!written);
    QCOMPARE(QFileInfo(path()).size(), qint64(0));
#else
    QSKIP("There are no files here that may be written and not read");
#endif
}

void TstCommonFiles::contentStaysWhenTheFileCannotBeCut()
{
#ifdef Q_OS_UNIX
    put(path(), "old content");
    QCOMPARE(chmod(QFile::encodeName(path()).constData(), 0444), 0);

    bool written = true;
    {
        const OrdinaryUser user;
        written = writeFileBytes(path(), "new content");
    }

    QVERIFY(!written);
    QCOMPARE(contentOf(path()), QByteArray("old content"));
#else
    QSKIP("Done on the other platform");
#endif
}

void TstCommonFiles::failedWriteIsNotLookedAt()
{
    const QString full = "/dev/full";
    if (!QFile::exists(full))
        QSKIP("No device here that refuses every write");

    QVERIFY(writeFileBytes(full, "bytes"));
}

void TstCommonFiles::emptyFileIsMade()
{
    createEmptyFile(path());

    QVERIFY(QFile::exists(path()));
    QCOMPARE(contentOf(path()), QByteArray());
}

void TstCommonFiles::emptyFileIsCut()
{
    put(path(), "old content");

    createEmptyFile(path());

    QCOMPARE(contentOf(path()), QByteArray());
}

void TstCommonFiles::emptyFileInNoFolderIsNotMade()
{
    createEmptyFile(path("missing/file"));

    QVERIFY(!QFile::exists(path("missing")));
}

void TstCommonFiles::existingFileIsWritable()
{
    put(path(), "content");

    QVERIFY(Common::isWritable(path()));
}

void TstCommonFiles::missingFileIsWritableAndThereAfterwards()
{
    QVERIFY(Common::isWritable(path()));

    QCOMPARE(contentOf(path()), QByteArray());
}

void TstCommonFiles::folderAndFileInNoFolderAreNotWritable()
{
    QVERIFY(!Common::isWritable(folder->path()));
    QVERIFY(!Common::isWritable(path("missing/file")));
    QVERIFY(!QFile::exists(path("missing")));
}

void TstCommonFiles::readOnlyFileIsNotWritable()
{
    put(path(), "content");
    QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner | QFile::ReadUser | QFile::ReadOther));
#ifdef Q_OS_WIN
    if (std::FILE *file = _wfopen(reinterpret_cast<const wchar_t *>(path().utf16()), L"r+")) {
        std::fclose(file);
        QSKIP("Nothing is read-only for this account");
    }
#endif

    bool writable = true;
    {
        const OrdinaryUser user;
        writable = Common::isWritable(path());
    }

    QVERIFY(!writable);
    QCOMPARE(contentOf(path()), QByteArray("content"));
    QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner);
}

VELMOR_TEST(TstCommonFiles)
#include "tst_common_files.moc"
