#include "fuzz/fuzz_target.h"
#include "support/byte_bus.h"
#include "support/plain_parser.h"

// A message as it may stand in a segment: read, logged and received, by a program that has agreed on a key and by one
// that waits for a reply; then answered, forwarded, and used as a key.
namespace {

// A little more than a segment has.
constexpr int longest = 600;
const char *const secretKeys[] = { "checkCan", "setCanToVerify", "setCanVerified" };

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

// What goes out again: to the sender, encrypted if it came so, and the peer with the same key reads what was meant.
QString answeredWrong(const IpcMsg &sent)
{
    ByteBusProgram program("velmor_manager");
    program.keepKey("k", "key");
    program.receive(sent);
    if (program.heard.isEmpty())
        return {};
    const IpcMsg message = program.heard.takeFirst();
    IpcMsg answer { { "windowFocus", true } };
    if (!program.sendResponse(message, answer))
        return "no answer to what was heard";
    IpcMsg toStranger = message;
    toStranger.setEncryptionId("nobody's");
    if (program.sendResponse(toStranger, answer) || program.sent.size() != 1)
        return "an answer under a key that there is not";
    if (IpcMsg(program.sent.first()).to() != message.from() && !message.from().contains('<'))
        return "an answer to another address";
    if (IpcMsg(program.sent.first()).shmKey().contains('/'))
        return "a request's mark in the key of a segment";
    ByteBusProgram peer("velmor_monitor");
    peer.keepKey("k", "key");
    peer.receive(IpcMsg(program.sent.takeFirst()));
    // An address of hostile text may be read as something else; a plain one may not.
    const bool plainAddress = message.from() == "velmor_monitor";
    if (plainAddress && (peer.heard.size() != 1 || peer.heard.first().param("windowFocus") != "1"))
        return "the peer reads another answer";
    return {};
}

// A reply counts once, and only to the request that is open.
QString repliedWrong(IpcMsg message)
{
    ByteBusProgram program("velmor_manager");
    program.receive(message);
    program.sendReceiveFin(message); // asked by nobody
    const auto ask = [&program] {
        return program.sendReceive({ { "checkForUpdate", 1 } }, &program, SLOT(msgToCan(IpcMsg)));
    };
    if (!ask() || ask())
        return "no request, or two at a time";
    message.setTo(IpcMsg(program.sent.takeLast()).from() + (message.to().endsWith('x') ? "x" : ""));
    program.receive(message);
    const bool ended = ask();
    if (ended == message.to().endsWith('x'))
        return "a reply to another request was taken, or its own was not";
    program.sendReceiveTimeout();
    program.receive(message); // too late for the one, unasked by the other
    program.deaf = true;
    if (ask() || ask())
        return "a request that was not sent is open";
    program.deaf = false;
    if (!ask())
        return "a request has no end";
    return {};
}

QString forwardedWrong(const IpcMsg &message)
{
    ByteBusProgram program("velmor_manager");
    IpcProxy proxy(&program, "velmor_manager");
    proxy._received(message);
    if (!message.to().startsWith("velmor_manager") && !program.heard.isEmpty())
        return "a message to somebody else is handed on";
    const QByteArray segments[] = { "velmor_can", "velmor_ctk", "velmor_manager", "velmor_monitor" };
    void (IpcBase::*const ways[])(IpcMsg) = { &IpcBase::msgToCan, &IpcBase::msgToCtk, &IpcBase::msgToManager,
                                              &IpcBase::msgToMonitor };
    IpcMsg plain = message;
    plain.setEncryptionId({});
    for (std::size_t i = 0; i < std::size(ways); ++i) {
        program.sent.clear();
        const auto way = ways[i];
        (program.*way)(plain);
        for (const QByteArray &sent : qAsConst(program.sent)) {
            if (IpcMsg(sent).to() != segments[i] && !sent.contains("<<") && IpcMsg(sent).keys() == message.keys())
                return "a message to another program";
        }
    }
    return {};
}

QString cryptoWrong(const QByteArray &text)
{
    constexpr int mostKeys = 64;
    Crypto crypto;
    for (int i = 0; i < mostKeys; ++i)
        crypto.storeKey(QByteArray::number(i), "old");
    crypto.storeKey(text, "new");
    if (crypto.getKey(text) != "new" || crypto.getKey(QByteArray::number(mostKeys - 2)).isEmpty())
        return "another key than the last one stored";
    const QByteArray encrypted = crypto.encrypt(text, text);
    if (crypto.encrypt(encrypted, text) != text || encrypted.size() != text.size())
        return "a text that is not its own inverse";
    crypto.storeKey(text, "key");
    const QByteArray transformed = crypto.encrypt(text, text);
    for (int i = 0; i < text.size(); ++i) {
        if (transformed[i] != static_cast<char>(text[i] ^ "key"[i % 3]))
            return "a byte transformed by another place of the key";
    }
    if (!crypto.encrypt(text, "nobody's").isEmpty() && text != "nobody's")
        return "encrypted under no key";
    QByteArray own;
    const QByteArray key = crypto.generateKey(text, own);
    if (key.isEmpty() != text.isEmpty() || own.isEmpty() != text.isEmpty() || own.size() > 128)
        return "an agreement of another size";
    if (!crypto.generateKey({}, own).isEmpty() || !own.isEmpty() || !crypto.encrypt({}, text).isEmpty())
        return "something made of nothing";
    if (Crypto::deriveKey(text).size() != 6 || Crypto::deriveKey(text) != Crypto::deriveKey(text))
        return "a derived key of another size, or two of one seed";
    // Once: it would take most of the time, and has nothing of the text.
    static const int seedBytes = QByteArray::fromHex(Crypto::generateSeed()).size();
    if (seedBytes != 32)
        return "a seed of another size";
    return {};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Fuzz::silence();
    const auto length = static_cast<int>(qMin(size, std::size_t(longest)));
    const QByteArray text = QByteArray::fromRawData(reinterpret_cast<const char *>(data), length);
    const IpcMsg message(text);
    for (const QString &complaint :
         { readWrong(text, message), loggedWrong(message), receivedWrong(message), answeredWrong(message),
           repliedWrong(message), forwardedWrong(message), cryptoWrong(text) })
        Fuzz::require(complaint.isEmpty(), complaint);
    return 0;
}
