#include "spoken/shown.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QWidget>

#include <algorithm>

namespace {

// Each text is asked for at every step.
QString plain(const QString &text)
{
    if (!Qt::mightBeRichText(text))
        return text;
    static QHash<QString, QString> known;
    auto found = known.find(text);
    if (found == known.end())
        found = known.insert(text, QTextDocumentFragment::fromHtml(text).toPlainText());
    return *found;
}

QStringList textsOf(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return { plain(label->text()) };
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return { button->text() };
    if (const auto *box = qobject_cast<const QComboBox *>(widget))
        return { box->currentText() };
    if (const auto *list = qobject_cast<const QAbstractItemView *>(widget)) {
        QStringList items;
        for (int i = 0; list->model() && i < list->model()->rowCount(); ++i)
            items << list->model()->index(i, 0).data().toString();
        return items;
    }
    if (const auto *report = qobject_cast<const QTextBrowser *>(widget))
        return report->toPlainText().split('\n');
    return {};
}

// A box that is off still tells what it holds; what stands beside buttons that are all off is in no group that can be
// entered.
bool isOff(const QWidget *widget)
{
    if (!widget->isEnabled())
        return !qobject_cast<const QComboBox *>(widget);
    const auto buttons = widget->parentWidget()->findChildren<QAbstractButton *>(QString(), Qt::FindDirectChildrenOnly);
    return widget->parentWidget()->objectName() == "footer"
        && std::none_of(buttons.begin(), buttons.end(),
                        [](const QWidget *b) { return b->isVisible() && b->isEnabled(); });
}

QStringList texts(const QWidget *window, bool ofAll)
{
    QStringList all;
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        // An open list is a window of its own.
        const bool here = widget->window() == window || (ofAll && qobject_cast<const QAbstractItemView *>(widget));
        if (!widget->isVisible() || !here || (isOff(widget) && !ofAll))
            continue;
        for (const QString &text : textsOf(widget)) {
            if (!text.trimmed().isEmpty())
                all << text;
        }
        // A label too narrow for its text shows the whole of it at the pointer.
        if (ofAll && !widget->toolTip().isEmpty())
            all << plain(widget->toolTip());
    }
    return all;
}

} // namespace

QStringList shownTexts(const QWidget *window)
{
    return texts(window, true);
}

QStringList textsToHear(const QWidget *window)
{
    return texts(window, false);
}
