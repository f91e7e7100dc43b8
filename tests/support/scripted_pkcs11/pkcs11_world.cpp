#include "support/scripted_pkcs11/pkcs11_world.h"

void Pkcs11World::startUp()
{
    card = std::make_unique<ScriptedCard>();
    log = std::make_unique<LogCatcher>();
    pkcs11 = std::make_unique<Pkcs11>();
}

void Pkcs11World::tearDown(const QStringList &secrets)
{
    pkcs11.reset();
    const QString text = log->text();
    log.reset();
    for (const QString &secret : secrets)
        QVERIFY2(!text.contains(secret), qPrintable(text));
    QVERIFY(!card->anyPinNull);
    QVERIFY2(!card->functions().contains("other"), "a function beside those agreed on was called");
    QVERIFY2(card->calls().filter("and more").isEmpty(), "more than one attribute was asked in one call");
    card.reset();
}

void Pkcs11World::listAndSelect(const QString &name)
{
    pkcs11->detectSlots();
    pkcs11->selectReader(name);
    card->clearCalls();
    log->clear();
}

void Pkcs11World::insert(CK_FLAGS tokenFlags)
{
    card->addReader(reader);
    for (ScriptedSlot &inserted : card->card)
        inserted.tokenFlags = tokenFlags;
    listAndSelect(reader);
}

void Pkcs11World::openSession(const QString &conteiner)
{
    pkcs11->certsCount(reader, conteiner);
    QCOMPARE(card->count("C_OpenSession"), 1);
    card->clearCalls();
    log->clear();
}

ScriptedSlot Pkcs11World::slot(CK_SLOT_ID id, const QByteArray &description, CK_FLAGS flags, const QByteArray &label)
{
    ScriptedSlot made;
    made.id = id;
    made.description = description;
    made.flags = flags;
    made.label = label;
    return made;
}

std::vector<ScriptedObject> &Pkcs11World::objects(const char *conteiner)
{
    for (ScriptedSlot &inserted : card->card) {
        if (inserted.label.contains(conteiner))
            return inserted.objects;
    }
    qFatal("no container %s", conteiner);
}

QStringList Pkcs11World::labels(const QList<pkcsDataObj> &found)
{
    QStringList names;
    for (const pkcsDataObj &object : found)
        names << object.name;
    return names;
}
