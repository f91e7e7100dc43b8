#pragma once

#include <functional>
#include <string>
#include <vector>

#include <p11-kit/pkcs11.h>

#include <QByteArray>
#include <QDir>
#include <QLibrary>
#include <QProcess>
#include <QtTest>

#include "simworld/sim_world.h"

// What the tests of the stand-ins share: the library loaded as a program would load it, and a world to change around
// it.
class SimFixture {
public:
    SimFixture() : library(libraryPath())
    {
        const auto list = reinterpret_cast<CK_C_GetFunctionList>(library.resolve("C_GetFunctionList"));
        if (!list || list(&p11) != CKR_OK)
            qFatal("no function list: %s", qPrintable(library.errorString()));
    }

    static QString libraryPath()
    {
#ifdef Q_OS_WIN
        return QStringLiteral(VELMOR_TEST_ROOT "/64/velmor-pkcs11-64.dll");
#else
        return QStringLiteral(VELMOR_TEST_ROOT "/velmor-pkcs11-64.so");
#endif
    }

    static QString velmorSim()
    {
#ifdef Q_OS_WIN
        return QStringLiteral(VELMOR_TEST_ROOT "/devkit/velmor-sim.exe");
#else
        return QStringLiteral(VELMOR_TEST_ROOT "/devkit/velmor-sim");
#endif
    }

    // A fresh world with this card in the reader "R", and the library initialised on it.
    void start(const char *card, bool pinpad = false)
    {
        p11->C_Finalize(nullptr);
        QVERIFY2(world.reset(), world.error().c_str());
        QVERIFY(world.addReader("R", pinpad));
        QVERIFY2(world.insertCard("R", card), world.error().c_str());
        QCOMPARE(p11->C_Initialize(nullptr), CK_RV(CKR_OK));
        world.clearTrace();
    }

    // A fault of this function, as the caller fills it in.
    void fault(const std::string &function, const std::function<void(sim::Fault &)> &fillIn)
    {
        sim::Fault fault;
        fault.function = function;
        fillIn(fault);
        QVERIFY2(world.addFault(fault), world.error().c_str());
    }

    std::vector<CK_SLOT_ID> slotIds(bool withCardOnly = false)
    {
        CK_ULONG count = 0;
        p11->C_GetSlotList(withCardOnly, nullptr, &count);
        std::vector<CK_SLOT_ID> ids(count);
        p11->C_GetSlotList(withCardOnly, ids.data(), &count);
        return ids;
    }

    CK_SLOT_INFO slotInfo(CK_SLOT_ID slot)
    {
        CK_SLOT_INFO info = {};
        p11->C_GetSlotInfo(slot, &info);
        return info;
    }

    CK_TOKEN_INFO tokenInfo(CK_SLOT_ID slot)
    {
        CK_TOKEN_INFO info = {};
        p11->C_GetTokenInfo(slot, &info);
        return info;
    }

    template <std::size_t size>
    static QByteArray text(const CK_UTF8CHAR (&field)[size])
    {
        return QByteArray(reinterpret_cast<const char *>(field), int(size));
    }

    // The first slot whose token has this label.
    CK_SLOT_ID slotOf(const char *label)
    {
        for (const CK_SLOT_ID slot : slotIds()) {
            CK_TOKEN_INFO info = {};
            if (p11->C_GetTokenInfo(slot, &info) == CKR_OK && text(info.label).trimmed() == label)
                return slot;
        }
        return 0;
    }

    CK_FLAGS flagsOf(const char *label)
    {
        return tokenInfo(slotOf(label)).flags;
    }

    CK_SESSION_HANDLE open(const char *label, CK_FLAGS flags = CKF_SERIAL_SESSION | CKF_RW_SESSION)
    {
        CK_SESSION_HANDLE session = 0;
        openResult = p11->C_OpenSession(slotOf(label), flags, nullptr, nullptr, &session);
        return session;
    }

    static CK_UTF8CHAR_PTR bytes(const QByteArray &of)
    {
        return reinterpret_cast<CK_UTF8CHAR_PTR>(const_cast<char *>(of.constData()));
    }

    CK_RV login(CK_SESSION_HANDLE session, CK_USER_TYPE user, const QByteArray &pin)
    {
        return p11->C_Login(session, user, bytes(pin), CK_ULONG(pin.size()));
    }

    CK_RV setPin(CK_SESSION_HANDLE session, const QByteArray &oldPin, const QByteArray &newPin)
    {
        return p11->C_SetPIN(session, bytes(oldPin), CK_ULONG(oldPin.size()), bytes(newPin), CK_ULONG(newPin.size()));
    }

    CK_RV initPin(CK_SESSION_HANDLE session, const QByteArray &pin)
    {
        return p11->C_InitPIN(session, bytes(pin), CK_ULONG(pin.size()));
    }

    // Logs in and out again on a session of its own.
    CK_RV tryPin(const char *label, CK_USER_TYPE user, const QByteArray &pin)
    {
        const CK_SESSION_HANDLE session = open(label);
        const CK_RV result = login(session, user, pin);
        p11->C_CloseSession(session);
        return result;
    }

    std::vector<CK_OBJECT_HANDLE> find(CK_SESSION_HANDLE session)
    {
        std::vector<CK_OBJECT_HANDLE> found;
        CK_OBJECT_HANDLE object = 0;
        CK_ULONG count = 0;
        p11->C_FindObjectsInit(session, nullptr, 0);
        while (p11->C_FindObjects(session, &object, 1, &count) == CKR_OK && count > 0)
            found.push_back(object);
        p11->C_FindObjectsFinal(session);
        return found;
    }

    QByteArray attribute(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type)
    {
        CK_ATTRIBUTE wanted = { type, nullptr, 0 };
        attributeResult = p11->C_GetAttributeValue(session, object, &wanted, 1);
        if (attributeResult != CKR_OK)
            return {};
        QByteArray value(int(wanted.ulValueLen), '\0');
        wanted.pValue = value.data();
        attributeResult = p11->C_GetAttributeValue(session, object, &wanted, 1);
        return value;
    }

    CK_ULONG objectClass(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object)
    {
        CK_ULONG value = 0;
        CK_ATTRIBUTE wanted = { CKA_CLASS, &value, sizeof value };
        p11->C_GetAttributeValue(session, object, &wanted, 1);
        return value;
    }

    // Labels of what a search of the token finds.
    QStringList labels(const char *token)
    {
        QStringList out;
        const CK_SESSION_HANDLE session = open(token);
        for (const CK_OBJECT_HANDLE object : find(session))
            out << QString::fromUtf8(attribute(session, object, CKA_LABEL));
        p11->C_CloseSession(session);
        return out;
    }

    QStringList traceTexts() const
    {
        QStringList out;
        for (const std::string &line : world.traceTexts())
            out << QString::fromStdString(line);
        return out;
    }

    QLibrary library;
    CK_FUNCTION_LIST_PTR p11 = nullptr;
    sim::SimWorld world;
    CK_RV openResult = CKR_OK;
    CK_RV attributeResult = CKR_OK;
};

// Compares two result codes as hexadecimal numbers, which is how one knows them.
#define COMPARE_RV(actual, expected)                                                                                   \
    QCOMPARE(QString("0x%1").arg(qulonglong(actual), 0, 16), QString("0x%1").arg(qulonglong(expected), 0, 16))
