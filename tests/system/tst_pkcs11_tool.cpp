#include <QProcess>
#include <QSslCertificate>
#include <QStandardPaths>

#include "simworld/sim_world.h"
#include "support/testmain.h"

// A program that others wrote for any card library drives the simulated one. What it is content with, and what it
// finds, tells that the stand-in follows the standard and not just our own reading of it.
class TstPkcs11Tool : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void infoAndSlots();
    void tokensTellTheirState();
    void objectsOfEveryToken();
    void certificateIsReadAsItIs();
    void dataGroupIsReadAsItIs();
    void loginShowsPrivateObjects();
    void wrongPinIsRefusedAndCounted();
    void pinIsChanged();
    void lockedPinIsUnblocked();
    void wrongPukIsRefusedAndCounted();
    void unsetPinIsSet();
    void pinIsAskedAtTheKeypad();
    void emptyReader();

private:
    int run(const QStringList &words)
    {
#ifdef Q_OS_WIN
        const QString library = QStringLiteral(VELMOR_TEST_ROOT "/64/velmor-pkcs11-64.dll");
#else
        const QString library = QStringLiteral(VELMOR_TEST_ROOT "/velmor-pkcs11-64.so");
#endif
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LC_ALL", "C.UTF-8");
        process.setProcessEnvironment(environment);
        process.start(tool, QStringList({ "--module", library }) + words);
        if (!process.waitForFinished(30000))
            return -1;
        output = process.readAllStandardOutput();
        errors = process.readAllStandardError();
        return process.exitCode();
    }

    // The lines about the token of this label in a list of slots.
    QString tokenLines(const char *label)
    {
        const QString text = QString::fromUtf8(output);
        return text.mid(text.indexOf(QString("token label        : %1\n").arg(label))).section("\nSlot", 0, 0);
    }

    QString tool;
    QByteArray output;
    QByteArray errors;
    sim::SimWorld world;
};

void TstPkcs11Tool::initTestCase()
{
    tool = QStandardPaths::findExecutable("pkcs11-tool");
    if (tool.isEmpty())
        QSKIP("pkcs11-tool (package opensc) is not installed");
}

void TstPkcs11Tool::init()
{
    QVERIFY(world.reset());
    QVERIFY2(world.insertCard("Czytnik Żółty", "anna"), world.error().c_str());
}

void TstPkcs11Tool::infoAndSlots()
{
    QCOMPARE(run({ "--show-info", "--list-slots" }), 0);

    QVERIFY2(output.contains("Cryptoki version 2.40"), output);
    for (int number = 1; number <= 5; ++number)
        QVERIFY2(output.contains("Czytnik Żółty #" + QByteArray::number(number)), output);
    QVERIFY2(!errors.contains("error"), errors);
}

void TstPkcs11Tool::tokensTellTheirState()
{
    world.setTries("anna", sim::Authentication, 2);
    world.setTries("anna", sim::Authorization, 1);
    world.setTries("anna", sim::Qualified, 0);
    world.setPukTries("anna", 1);

    QCOMPARE(run({ "--list-slots" }), 0);

    QVERIFY2(tokenLines("Authentication").contains("user PIN count low"), output);
    QVERIFY2(tokenLines("Authorization").contains("final user PIN try"), output);
    QVERIFY2(tokenLines("Qualified").contains("user PIN locked"), output);
    QVERIFY2(tokenLines("Qualified").contains("final SO PIN try"), output);
    QVERIFY2(tokenLines("Presence").contains("token flags        : token initialized\n"), output);
    QVERIFY2(tokenLines("Authorization").contains("pin min/max        : 6/6"), output);
}

void TstPkcs11Tool::objectsOfEveryToken()
{
    const struct {
        const char *token;
        QList<QByteArray> parts;
    } rows[] = {
        { "Authentication", { "Certificate Object; type = X.509 cert", "Private Key Object; EC", "SN=Wi" } },
        { "Presence", { "Certyfikat potwierdzenia obecności" } },
        { "Authorization", { "Certyfikat podpisu osobistego" } },
        { "Qualified", { "Certyfikat kwalifikowany" } },
        { "eMRTD", { "'DG1'", "'DG2'", "'DG11'", "'DG12'", "'DG13'" } },
    };
    for (const auto &row : rows) {
        QCOMPARE(run({ "--token-label", row.token, "--list-objects" }), 0);
        for (const QByteArray &part : row.parts)
            QVERIFY2(output.contains(part), part + " in " + output);
    }
}

void TstPkcs11Tool::certificateIsReadAsItIs()
{
    const QString file = TestHome::path() + "/certificate.der";

    QCOMPARE(
        run({ "--token-label", "Presence", "--read-object", "--type", "cert", "--id", "01", "--output-file", file }),
        0);

    QFile der(file);
    QVERIFY(der.open(QIODevice::ReadOnly));
    const QSslCertificate certificate(&der, QSsl::Der);
    QCOMPARE(certificate.subjectInfo("CN"), QStringList("Anna Maria Wiśniewska"));
}

