#pragma once

#include <QDialog>
#include <QPoint>
#include <QPointer>
#include <QSize>

// Base of the frameless dialogs: centred on a parent window, and moved by the upper edge of its frame, which lies
// inside a transparent margin for the shadow.
class GuiDialog : public QDialog {
    Q_OBJECT

public:
    // The dialog has no parent in Qt's sense, so that it is a window of its own; whoever makes it owns it.
    explicit GuiDialog(QWidget *parent = nullptr);

    // Gives the dialog this size, in the middle of the parent or, without one, of the primary screen.
    void resizeAndCenter(int width, int height);

    void setDragWidget(QWidget *widget);

    // Whether a press at this place of a dialog, with a frame of this size in its middle, lies on what serves as the
    // title bar: the upper 80 pixels of the frame, and 900 across for every dialog, narrower ones too.
    static bool isTitleBar(QPoint press, QSize dialog, QSize frame);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

    // A left press on the title bar is being held. Its own place counts, not where the pointer has got to.
    bool isDragging() const;

    // Not owned. Hides QObject::parent(), which is always null here.
    QPointer<QWidget> parent;

private:
    QPointer<QWidget> dragWidget;
    QPoint pressPos;
    bool pressed = false;
};
