#pragma once

#include "gui/gui_dialog.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QPointer>
#include <QSize>
#include <QString>

#include <memory>

class AnimWidget;
class App;
class GuiBase;
class GuiScaler;
class QAbstractButton;
class QPushButton;

namespace Ui {
class Popup;
}

// The program's own modal message dialog: frameless, with a title bar, an icon, a message, an informative text and
// standard buttons. It scales itself, follows the theme, and goes when its parent signals closePopups().
//
// Results are codes of QDialogButtonBox::StandardButton. Close also stands for the cross in the title bar, Ignore for a
// dialog that was closed from outside, 0 for one that ended without any button.
class Popup : public GuiDialog {
    Q_OBJECT

public:
    // The key's text becomes the property `cssClass` of the message, by which a theme colours it.
    enum Icon { NoIcon = 0, Information = 1, Warning = 2, Critical = 3, Question = 4 };
    Q_ENUM(Icon)

    explicit Popup(QWidget *parent = nullptr, const QString &title = {});
    ~Popup() override;

    // Show a message, wait for its end and answer the result. An empty title gives the product word. What follows
    // "<informative>" in the text stands below it in smaller type. An empty size leaves it to the content. With a size,
    // which is that of the content in pixels at 96 dots per inch, the text is wrapped, and the dialog becomes higher
    // rather than cut it.
    static int information(QWidget *parent, const QString &title, const QString &text,
                           QDialogButtonBox::StandardButtons buttons = QDialogButtonBox::Close);
    static int warning(QWidget *parent, const QString &title, const QString &text,
                       QDialogButtonBox::StandardButtons buttons = QDialogButtonBox::Close);
    static int runModal(Icon icon, QWidget *parent, const QString &title, const QString &text, QSize size,
                        QDialogButtonBox::StandardButtons buttons);

    // For a dialog that its caller keeps. "{PRODUCT_NAME}" in a title stands for the product word.
    void setTitle(const QString &text);
    void setIconMessage(int icon, const QString &text, QDialogButtonBox::StandardButtons buttons);
    void setMessage(const QString &cssClass, const QString &text, QDialogButtonBox::StandardButtons buttons);
    void setButtons(QDialogButtonBox::StandardButtons buttons, int defaultButton);
    void setTextWrap();
    // Stands in place of icon, texts and buttons until the next message. The dialog takes it over.
    void setCustomWidget(QWidget *widget);

    // Size that the present texts, icon and buttons ask for, for `show` and `execAt`.
    QSize contentSize();
    // Shows the dialog modally with a content of this size, and answers the result.
    int execAt(int width, int height);

signals:
    void closeClicked();
    void installClicked();
    void cancelClicked();
    void logicalDotsPerInchChanged(qreal dpi);

public slots:
    void show(int width, int height);
    void closePopup();
    void buttonClicked(QAbstractButton *button);
    void buttonClicked(QDialogButtonBox::StandardButton code);
    void guiScale(qreal dpi);
    void buttonCloseClicked();

private:
    void loadTheme();
    void applyProductSettings();
    void connectAll();
    void finish(int code);
    QList<QPushButton *> pushButtons() const;
    int widthBesideText() const;
    QSize roomFor(QSize content);
    void setVisibleParts();
    void setButtonShadows();
    void placeFrame(int width, int height);
    void followFrame();
    void scaleFrame();
    void scaleMessage(int spacing);
    void growFrame();
    int leastWidth() const;
    int heightFor(int width) const;
    void wrapAtScreen(int room);
    void cleanCopy(QClipboard::Mode mode);
    int screenRoom() const;

    std::unique_ptr<Ui::Popup> ui;
    int result = 0;
    bool hasInformative = false;
    bool hasButtons = true;
    bool hasIcon = false;
    App *app;
    GuiBase *guiBase;
    QString theme;
    QPointer<QWidget> customWidget;
    std::unique_ptr<GuiScaler> scaler;
    std::unique_ptr<AnimWidget> anim;
};
