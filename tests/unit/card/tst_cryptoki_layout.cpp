#include "support/testmain.h"

#include "card/cryptoki.h"

#include <cstddef>

// The structures of Cryptoki as the card's library was compiled with them. Windows: packed to one byte, CK_ULONG of
// four; elsewhere as the compiler lays them out, CK_ULONG of eight. The figures follow from the published structures.
class TstCryptokiLayout : public QObject {
    Q_OBJECT

private slots:
    void sizesAndOffsets_data();
    void sizesAndOffsets();
};

void TstCryptokiLayout::sizesAndOffsets_data()
{
    QTest::addColumn<int>("found");
    QTest::addColumn<int>("onWindows");
    QTest::addColumn<int>("elsewhere");
    const struct {
        const char *name;
        std::size_t found;
        int onWindows;
        int elsewhere;
    } rows[] = {
        { "CK_ULONG", sizeof(CK_ULONG), 4, 8 },
        { "CK_BYTE", sizeof(CK_BYTE), 1, 1 },
        { "CK_VERSION", sizeof(CK_VERSION), 2, 2 },
        { "CK_INFO", sizeof(CK_INFO), 2 + 32 + 4 + 32 + 2, 88 },
        { "CK_INFO.flags", offsetof(CK_INFO, flags), 34, 40 },
        { "CK_SLOT_INFO", sizeof(CK_SLOT_INFO), 64 + 32 + 4 + 2 + 2, 112 },
        { "CK_SLOT_INFO.flags", offsetof(CK_SLOT_INFO, flags), 96, 96 },
        { "CK_SLOT_INFO.hardwareVersion", offsetof(CK_SLOT_INFO, hardwareVersion), 100, 104 },
        { "CK_TOKEN_INFO", sizeof(CK_TOKEN_INFO), 32 + 32 + 16 + 16 + 11 * 4 + 2 + 2 + 16, 208 },
        { "CK_TOKEN_INFO.flags", offsetof(CK_TOKEN_INFO, flags), 96, 96 },
        { "CK_TOKEN_INFO.ulMaxPinLen", offsetof(CK_TOKEN_INFO, ulMaxPinLen), 116, 136 },
        { "CK_TOKEN_INFO.utcTime", offsetof(CK_TOKEN_INFO, utcTime), 144, 188 },
        { "CK_ATTRIBUTE", sizeof(CK_ATTRIBUTE), 4 + 8 + 4, 24 },
        { "CK_ATTRIBUTE.pValue", offsetof(CK_ATTRIBUTE, pValue), 4, 8 },
        { "CK_ATTRIBUTE.ulValueLen", offsetof(CK_ATTRIBUTE, ulValueLen), 12, 16 },
        // The version comes first, so that on Windows every function pointer lies askew.
        { "CK_FUNCTION_LIST.C_Initialize", offsetof(CK_FUNCTION_LIST, C_Initialize), 2, 8 },
        { "CK_FUNCTION_LIST.C_GetFunctionList", offsetof(CK_FUNCTION_LIST, C_GetFunctionList), 2 + 3 * 8, 8 + 3 * 8 },
        { "CK_FUNCTION_LIST", sizeof(CK_FUNCTION_LIST), 2 + 68 * 8, 8 + 68 * 8 },
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << static_cast<int>(row.found) << row.onWindows << row.elsewhere;
}

void TstCryptokiLayout::sizesAndOffsets()
{
    QFETCH(int, found);
    QFETCH(int, onWindows);
    QFETCH(int, elsewhere);

#ifdef Q_OS_WIN
    Q_UNUSED(elsewhere)
    QCOMPARE(found, onWindows);
#else
    Q_UNUSED(onWindows)
    QCOMPARE(found, elsewhere);
#endif
}

VELMOR_TEST(TstCryptokiLayout)
#include "tst_cryptoki_layout.moc"
