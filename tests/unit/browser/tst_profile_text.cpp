#include "browser/profile_text.h"
#include "support/testmain.h"

using namespace ProfileText;

// The two edits and the two checks on the texts of a profile's files.
class TestProfileText : public QObject {
    Q_OBJECT

private:
    static QString parameters()
    {
        // Counted and written out by hand, as NSS reads them.
        QString entries = "0xffffffff=[slotFlags=PublicCerts]";
        for (const char *slot : { "0x0", "0x1", "0x2", "0x3", "0x4", "0x5", "0x6", "0x7", "0x8", "0x9", "0xa", "0xb",
                                  "0xc", "0xd", "0xe", "0xf" })
            entries += QString(" ") + slot + "=[slotFlags=PublicCerts]";
        return "slotParams={" + entries + "}";
    }

private slots:
    void entryIsFourLines()
    {
        QCOMPARE(moduleEntry("C:\\velmor\\64\\velmor-pkcs11-64.dll", "velmor (64 bits)", parameters()),
                 "\r\nlibrary=C:\\velmor\\64\\velmor-pkcs11-64.dll\r\nname=velmor (64 bits)\r\nNSS=" + parameters()
                     + "\r\n");
    }

    void placesOfTheEntryAreFilledInOneStep()
    {
        QCOMPARE(moduleEntry("/opt/100%2/%3", "%1", "%2"),
                 QString("\r\nlibrary=/opt/100%2/%3\r\nname=%1\r\nNSS=%2\r\n"));
    }

