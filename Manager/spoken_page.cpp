#include "spoken_page.h"

#include <QAccessibleWidget>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QTextDocument>
#include <QTextDocumentFragment>

namespace {

// A group, and the labels of the window that are its name, as far as they are shown.
const QHash<QString, QStringList> &groupNames()
{
    static const QHash<QString, QStringList> all {
        { "header", { "lMainTitle", "lSubTitle", "lReaderDesc", "cbReaders" } },
        { "frameReaders", { "lReaderDesc" } },
        { "footer", { "lVersion" } },
        { "widgetBlurICAO",
          { "lCommonName", "lCommonNameVal", "lSurname", "lsurnameVal", "lNumId", "lNumIdVal", "lExpDate",
            "lExpDateVal" } },
        { "widgetBlurAuthen", { "labelTitleAuthenCert", "lTextAuthenCert" } },
        { "widgetBlurAuthor", { "labelTitleAuthorCert", "lTextAuthorCert" } },
        { "presenceCert", { "labelTitlePresenceCert", "lTextPresenceCert" } },
        { "widgetBlurQualified", { "labelTitleQualifiedCert", "lTextQualifiedCert" } },
        { "pageAllData", { "lMainTitle" } },
        { "pageCertInfo", { "lMainTitle", "lSubTitle" } },
        { "pageChangePin", { "lSTryNum", "lpinpadDesc", "lSTryNumpinpad", "lInfoPinPad" } },
        { "fieldActualPin", { "lActualPin", "lActualPinInfo" } },
        { "fieldNewPin", { "lNewPin", "lNewPinInfo" } },
        { "fieldRepeatPin", { "lRepeatPin", "lRepeatPinInfo" } },
        { "pageUnblockPin",
          { "lPukInfoPinPad", "lPukInfoPinPad_2", "lPukInfoPinPad_3", "lPukInfoPinPad_4", "lPukInfoPinPad_5",
            "lCancelDesc_2", "lTryNumDescPUKpinpad", "lSTryNumPUKpinpad" } },
        { "fieldInsertPuk", { "lPuk", "lPinInfoPuk" } },
        { "fieldNewPinPuk", { "lNewPin_2", "lNewPinInfoPuk" } },
        { "fieldRepeatPinPuk", { "lRepeatPin_2", "lRepeatPinInfoPuk" } },
        { "pageCorrectChange", { "lMainTitle", "lSubTitle" } },
        { "pageSettings", {} },
        { "settingsBrowserFrame", { "label", "lDesc", "lDesc3" } },
        { "settingsCANFrame", { "label_2" } },
        { "pageIntegration", { "lMainTitle" } },
    };
    return all;
}

QString spoken(const QWidget *part)
{
    if (!part || !part->isVisible())
        return {};
    // One that can be chosen from is heard for itself.
    if (const auto *box = qobject_cast<const QComboBox *>(part))
        return box->isEnabled() ? QString() : box->currentText();
    const auto *label = qobject_cast<const QLabel *>(part);
    if (!label)
        return {};
    if (!label->accessibleName().isEmpty() && label->objectName() != "lReaderDesc")
        return label->accessibleName();
    const QString text = label->text();
    return (Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text).simplified();
}

// Asked for when it is said, so it is what is shown at that moment.
class GroupAccess : public QAccessibleWidget {
public:
    explicit GroupAccess(QWidget *group) : QAccessibleWidget(group, QAccessible::Grouping) { }

    QString text(QAccessible::Text what) const override
    {
        QString own = QAccessibleWidget::text(what);
        if (what != QAccessible::Name || !own.isEmpty())
            return own;
        QStringList parts;
        for (const QString &name : groupNames().value(widget()->objectName()))
            parts << spoken(widget()->window()->findChild<QWidget *>(name));
        parts.removeAll(QString());
        return parts.join(", ");
    }
};

QAccessibleInterface *interfaceOfPart(const QString &className, QObject *object)
{
    const bool plain = className == QLatin1String("QWidget") || className == QLatin1String("QFrame");
    if (!plain || !object->isWidgetType())
        return nullptr;
    auto *widget = static_cast<QWidget *>(object);
    if (groupNames().contains(widget->objectName()))
        return new GroupAccess(widget);
    // A row of text; by itself a frame is told as if it were a window.
    if (widget->focusPolicy() == Qt::TabFocus)
        return new QAccessibleWidget(widget, QAccessible::StaticText);
    return nullptr;
}

} // namespace

void showPagesToScreenReaders()
{
    QAccessible::installFactory(interfaceOfPart);
}
