#pragma once

#include "card/pkcs11.h"

#include "app/app.h"
#include "simworld/sim_world.h"
#include "support/testmain.h"

#include <memory>

// Pkcs11 on the simulated card library, with a card that remembers what was done to it. No PIN of it may come to light.
class SimulatedCard {
public:
    static inline const QString reader = "Czytnik Żółty";
    static inline const std::string readerName = reader.toStdString();
    static inline const std::string cardName = "próbna";
    static inline const QString qualified = "Qualified";
    static inline const QString pin = "12345678";
    static inline const QString otherPin = "90817263";
    static inline const QString puk = "24681357";

    static void setUpApplication() { App::instance()->init("Manager", VELMOR_TEST_ROOT, "x86_64", "Manager"); }

    static sim::Card specimen()
    {
        sim::Card card;
        card.name = cardName;
        card.chip = "VELMOR_2_1";
        card.state.puk = puk.toStdString();
        card.state.pins[sim::Authentication].pin = "1234";
        card.state.pins[sim::Authorization].pin = "123456";
        card.state.pins[sim::Qualified].pin = pin.toStdString();
        const auto object = [](unsigned long type, const char *label, const char *value) {
            sim::Object made;
            made.objectClass = type;
            made.label = label;
            made.value = value;
            return made;
        };
        card.objects[sim::Authentication] = { object(1, "cert", "A1"), object(1, "cert", "A2") };
        card.objects[sim::Presence] = { object(1, "cert", "P") };
        card.objects[sim::Qualified] = { object(3, "key", "k"), object(1, "cert", "Q") };
        card.objects[sim::Emrtd] = { object(0, "DG1", "one"), object(0, "DG2", "photo"),
                                     object(0, "DG13", "thirteen") };
        return card;
    }

    void begin()
    {
        QVERIFY2(world.reset(), world.error().c_str());
        QVERIFY2(world.defineCard(specimen()), world.error().c_str());
        QVERIFY2(world.restoreCard(cardName), world.error().c_str());
        QVERIFY2(world.insertCard(readerName, cardName), world.error().c_str());
        log = std::make_unique<LogCatcher>();
        pkcs11 = std::make_unique<Pkcs11>();
    }

    void end()
    {
        pkcs11.reset();
        QString told = log->text();
        for (const std::string &line : world.traceTexts())
            told += QString::fromStdString(line) + '\n';
        for (const QString &secret : { pin, otherPin, puk })
            QVERIFY2(!told.contains(secret), qPrintable(told));
        log.reset();
    }

    // What the program does with a card before anything else: list, select, count.
    void insert()
    {
        QStringList found;
        pkcs11->finalize();
        QVERIFY(pkcs11->readers(found, 1, 256));
        QCOMPARE(found, QStringList { reader });
        QVERIFY(pkcs11->selectReader(reader));
        for (const char *conteiner : { "Presence", "Authentication", "Authorization", "Qualified" })
            pkcs11->certsCount(reader, conteiner);
        world.clearTrace();
        log->clear();
    }

    int tries(const QString &conteiner) { return pkcs11->tokenInfo(reader, conteiner).value("tries", -1).toInt(); }
    int pukTries() { return pkcs11->tokenInfo(reader, qualified).value("triesSO", -1).toInt(); }
    QString status(const QString &conteiner) { return pkcs11->tokenInfo(reader, conteiner).value("status").toString(); }

    sim::SimWorld world;
    std::unique_ptr<Pkcs11> pkcs11;
    std::unique_ptr<LogCatcher> log;
};
