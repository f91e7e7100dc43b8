#pragma once

#include "gui/popup.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QTextDocumentFragment>
#include <QTimer>

#include <functional>

// Somebody who reads every dialog that comes up while this lives, and closes it.
class PopupCloser : public QObject {
public:
    PopupCloser()
    {
        connect(&timer, &QTimer::timeout, this, &PopupCloser::look);
        timer.start(1);
    }

    // What the dialogs showed, without markup.
    QStringList messages;
    QStringList titles;
    QList<int> buttonCounts;
    QList<QDialogButtonBox::StandardButtons> buttons;
    QList<QImage> icons;
    bool hadParent = false;

    void forget()
    {
        messages.clear();
        titles.clear();
        buttonCounts.clear();
        buttons.clear();
        icons.clear();
    }

    // Runs while a dialog is up.
    std::function<void()> meanwhile;

private:
    void look()
    {
        auto *popup = qobject_cast<Popup *>(QApplication::activeModalWidget());
        if (!popup)
            return;
        messages << QTextDocumentFragment::fromHtml(popup->findChild<QLabel *>("lText")->text()).toPlainText();
        titles << popup->findChild<QLabel *>("lMainTitle")->text();
        buttonCounts << popup->findChild<QDialogButtonBox *>("buttonBox")->buttons().size();
        buttons << popup->findChild<QDialogButtonBox *>("buttonBox")->standardButtons();
        icons << popup->findChild<QLabel *>("lIcon")->grab().toImage();
        hadParent = hadParent || popup->parentWidget();
        if (meanwhile)
            meanwhile();
        popup->closePopup();
    }

    QTimer timer;
};