void TstPkcs11Tool::dataGroupIsReadAsItIs()
{
    const QString file = TestHome::path() + "/dg2.bin";

    QCOMPARE(
        run({ "--token-label", "eMRTD", "--read-object", "--type", "data", "--label", "DG2", "--output-file", file }),
        0);

    QFile read(file);
    QFile made(QString(VELMOR_TEST_ROOT) + "/devkit/cards/anna/DG2.bin");
    QVERIFY(read.open(QIODevice::ReadOnly) && made.open(QIODevice::ReadOnly));
    QCOMPARE(read.readAll(), made.readAll());
}

void TstPkcs11Tool::loginShowsPrivateObjects()
{
    QCOMPARE(run({ "--token-label", "Qualified", "--list-objects" }), 0);
    QVERIFY2(!output.contains("Private Key Object"), output);

    QCOMPARE(run({ "--token-label", "Qualified", "--login", "--pin", "12345678", "--list-objects" }), 0);

    QVERIFY2(output.contains("Private Key Object"), output);
}

void TstPkcs11Tool::wrongPinIsRefusedAndCounted()
{
    QCOMPARE(run({ "--token-label", "Authentication", "--login", "--pin", "9999", "--list-objects" }), 1);

    QVERIFY2(errors.contains("CKR_PIN_INCORRECT"), errors);
    QCOMPARE(world.cardState("anna")->pins[sim::Authentication].tries, 2);
}

void TstPkcs11Tool::pinIsChanged()
{
    QCOMPARE(
        run({ "--token-label", "Authorization", "--login", "--pin", "123456", "--change-pin", "--new-pin", "654321" }),
        0);
    QVERIFY2(output.contains("PIN successfully changed"), output);

    QCOMPARE(run({ "--token-label", "Authorization", "--login", "--pin", "654321", "--list-objects" }), 0);
    QCOMPARE(run({ "--token-label", "Authorization", "--login", "--pin", "123456", "--list-objects" }), 1);
}

void TstPkcs11Tool::lockedPinIsUnblocked()
{
    world.setTries("anna", sim::Authentication, 0);
    QCOMPARE(run({ "--token-label", "Authentication", "--login", "--pin", "1234", "--list-objects" }), 1);
    QVERIFY2(errors.contains("CKR_PIN_LOCKED"), errors);

    QCOMPARE(run({ "--token-label", "Authentication", "--login", "--login-type", "so", "--so-pin", "87654321",
                   "--init-pin", "--new-pin", "2222" }),
             0);

    QVERIFY2(output.contains("successfully initialized"), output);
    QCOMPARE(run({ "--token-label", "Authentication", "--login", "--pin", "2222", "--list-objects" }), 0);
}

void TstPkcs11Tool::wrongPukIsRefusedAndCounted()
{
    QCOMPARE(run({ "--token-label", "Authentication", "--login", "--login-type", "so", "--so-pin", "00000000",
                   "--init-pin", "--new-pin", "2222" }),
             1);

    QVERIFY2(errors.contains("CKR_PIN_INCORRECT"), errors);
    QCOMPARE(world.cardState("anna")->pukTries, 2);
    QCOMPARE(world.cardState("anna")->pins[sim::Authentication].pin, std::string("1234"));
}

void TstPkcs11Tool::unsetPinIsSet()
{
    world.unsetPin("anna", sim::Qualified, sim::SimWorld::Unset::NotInitialized);
    QCOMPARE(run({ "--token-label", "Qualified", "--login", "--pin", "12345678", "--list-objects" }), 1);

    QCOMPARE(run({ "--token-label", "Qualified", "--login", "--login-type", "so", "--so-pin", "87654321", "--init-pin",
                   "--new-pin", "44445555" }),
             0);

    QCOMPARE(run({ "--token-label", "Qualified", "--login", "--pin", "44445555", "--list-objects" }), 0);
}

void TstPkcs11Tool::pinIsAskedAtTheKeypad()
{
    world.setPinpad("Czytnik Żółty", true);
    world.padChange("1234", "8642");

    QCOMPARE(run({ "--token-label", "Authentication", "--login", "--change-pin" }), 0);

    QCOMPARE(world.cardState("anna")->pins[sim::Authentication].pin, std::string("8642"));
}

void TstPkcs11Tool::emptyReader()
{
    world.removeCard("Czytnik Żółty");

    QCOMPARE(run({ "--list-slots" }), 0);

    QVERIFY2(output.contains("Czytnik Żółty\n  (empty)"), output);
}

VELMOR_TEST(TstPkcs11Tool)
#include "tst_pkcs11_tool.moc"
