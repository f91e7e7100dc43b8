#pragma once

#include <QElapsedTimer>
#include <QSslCertificate>
#include <QWidget>

#include <memory>

class Window;

namespace Ui {
class TheCertItem;
}

// The card of one certificate: issuer, first and last day, and a button that shows it in the system's own window. A
// card without a window to ask, or of a null certificate, is empty.
class CertWidget : public QWidget {
    Q_OBJECT

public:
    CertWidget(Window *window, const QSslCertificate &cert, QWidget *parent, bool focusFirst);
    ~CertWidget() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    // The focus came into the card by the keyboard.
    void reached();

private slots:
    void openCertDetails();

private:
    void showTexts();
    void watchFocus();

    std::unique_ptr<Ui::TheCertItem> ui;
    QSslCertificate certificate;
    Window *window;
    QElapsedTimer lastClick;
};
