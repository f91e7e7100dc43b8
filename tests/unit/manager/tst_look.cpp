#include "look_window.h"

// The themes on the real forms: their type, and that nothing is cut off.
class TestLook : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void typeIsPoppinsIn11To21Pixels_data();
    void typeIsPoppinsIn11To21Pixels();
    void noTextIsCut_data();
    void noTextIsCut();

private:
    std::unique_ptr<LookWindow> look;
};

void TestLook::initTestCase()
{
    LookWindow::loadFonts();
}

void TestLook::init()
{
    look = std::make_unique<LookWindow>();
    QVERIFY(QTest::qWaitForWindowActive(&look->window));
}

void TestLook::typeIsPoppinsIn11To21Pixels_data()
{
    themeRows();
}

void TestLook::typeIsPoppinsIn11To21Pixels()
{
    QFETCH(QString, theme);
    look->useTheme(theme);

    const QSet<int> weights { QFont::Normal, QFont::Medium, QFont::DemiBold };
    for (const QString &page : look->pages()) {
        look->showPage(page);
        for (const QWidget *widget : look->window.findChildren<QWidget *>()) {
            if (!widget->isVisible() || visibleText(widget).isEmpty())
                continue;
            const QFontInfo font(widget->font());
            QVERIFY2(font.family() == "Poppins", qPrintable(widget->objectName() + font.family()));
            QVERIFY2(font.pixelSize() >= 11 && font.pixelSize() <= 21, qPrintable(widget->objectName()));
            // A weight that no file has would be drawn thicker by program.
            QVERIFY2(weights.contains(widget->font().weight()), qPrintable(widget->objectName()));
        }
    }
}

void TestLook::noTextIsCut_data()
{
    themeRows();
}

void TestLook::noTextIsCut()
{
    QFETCH(QString, theme);
    look->useTheme(theme);

    int measured = 0;
    for (const QString &page : look->pages()) {
        look->showPage(page);
        for (QWidget *widget : look->window.findChildren<QWidget *>()) {
            const bool button = widget->inherits("QPushButton") || widget->inherits("QCheckBox");
            const auto *label = qobject_cast<QLabel *>(widget);
            if (!widget->isVisible() || !(button || label) || widget->property("text").toString().isEmpty())
                continue;
            ++measured;
            const int width = label && label->wordWrap() ? widget->width() : widget->sizeHint().width();
            const int height =
                label && label->wordWrap() ? label->heightForWidth(label->width()) : widget->sizeHint().height();
            const bool fits = width <= widget->width() && (!label || height <= widget->height());
            QVERIFY2(fits,
                     qPrintable(QString("%1 on %2 wants %3x%4, has %5x%6")
                                    .arg(widget->objectName(), page)
                                    .arg(width)
                                    .arg(height)
                                    .arg(widget->width())
                                    .arg(widget->height())));
            const QRect rect(widget->mapTo(look->ui.mainFrame, QPoint()), widget->size());
            QVERIFY2(look->ui.mainFrame->rect().contains(rect), qPrintable(widget->objectName() + " on " + page));
        }
    }
    QVERIFY(measured > 200);
}

VELMOR_TEST(TestLook)
#include "tst_look.moc"
