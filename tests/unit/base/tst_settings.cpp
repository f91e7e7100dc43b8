#include "support/testmain.h"

#include "base/crypto.h"
#include "base/settings.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSettings>

#include <algorithm>
#include <cstdio>
#include <memory>

// The named values shared with the sibling programs: the user's store before the machine's, and the GUID.
class TstSettings : public QObject {
    Q_OBJECT

private slots:
    void init();

    void keysAreThoseOfTheSiblings_data();
    void keysAreThoseOfTheSiblings();
    void firstStartMakesAGuidAndForgetsTheRememberedCan();
    void laterStartKeepsGuidAndRememberedCan();
    void machineGuidIsTakenAndTheRememberedCanStays();
    void emptyGuidIsStillAGuid();
    void seedIs64HexadecimalDigits();
    void seedsDiffer();
    void guidIsNotLoggedOutsideDevelopment();

    void missingKeyIsInvalid();
    void machineValueIsReturnedWhenTheUserHasNone();
    void userValueShadowsTheMachineValue();
    void falseAndEmptyUserValuesShadowTheMachineToo();
    void writingGoesToTheUserOnly();
    void valuesOfOtherProgramsAreNotSeen();
    void syncReadsWhatAnotherProcessWrote();
    void oneObjectForTheProcess();
    void worksWithoutAnApplicationObject();
};

namespace {

constexpr char childSet[] = "--set";
constexpr char childGuid[] = "--guid";

QSettings *openStore(QSettings::Scope scope, const QString &application = "config")
{
    return new QSettings(QSettings::NativeFormat, scope, "velmor", application);
}

QVariant stored(QSettings::Scope scope, const QString &key)
{
    const std::unique_ptr<QSettings> store(openStore(scope));
    store->setFallbacksEnabled(false);
    return store->value(key);
}

void store(QSettings::Scope scope, const QString &key, const QVariant &value, const QString &application = "config")
{
    const std::unique_ptr<QSettings> store(openStore(scope, application));
    store->setValue(key, value);
    store->sync();
    QCOMPARE(store->status(), QSettings::NoError);
}

bool isSeed(const QString &text)
{
    return QRegularExpression("^[0-9a-f]{64}$").match(text).hasMatch();
}

} // namespace

void TstSettings::init()
{
    for (const QSettings::Scope scope : { QSettings::UserScope, QSettings::SystemScope }) {
        for (const QString &application : { QString("config"), QString() }) {
            const std::unique_ptr<QSettings> store(openStore(scope, application));
            store->clear();
            store->sync();
        }
    }
}

void TstSettings::keysAreThoseOfTheSiblings_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");
    QTest::newRow("guid") << SettingsKey::guid << "GUID";
    QTest::newRow("remembered CAN") << SettingsKey::rememberedCan << "e-code:";
    QTest::newRow("language") << SettingsKey::language << "language";
    QTest::newRow("theme") << SettingsKey::theme << "theme";
    QTest::newRow("update available") << SettingsKey::updateAvailable << "updateAvailable";
    QTest::newRow("update in progress") << SettingsKey::updateInProgress << "updateInProgress";
    QTest::newRow("remember box") << SettingsKey::hideCheckboxCanRemember << "hideCheckboxCANRemember";
    QTest::newRow("CSP box") << SettingsKey::useCspForRsa << "useCSPforRSA";
}

void TstSettings::keysAreThoseOfTheSiblings()
{
    QFETCH(QString, key);
    QTEST(key, "expected");

    // A program that knows the store by its plain name finds the value there, and the other way round.
    Settings settings;
    settings.setValue(key, "written here");
    settings.sync();
    QCOMPARE(stored(QSettings::UserScope, key).toString(), QString("written here"));

    store(QSettings::UserScope, key, "written there");
    settings.sync();
    QCOMPARE(settings.value(key).toString(), QString("written there"));
}

void TstSettings::firstStartMakesAGuidAndForgetsTheRememberedCan()
{
    store(QSettings::UserScope, "e-code:", QByteArray("encrypted"));

    const Settings settings;

    const QString guid = settings.value("GUID").toString();
    QVERIFY2(isSeed(guid), qPrintable(guid));
    QCOMPARE(stored(QSettings::UserScope, "GUID").toString(), guid);
    QVERIFY(!settings.value("e-code:").isValid());
    QVERIFY(!stored(QSettings::UserScope, "e-code:").isValid());
}

void TstSettings::laterStartKeepsGuidAndRememberedCan()
{
    const QString first = Settings().value("GUID").toString();
    store(QSettings::UserScope, "e-code:", QByteArray("encrypted"));

    const Settings settings;

    QCOMPARE(settings.value("GUID").toString(), first);
    QCOMPARE(settings.value("e-code:").toByteArray(), QByteArray("encrypted"));
}

void TstSettings::machineGuidIsTakenAndTheRememberedCanStays()
{
    store(QSettings::SystemScope, "GUID", "of the machine");
    store(QSettings::UserScope, "e-code:", QByteArray("encrypted"));

    const Settings settings;

    QCOMPARE(settings.value("GUID").toString(), QString("of the machine"));
    QVERIFY(!stored(QSettings::UserScope, "GUID").isValid());
    QCOMPARE(settings.value("e-code:").toByteArray(), QByteArray("encrypted"));
}

