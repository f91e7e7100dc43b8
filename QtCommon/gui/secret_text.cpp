#include "gui/secret_text.h"

#include "base/secret_string.h"

#include <QAccessible>
#include <QEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QValidator>

#include <algorithm>

namespace {

constexpr QChar bullet(0x2022);
// Edits of one visit to a field, each digit and each deletion one, that are overwritten. More of them take a patient
// hand, and a field that is held to some eight digits.
constexpr int historyRoom = 1024;
constexpr int textRoom = 32;

QAccessible::UpdateHandler handlerBefore = nullptr;
bool handlerInstalled = false;
bool silent = false;

void tellAsBullets(QAccessibleEvent *event);

void handOn(QAccessibleEvent *event)
{
    if (handlerBefore) {
        handlerBefore(event);
        return;
    }
    // Without a handler the event takes the toolkit's own way to the system.
    QAccessible::installUpdateHandler(nullptr);
    QAccessible::updateAccessibility(event);
    QAccessible::installUpdateHandler(tellAsBullets);
}

QString bulletsFor(const QString &text)
{
    return QString(text.size(), bullet);
}

bool hidesItsText(const QObject *object)
{
    const auto *field = qobject_cast<const QLineEdit *>(object);
    return field && field->echoMode() != QLineEdit::Normal;
}

bool tellsText(const QAccessibleEvent &event)
{
    return event.type() == QAccessible::TextInserted || event.type() == QAccessible::TextRemoved
        || event.type() == QAccessible::TextUpdated;
}

void tellAsBullets(QAccessibleEvent *event)
{
    if (!hidesItsText(event->object())) {
        handOn(event);
        return;
    }
    if (silent)
        return;
    if (!tellsText(*event)) {
        handOn(event);
        return;
    }
    QObject *field = event->object();
    if (event->type() == QAccessible::TextInserted) {
        const auto *insertion = static_cast<QAccessibleTextInsertEvent *>(event);
        QAccessibleTextInsertEvent hidden(field, insertion->changePosition(), bulletsFor(insertion->textInserted()));
        hidden.setCursorPosition(insertion->cursorPosition());
        handOn(&hidden);
    } else if (event->type() == QAccessible::TextRemoved) {
        const auto *removal = static_cast<QAccessibleTextRemoveEvent *>(event);
        QAccessibleTextRemoveEvent hidden(field, removal->changePosition(), bulletsFor(removal->textRemoved()));
        hidden.setCursorPosition(removal->cursorPosition());
        handOn(&hidden);
    } else {
        const auto *update = static_cast<QAccessibleTextUpdateEvent *>(event);
        QAccessibleTextUpdateEvent hidden(field, update->changePosition(), bulletsFor(update->textRemoved()),
                                          bulletsFor(update->textInserted()));
        hidden.setCursorPosition(update->cursorPosition());
        handOn(&hidden);
    }
}

QString emptyWithRoom()
{
    QString text;
    text.reserve(textRoom);
    return text;
}

void overwrite(QLineEdit *field)
{
    const QSignalBlocker quiet(field);
    silent = true;
    const QValidator *validator = field->validator();
    field->setValidator(nullptr);
    // Where it stands, before anything is edited: the toolkit takes copies of what an edit takes away.
    overwriteSecret(field->text());
    // Each character of this is one record of the history.
    field->setText({});
    field->insert(QString(historyRoom, '0'));
    // The room is for the next entry.
    field->setText(emptyWithRoom());
    field->setValidator(validator);
    silent = false;
}

bool canBringText(QEvent::Type type)
{
    return type == QEvent::FocusIn || type == QEvent::KeyPress || type == QEvent::InputMethod || type == QEvent::Drop;
}

class RoomBeforeTyping : public QObject {
public:
    explicit RoomBeforeTyping(QLineEdit *lineEdit) : QObject(lineEdit), field(lineEdit) { }

    bool eventFilter(QObject *, QEvent *event) override
    {
        // What stands in it already was not typed.
        if (!canBringText(event->type()) || !field->text().isEmpty())
            return false;
        overwrite(field);
        field->removeEventFilter(this);
        deleteLater();
        return false;
    }

private:
    QLineEdit *field;
};

} // namespace

void tellSecretsAsBullets()
{
    if (handlerInstalled)
        return;
    handlerInstalled = true;
    handlerBefore = QAccessible::installUpdateHandler(tellAsBullets);
}

void prepareSecret(QLineEdit *field)
{
    field->installEventFilter(new RoomBeforeTyping(field));
}

void forgetSecret(QLineEdit *field)
{
    const int length = field->text().size();
    if (length == 0 && !field->isModified())
        return;
    overwrite(field);
    if (length == 0)
        return;
    QAccessibleTextRemoveEvent removal(field, 0, QString(length, bullet));
    QAccessible::updateAccessibility(&removal);
    emit field->textChanged({});
}