    void moduleIsThereByItsWholePath_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("there");
        QTest::newRow("in its line") << "library=C:\\a\\velmor-pkcs11-64.dll\r\n" << true;
        QTest::newRow("anywhere") << "# C:\\a\\velmor-pkcs11-64.dll was here" << true;
        QTest::newRow("LF alone") << "name=x\nlibrary=C:\\a\\velmor-pkcs11-64.dll\nNSS=" << true;
        QTest::newRow("another folder") << "library=C:\\b\\velmor-pkcs11-64.dll\r\n" << false;
        QTest::newRow("other case") << "library=c:\\a\\velmor-pkcs11-64.dll\r\n" << false;
        QTest::newRow("other width") << "library=C:\\a\\velmor-pkcs11-32.dll\r\n" << false;
        QTest::newRow("empty") << "" << false;
    }

    void moduleIsThereByItsWholePath()
    {
        QFETCH(QString, text);
        QTEST(hasModule(text, "C:\\a\\velmor-pkcs11-64.dll"), "there");
    }

    void entryIsTakenOut_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        const QString others = "library=\r\nname=NSS Internal\r\nNSS=Flags=internal\r\n";
        const QString entry = moduleEntry("C:\\a\\velmor-pkcs11-64.dll", "velmor (64 bits)", parameters());
        QTest::newRow("as it was appended") << others + entry << others;
        QTest::newRow("twice") << others + entry + entry << others;
        QTest::newRow("another folder") << others + moduleEntry("D:\\velmor-pkcs11-64.dll", "n", "p") << others;
        QTest::newRow("32 bits") << others + moduleEntry("C:\\a\\velmor-pkcs11-32.dll", "n", "p") << others;
        QTest::newRow("a library of Linux")
            << others + moduleEntry("/opt/velmor/velmor-pkcs11-64.so", "n", "p") << others;
        QTest::newRow("the only one") << entry << "";
        QTest::newRow("lines behind it up to the next library")
            << "library=velmor-pkcs11\r\nname=a\r\nNSS=b\r\nanything\r\nlibrary=other\r\nname=c\r\n"
            << "library=other\r\nname=c\r\n";
        QTest::newRow("lines before it stay") << "name=a\r\nlibrary=velmor-pkcs11\r\nname=b\r\n"
                                              << "name=a\r\n";
        QTest::newRow("empty lines go, blanks of others stay")
            << "\r\n  library = x \r\n\t\r\n name=c\t\r\n \r\nlibrary=velmor-pkcs11\r\n"
            << "  library = x \r\n name=c\t\r\n";
        QTest::newRow("LIBRARY in capitals, blanks around") << "a=b\r\n\t LIBRARY \t=  x/velmor-pkcs11-64.so \r\nname=z"
                                                            << "a=b\r\n";
        QTest::newRow("value with a second sign") << "library=a=velmor-pkcs11\r\nname=b\r\n"
                                                  << "";
        QTest::newRow("library without sign ends ours") << "library=velmor-pkcs11\r\nname=a\r\nlibrary\r\nname=b\r\n"
                                                        << "library\r\nname=b\r\n";
        QTest::newRow("no line end at the end") << "library=o\r\nlibrary=velmor-pkcs11"
                                                << "library=o\r\n";
        QTest::newRow("LF alone is one line, and all of it goes")
            << "library=x\nname=velmor-pkcs11\nlibrary=other\nname=keep\n"
            << "";
        QTest::newRow("mixed ends") << "library=o\nname=a\r\nlibrary=velmor-pkcs11\nname=b\r\nlibrary=p\r\n"
                                    << "library=o\nname=a\r\nlibrary=p\r\n";
        QTest::newRow("lone CR is no end") << "library=o\rlibrary=velmor-pkcs11\r\nname=a\r\n"
                                           << "";
        QTest::newRow("Polish letters stay") << "library=żółw\r\nlibrary=velmor-pkcs11\r\n"
                                             << "library=żółw\r\n";
        const QString zero(QChar(0));
        QTest::newRow("zero bytes") << "name=" + zero + "a\r\nlibrary=velmor-pkcs11" + zero + "\r\n"
                                    << "name=" + zero + "a\r\n";
    }

    void entryIsTakenOut()
    {
        QFETCH(QString, before);
        const std::optional<QString> rest = withoutModule(before);
        QVERIFY(rest);
        QTEST(*rest, "after");
    }

    void textWithoutAnEntryIsNotTouched_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << "";
        QTest::newRow("others alone, empty lines too") << "\r\nlibrary=\r\nname=a\r\n\r\nlibrary=b\r\n";
        QTest::newRow("the mark in another line") << "library=b\r\nname=velmor-pkcs11\r\n";
        QTest::newRow("the mark before any library") << "velmor-pkcs11\r\n";
        QTest::newRow("the mark in other case") << "library=Velmor-PKCS11-64.dll\r\n";
        QTest::newRow("a longer key") << "mylibrary=velmor-pkcs11\r\n";
        QTest::newRow("LF alone that does not start with a library") << "name=a\nlibrary=velmor-pkcs11-64.so\n";
    }

    void textWithoutAnEntryIsNotTouched()
    {
        QFETCH(QString, text);
        QVERIFY(!withoutModule(text));
    }

    void preferenceIsTheLastLine_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("kept");
        QTest::newRow("no file") << ""
                                 << "";
        QTest::newRow("others stay as they stood") << "// a\r\n  user_pref(\"b\", 1); \r\nuser_pref(\"c\", \"ż\");\r\n"
                                                   << "// a\r\n  user_pref(\"b\", 1); \r\nuser_pref(\"c\", \"ż\");\r\n";
        QTest::newRow("its old line goes") << "a\r\nuser_pref(\"security.osclientcerts.autoload\", false);\r\nb\r\n"
                                           << "a\r\nb\r\n";
        QTest::newRow("every line that names it goes")
            << "// security.osclientcerts.autoload\r\na\r\nuser_pref(\"security.osclientcerts.autoload.x\", 1);"
            << "a\r\n";
        QTest::newRow("other case stays") << "Security.osclientcerts.autoload\r\n"
                                          << "Security.osclientcerts.autoload\r\n";
        QTest::newRow("empty lines go") << "\r\n \t\r\na\r\n\r\n"
                                        << "a\r\n";
        QTest::newRow("last line without an end") << "a\r\nb"
                                                  << "a\r\nb\r\n";
        QTest::newRow("LF alone without it stays in one") << "a\nb\n"
                                                          << "a\nb\n\r\n";
        QTest::newRow("LF alone with it goes as a whole") << "a\nsecurity.osclientcerts.autoload\nb\n"
                                                          << "";
        QTest::newRow("mixed ends") << "a\nb\r\nc\nsecurity.osclientcerts.autoload\r\nd"
                                    << "a\nb\r\nd\r\n";
    }

    void preferenceIsTheLastLine()
    {
        QFETCH(QString, before);
        QFETCH(QString, kept);
        QCOMPARE(withPreference(before, "security.osclientcerts.autoload", "true"),
                 kept + "user_pref(\"security.osclientcerts.autoload\", true);\r\n");
        QCOMPARE(withPreference(before, "security.osclientcerts.autoload", "false"),
                 kept + "user_pref(\"security.osclientcerts.autoload\", false);\r\n");
    }

    void linesOfAnotherKeyStayAndThoseOfThisOneGo()
    {
        const QString before = "user_pref(\"other\", 1);\r\nuser_pref(\"security.osclientcerts.autoload\", true);\r\n";
        QCOMPARE(withPreference(before, "other", "2"),
                 QString("user_pref(\"other\", 1);\r\nuser_pref(\"other\", 2);\r\n"));
    }

    void secondRunChangesNothing()
    {
        const QString once = withPreference("a\r\n\r\nb", autoloadKey, "true");
        QCOMPARE(withPreference(once, autoloadKey, "true"), once);
    }

    void valueIsFilledInOneStep()
    {
        QCOMPARE(withPreference({}, "%2%3", "%1%3"), QString("user_pref(\"%2%3\", %1%3);\r\n"));
    }

    void firstMentionDecides_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("loads");
        const QString on = "user_pref(\"security.osclientcerts.autoload\", true);\r\n";
        const QString off = "user_pref(\"security.osclientcerts.autoload\", false);\r\n";
        QTest::newRow("true") << on << true;
        QTest::newRow("false") << off << false;
        QTest::newRow("not there") << "user_pref(\"a\", true);\r\n" << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("true in a comment behind the bracket")
            << "user_pref(\"security.osclientcerts.autoload\", false); // true\r\n"
            << false;
        QTest::newRow("commented out, ahead of the real line") << "//" + on + off << true;
        QTest::newRow("false ahead of true") << off + on << false;
        QTest::newRow("no comma") << "security.osclientcerts.autoload true)" << false;
        QTest::newRow("no bracket") << "security.osclientcerts.autoload, true" << false;
        QTest::newRow("in capitals") << "security.osclientcerts.autoload, TRUE)" << false;
        QTest::newRow("part of a word") << "security.osclientcerts.autoload, \"untrue\")" << true;
        QTest::newRow("LF alone") << "a\n" + on.trimmed() + "\nb\n" << true;
        QTest::newRow("comma and bracket of a later line")
            << "// security.osclientcerts.autoload\r\nuser_pref(\"b\", true);\r\n"
            << true;
    }

    void firstMentionDecides()
    {
        QFETCH(QString, text);
        QTEST(autoloads(text), "loads");
    }
};

VELMOR_TEST(TestProfileText)
#include "tst_profile_text.moc"
