#include "support/testmain.h"

#include "gui/font_configuration.h"

#include <QTemporaryDir>

#include <fontconfig/fontconfig.h>

#include <malloc.h>

// What this process knows of the system's fonts, and when it reads that.
class TstFontConfigurationLinux : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;

    // The file from which a configuration is read that is not there yet, with these words in it.
    QString startFrom(const QByteArray &words)
    {
        const QString path = folder.filePath("fonts.conf");
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("<fontconfig>" + words + "</fontconfig>") < 0)
            return {};
        qputenv("FONTCONFIG_FILE", path.toUtf8());
        FcConfigSetCurrent(nullptr);
        return path;
    }

    static QStringList all(FcStrList *list)
    {
        QStringList result;
        while (const FcChar8 *text = FcStrListNext(list))
            result << QString::fromUtf8(reinterpret_cast<const char *>(text));
        FcStrListDone(list);
        return result;
    }

    // Of the configuration that is there now; the library reads one if there is none.
    static QStringList files() { return all(FcConfigGetConfigFiles(nullptr)); }
    static int fonts() { return FcConfigGetFonts(nullptr, FcSetSystem)->nfont; }
    static QByteArray standIns(const QByteArray &family)
    {
        FcPattern *pattern = FcNameParse(reinterpret_cast<const FcChar8 *>(family.constData()));
        FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
        FcChar8 *words = FcNameUnparse(pattern);
        const QByteArray result(reinterpret_cast<const char *>(words));
        FcStrFree(words);
        FcPatternDestroy(pattern);
        return result;
    }
    static QStringList everythingKnown()
    {
        QStringList result = files() + all(FcConfigGetFontDirs(nullptr)) + all(FcConfigGetCacheDirs(nullptr));
        for (const char *family : { "sans", "serif", "monospace", "Poppins", "Segoe UI" })
            result << standIns(family);
        return result << QString::number(fonts());
    }

private slots:
    void initTestCase() { QVERIFY(folder.isValid()); }
    void cleanup()
    {
        qunsetenv("FONTCONFIG_FILE");
        FcConfigSetCurrent(nullptr);
    }

    void emptyOneHasNoFileAndTheNextOneIsRead_data()
    {
        QTest::addColumn<bool>("dropped");
        QTest::newRow("the toolkit drops it") << true;
        QTest::newRow("the toolkit leaves it") << false;
    }
    void emptyOneHasNoFileAndTheNextOneIsRead()
    {
        QFETCH(bool, dropped);
        const QString path = startFrom({});
        QVERIFY(files().contains(path));
        {
            const EmptyFontConfiguration empty;

            QCOMPARE(files(), QStringList());
            QCOMPARE(fonts(), 0);
            if (dropped)
                FcConfigDestroy(FcConfigGetCurrent());
        }

        QVERIFY(files().contains(path));
    }

    void whatIsReadIsWhatTheLibraryReadsItself()
    {
        const QStringList known = everythingKnown();
        FcConfigSetCurrent(nullptr);

        readFontConfiguration();

        QCOMPARE(everythingKnown(), known);
    }

    void itIsReadAtOnce()
    {
        const QString path = startFrom("<cachedir>" + folder.path().toUtf8() + "</cachedir>");

        readFontConfiguration();

        QVERIFY(QFile::remove(path));
        QVERIFY(files().contains(path));
    }

    // The library then takes folders of its own choice.
    void withoutACacheItIsLeftToTheLibrary()
    {
        const QString path = startFrom({});

        readFontConfiguration();

        QVERIFY(QFile::remove(path));
        QVERIFY(!files().contains(path));
        QVERIFY(!all(FcConfigGetCacheDirs(nullptr)).isEmpty());
    }

    void whatWasReadBeforeIsLetGo_data()
    {
        QTest::addColumn<QByteArray>("words");
        QTest::addColumn<bool>("empty");
        QTest::newRow("read") << QByteArray("<cachedir>" + folder.path().toUtf8() + "</cachedir>") << false;
        QTest::newRow("left to the library") << QByteArray() << false;
        QTest::newRow("empty") << QByteArray() << true;
    }
    void whatWasReadBeforeIsLetGo()
    {
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 33)
        QFETCH(QByteArray, words);
        QFETCH(bool, empty);
        startFrom(words);
        const auto read = [empty](int times) {
            for (int i = 0; i < times; ++i) {
                if (empty) {
                    const EmptyFontConfiguration configuration;
                } else {
                    readFontConfiguration();
                }
                FcConfigSetCurrent(nullptr);
            }
            return static_cast<qint64>(mallinfo2().uordblks);
        };
        constexpr int times = 200;
        const qint64 before = read(10);

        const qint64 grown = read(times) - before;

        // The smallest of what is taken is a list of one folder.
        QVERIFY2(grown < times * 64, qPrintable(QString::number(grown)));
#else
        QSKIP("The library of this system does not tell what is in use");
#endif
    }

    void brokenOneIsLeftToTheLibrary()
    {
        const QString path = startFrom("<cachedir>" + folder.path().toUtf8() + "</cachedir><dir>");

        readFontConfiguration();

        QVERIFY(QFile::remove(path));
        QVERIFY(!files().contains(path));
    }
};

VELMOR_TEST(TstFontConfigurationLinux)
#include "tst_font_configuration_linux.moc"
