#include "support/testmain.h"

#include "gui/font_configuration.h"

#include <QTemporaryDir>

#include <fontconfig/fontconfig.h>

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
