#include "support/testmain.h"

#include "platform/card_software.h"

// Which lines on card software come of a list of installed programs.
class TstCardSoftware : public QObject {
    Q_OBJECT

private:
    using Program = CardSoftware::Program;
    struct Entry {
        QString word;
        int bits;
        Program program;
    };

    static QStringList linesOf(const QVector<Entry> &entries)
    {
        return CardSoftware::lines([&entries](const QString &word, int bits) {
            for (const Entry &entry : entries) {
                if (entry.word == word && entry.bits == bits)
                    return entry.program;
            }
            return Program();
        });
    }
    static Program program(const QString &name, const QString &version, const QString &bits = {})
    {
        return { { "name", name }, { "version", version }, { "appBits", bits } };
    }

private slots:
    void bothListsAreAskedForEveryWordInOrder()
    {
        QStringList asked;
        CardSoftware::lines([&asked](const QString &word, int bits) {
            asked << word + QString::number(bits);
            return Program();
        });

        QCOMPARE(asked,
                 QStringList({ "XCA64",        "XCA32",        "HID 64",      "HID 32",      "Identiv64", "Identiv32",
                               "Smart card64", "Smart card32", "idProtect64", "idProtect32", "brevant64", "brevant32",
                               "Szafir64",     "Szafir32",     "KIR64",       "KIR32",       "Reiner64",  "Reiner32",
                               "Omnikey64",    "Omnikey32",    "SCM 64",      "SCM 32",      "acs 64",    "acs 32" }));
    }

    void wideProgramIsToldWithoutItsWidth()
    {
        QCOMPARE(linesOf({ { "XCA", 64, program("XCA (X Certificate)", "2.4.0", "64") } }),
                 QStringList { "XCA (X Certificate) Ver: 2.4.0" });
    }

    void widthOfANarrowProgramIsTheRecordsOrThirtyTwo_data()
    {
        QTest::addColumn<QString>("bits");
        QTest::addColumn<QString>("line");
        QTest::newRow("none") << ""
                              << "Szafir (32-bit) Ver: 1";
        QTest::newRow("its own") << "16"
                                 << "Szafir (16-bit) Ver: 1";
        QTest::newRow("no number") << "%1"
                                   << "Szafir (%1-bit) Ver: 1";
    }
    void widthOfANarrowProgramIsTheRecordsOrThirtyTwo()
    {
        QFETCH(QString, bits);
        QTEST(linesOf({ { "Szafir", 32, program("Szafir", "1", bits) } }).join("|"), "line");
    }

    void programInBothListsHasTwoLines()
    {
        QCOMPARE(linesOf({ { "Szafir", 64, program("Szafir", "2") }, { "Szafir", 32, program("Szafir", "2") } }),
                 QStringList({ "Szafir (32-bit) Ver: 2", "Szafir Ver: 2" }));
    }

    void programHitByTwoWordsHasOneLine()
    {
        const Program both = program("HID Omnikey", "3");
        QCOMPARE(linesOf({ { "HID ", 64, both }, { "Omnikey", 64, both } }), QStringList { "HID Omnikey Ver: 3" });
    }

    void programWithoutVersionIsLeftOut()
    {
        QCOMPARE(linesOf({ { "KIR", 64, program("KIR", "") }, { "KIR", 32, program("KIR", "") } }), QStringList());
    }

    void linesAreSortedWithCapitalsFirst()
    {
        QCOMPARE(linesOf({ { "acs ", 64, program("acs reader", "1") },
                           { "Reiner", 64, program("Reiner", "1") },
                           { "brevant", 64, program("Brevant", "1") } }),
                 QStringList({ "Brevant Ver: 1", "Reiner Ver: 1", "acs reader Ver: 1" }));
    }

    void markOfATemplateInANameStaysAsItIs()
    {
        QCOMPARE(linesOf({ { "XCA", 32, program("XCA %1 %2", "%3") } }), QStringList { "XCA %1 %2 (32-bit) Ver: %3" });
    }
};

VELMOR_TEST(TstCardSoftware)
#include "tst_card_software.moc"