void TstSettings::emptyGuidIsStillAGuid()
{
    // Only an invalid value makes a new one.
    store(QSettings::UserScope, "GUID", "");
    store(QSettings::UserScope, "e-code:", QByteArray("encrypted"));

    const Settings settings;

    QCOMPARE(settings.value("GUID").toString(), QString());
    QCOMPARE(settings.value("e-code:").toByteArray(), QByteArray("encrypted"));
}

void TstSettings::seedIs64HexadecimalDigits()
{
    for (int round = 0; round < 200; ++round) {
        const QByteArray seed = Crypto::generateSeed();
        QVERIFY2(isSeed(seed), seed.constData());
    }
}

void TstSettings::seedsDiffer()
{
    QSet<QByteArray> seeds;
    QMap<QByteArray, int> pairs;
    for (int round = 0; round < 200; ++round) {
        const QByteArray seed = Crypto::generateSeed();
        seeds.insert(seed);
        for (int pair = 0; pair < seed.size(); pair += 2)
            ++pairs[seed.mid(pair, 2)];
    }

    QCOMPARE(seeds.size(), 200);
    // 6400 draws of one in 256: each value comes up, those that need a leading zero too, and none much too often.
    QCOMPARE(pairs.size(), 256);
    QVERIFY(*std::max_element(pairs.cbegin(), pairs.cend()) < 80);
}

void TstSettings::guidIsNotLoggedOutsideDevelopment()
{
    const LogCatcher log;

    const Settings settings;

    QCOMPARE(log.lines(), QStringList());
}

void TstSettings::missingKeyIsInvalid()
{
    const Settings settings;

    const QVariant value = settings.value("theme");

    QVERIFY(!value.isValid());
    QCOMPARE(value.toBool(), false);
    QCOMPARE(value.toInt(), 0);
    QCOMPARE(value.toString(), QString());
}

void TstSettings::machineValueIsReturnedWhenTheUserHasNone()
{
    store(QSettings::SystemScope, "theme", "highContrast");
    const Settings settings;

    QCOMPARE(settings.value("theme").toString(), QString("highContrast"));
    // The machine's store is opened at each read.
    store(QSettings::SystemScope, "theme", "plain");
    QCOMPARE(settings.value("theme").toString(), QString("plain"));
}

void TstSettings::userValueShadowsTheMachineValue()
{
    store(QSettings::SystemScope, "theme", "of the machine");
    Settings settings;

    settings.setValue("theme", "of the user");

    QCOMPARE(settings.value("theme").toString(), QString("of the user"));
}

void TstSettings::falseAndEmptyUserValuesShadowTheMachineToo()
{
    store(QSettings::SystemScope, "useCSPforRSA", true);
    store(QSettings::SystemScope, "theme", "of the machine");
    Settings settings;

    settings.setValue("useCSPforRSA", false);
    settings.setValue("theme", "");

    QCOMPARE(settings.value("useCSPforRSA").toBool(), false);
    QCOMPARE(settings.value("theme").toString(), QString());
}

void TstSettings::writingGoesToTheUserOnly()
{
    Settings settings;

    settings.setValue("hideCheckboxCANRemember", true);
    settings.sync();

    QCOMPARE(stored(QSettings::UserScope, "hideCheckboxCANRemember").toBool(), true);
    QVERIFY(!stored(QSettings::SystemScope, "hideCheckboxCANRemember").isValid());
    QVERIFY(!stored(QSettings::SystemScope, "GUID").isValid());
}

void TstSettings::valuesOfOtherProgramsAreNotSeen()
{
    // What stands under the organization alone belongs to no program, and the store of this one does not fall back.
    store(QSettings::UserScope, "theme", "fallen back", QString());
    store(QSettings::SystemScope, "theme", "fallen back", QString());

    QVERIFY(!Settings().value("theme").isValid());
}

void TstSettings::syncReadsWhatAnotherProcessWrote()
{
    Settings settings;
    settings.sync();
    QVERIFY(!settings.value("updateAvailable").isValid());
    QProcess other;

    other.start(QCoreApplication::applicationFilePath(), { childSet, "updateAvailable", "true" });
    QVERIFY(other.waitForFinished());
    QCOMPARE(other.exitCode(), 0);
    settings.sync();

    QCOMPARE(settings.value("updateAvailable").toString(), QString("true"));
}

void TstSettings::oneObjectForTheProcess()
{
    Settings *const settings = Settings::instance();

    QVERIFY(settings);
    QCOMPARE(Settings::instance(), settings);
}

void TstSettings::worksWithoutAnApplicationObject()
{
    QProcess other;

    other.start(QCoreApplication::applicationFilePath(), { childGuid });
    QVERIFY(other.waitForFinished());

    const QString guid = QString::fromLatin1(other.readAllStandardOutput());
    QVERIFY2(isSeed(guid), qPrintable(guid));
    QCOMPARE(Settings().value("GUID").toString(), guid);
}

// With an argument of its own the program is another one of the family, with the same home.
int main(int argc, char *argv[])
{
    if (argc == 4 && qstrcmp(argv[1], childSet) == 0) {
        Settings().setValue(argv[2], QString(argv[3]));
        return 0;
    }
    if (argc == 2 && qstrcmp(argv[1], childGuid) == 0) {
        std::fputs(qPrintable(Settings::instance()->value("GUID").toString()), stdout);
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TstSettings test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_settings.moc"
