#include "ipc/ipc_base.h"

#include "base/common.h"
#include "base/segment.h"

#include <QDebug>
#include <QMetaObject>
#include <QRandomGenerator>

#include <chrono>

namespace {

constexpr std::chrono::seconds requestPatience { 5 };
constexpr int requestIdDigits = 16;
constexpr char requestMark[] = "/req";

void dropWithWrongId()
{
    qDebug().noquote() << "receive message with wrong id";
}

QByteArray newRequestId()
{
    return QByteArray::number(QRandomGenerator::system()->generate64(), 16).rightJustified(requestIdDigits, '0');
}

} // namespace

QByteArray segmentKey(const QByteArray &program)
{
    return Segment::key(Common::productName().toLatin1(), program);
}

IpcBase::IpcBase(QObject *parent) : QObject(parent)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &IpcBase::sendReceiveTimeout);
}

bool IpcBase::prepareMsg(IpcMsg &message) const
{
    const QByteArray id = message.encryptionId();
    if (id.isEmpty())
        return true;
    const QByteArray from = message.from();
    const QByteArray to = message.to();
    message.removeParam("from");
    message.removeParam("to");
    const QByteArray encrypted = crypto.encrypt(message.serialize(), id);
    if (encrypted.isEmpty()) {
        qDebug().noquote() << "encrypt mesege is empty";
        return false;
    }
    message.clearParams();
    message.setFrom(from);
    message.setTo(to);
    message.setParam("msg", encrypted);
    message.setParam("encID", id);
    return true;
}

void IpcBase::receive(IpcMsg message)
{
    if (message.to().startsWith(name() + requestMark)) {
        receiveReply(message);
        return;
    }
    const QByteArray id = message.param("encID");
    if (id.isEmpty())
        emit received(message);
    else if (!message.param("A").isEmpty())
        answerKeyExchange(message);
    else
        receiveEncrypted(std::move(message), id);
}

void IpcBase::receiveReply(const IpcMsg &message)
{
    if (message.to() == name() + requestMark + requestId)
        sendReceiveFin(message);
    else
        dropWithWrongId();
}

void IpcBase::answerKeyExchange(const IpcMsg &message)
{
    IpcMsg answer;
    answer.setTo(message.from());
    const QByteArray id = message.param("encID");
    QByteArray ownValue;
    const QByteArray key = crypto.generateKey(message.param("A"), ownValue);
    if (!key.isEmpty() && !ownValue.isEmpty()) {
        crypto.storeKey(id, key);
        answer.setParam("B", ownValue);
        answer.setParam("encID", id);
    } else {
        answer.setRes(false);
    }
    send(answer);
}

void IpcBase::receiveEncrypted(IpcMsg message, const QByteArray &id)
{
    const QByteArray encrypted = message.param("msg");
    const QByteArray plain = encrypted.isEmpty() ? QByteArray() : crypto.encrypt(encrypted, id);
    if (plain.isEmpty()) {
        dropWithWrongId();
        return;
    }
    const QByteArray from = message.from();
    const QByteArray to = message.to();
    message.clearParams();
    // Kept, so that an answer goes out under the same key.
    message.setEncryptionId(id);
    message.setFrom(from);
    message.setTo(to);
    const IpcMsg inner(plain);
    for (const QByteArray &key : inner.keys())
        message.setParam(key, inner.param(key));
    emit received(message);
}

bool IpcBase::sendResponse(const IpcMsg &request, IpcMsg answer)
{
    answer.setEncryptionId(request.encryptionId());
    answer.setTo(request.from());
    return send(answer);
}

bool IpcBase::sendReceive(IpcMsg message, QObject *receiver, const char *slot)
{
    if (waiting)
        return false;
    waiting = true;
    requestId = newRequestId();
    replyReceiver = receiver;
    replySlot = slot;
    message.setFrom(name() + requestMark + requestId);
    timer.start(requestPatience);
    if (send(message))
        return true;
    waiting = false;
    timer.stop();
    return false;
}

void IpcBase::sendReceiveFin(const IpcMsg &message)
{
    if (!waiting) {
        qDebug().noquote() << "unexpected reply";
        return;
    }
    waiting = false;
    timer.stop();
    const int end = replySlot.indexOf('(');
    if (end < 0 || replySlot.at(0) < '0' || replySlot.at(0) > '2') {
        qWarning("IpcBase::sendReceive: Invalid slot specification");
        return;
    }
    const QByteArray method = replySlot.mid(1, end - 1);
    if (replyReceiver)
        QMetaObject::invokeMethod(replyReceiver, method.constData(), Qt::QueuedConnection, Q_ARG(IpcMsg, message));
}

void IpcBase::sendReceiveTimeout()
{
    if (waiting)
        sendReceiveFin(IpcMsg { { "TIMEOUT", "1" } });
}

void IpcBase::sendTo(const char *program, IpcMsg message)
{
    message.setTo(segmentKey(program));
    send(message);
}

void IpcBase::msgToCan(IpcMsg message)
{
    sendTo("Can", std::move(message));
}

void IpcBase::msgToCtk(IpcMsg message)
{
    sendTo("Ctk", std::move(message));
}

void IpcBase::msgToManager(IpcMsg message)
{
    sendTo("Manager", std::move(message));
}

void IpcBase::msgToMonitor(IpcMsg message)
{
    sendTo("Monitor", std::move(message));
}

IpcProxy::IpcProxy(IpcBase *base, const QByteArray &name, QObject *parent) :
    QObject(parent), target(base), ownName(name)
{
}

void IpcProxy::_received(const IpcMsg &message)
{
    if (message.to().startsWith(ownName))
        target->receive(message);
}
