#include "fuzz/fuzz_target.h"
#include "support/byte_bus.h"
#include "support/plain_parser.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

// A message as it may stand in a segment: read, logged and received, by a program that has agreed on a key and by one
// that waits for a reply.
namespace {

// A little more than a segment has.
constexpr int longest = 600;
const char *const secretKeys[] = { "checkCan", "setCanToVerify", "setCanVerified" };

void discard(QtMsgType, const QMessageLogContext &, const QString &) { }

// A message of its own as a test for the encryption, whose key stream is the id's.
QByteArray encrypted(const QByteArray &inner)
{
    return "<encID>k</encID><from>velmor_monitor</from><msg>" + Crypto::encryptValue(inner, "key")
        + "</msg><to>velmor_manager</to>";
}

QString readWrong(const QByteArray &text, const IpcMsg &message)
{
    const QMap<QByteArray, QByteArray> expected = entriesReadPlainly(text);
    if (message.keys() != expected.keys())
        return "other keys than read plainly";
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        if (message.param(it.key()) != it.value())
            return "another value than read plainly";
    }
    return {};
}

// The log must not change with a CAN, and be no longer than shortening allows.
QString loggedWrong(IpcMsg message)
{
    const QString shown = message.toString();
    for (const char *key : secretKeys) {
        if (message.keys().contains(key))
            message.setParam(key, "271828182845");
    }
    if (message.toString() != shown)
        return "the log text depends on a CAN";
    for (const char *key : secretKeys) {
        for (const QByteArray &other : message.keys()) {
            if (message.param(other).contains(QByteArray("<") + key + '>') && !message.toString().contains(":#"))
                return "a CAN inside of a value is logged";
        }
    }
    return {};
}

QString receivedWrong(const IpcMsg &message)
{
    ByteBusProgram program("velmor_manager");
    program.keepKey("k", "key");
    program.receive(message);
    if (program.heard.size() + program.sent.size() > 1)
        return "more than one outcome of a message";
    for (const QByteArray &answer : program.sent) {
        const IpcMsg sent(answer);
        if (message.param("A").isEmpty() || message.param("encID").isEmpty())
            return "an answer to what was no key exchange";
        // Raw bytes of a value may end it early.
        if (sent.keys().contains("B") && sent.param("B").size() > 128)
            return "a public value above the group's size";
    }
    if (!program.heard.isEmpty() && program.heard.first().encryptionId().isEmpty() && !message.param("encID").isEmpty())
        return "an encrypted message came out as a plain one";
    return {};
}

} // namespace

std::vector<QByteArray> fuzzSeeds()
{
    const QByteArray addresses = "<from>velmor_monitor</from><to>velmor_manager</to>";
    return { "<canAppStatus>canClosed</canAppStatus><readers>0:Czytnik Alfa||1:Czytnik Żółw||</readers>" + addresses,
             "<diagnoseReaders>Liczba czytników: 2\n- Czytnik</diagnoseReaders>" + addresses,
             "<close>1</close><windowFocus>1</windowFocus><reply>0</reply>" + addresses,
             "<checkCan>274951</checkCan><setCanToVerify>274951</setCanToVerify><setCanVerified>1</setCanVerified>",
             "<x><checkCan>274951</checkCan></x>" + addresses,
             "<A>0123456789abcdef</A><encID>k</encID>" + addresses,
             "<B>0123456789abcdef</B><encID>k</encID><from>velmor_can</from><to>velmor_manager/req0123</to>",
             encrypted("<close>1</close><reply>0</reply>"),
             encrypted("<from>inner</from><setCanToVerify>274951</setCanToVerify><to>elsewhere</to>"),
             "<a><b><a></b></a><//a></a><</</>>",
             QByteArray("<a>").repeated(100) + "</a>" };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QtMessageHandler before = qInstallMessageHandler(discard);
    Q_UNUSED(before)

    const auto length = static_cast<int>(qMin(size, std::size_t(longest)));
    const QByteArray text = QByteArray::fromRawData(reinterpret_cast<const char *>(data), length);
    const IpcMsg message(text);
    for (const QString &complaint : { readWrong(text, message), loggedWrong(message), receivedWrong(message) }) {
        if (!complaint.isEmpty()) {
            std::fprintf(stderr, "%s\n", qPrintable(complaint));
            std::abort();
        }
    }
    return 0;
}
