#include "look_window.h"
#include "ui_window.h"

// The themes on the real forms: what a reader can read, that nothing is cut off.
class TestLook : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void textContrast_data();
    void textContrast();
    void stateContrast_data();
    void stateContrast();
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

void TestLook::textContrast_data()
{
    themeRows();
}

void TestLook::textContrast()
{
    QFETCH(QString, theme);
    look->useTheme(theme);

    int measured = 0;
    for (const QString &page : look->pages()) {
        look->showPage(page);
        const QImage image = look->window.grab().toImage();
        for (const QWidget *widget : look->window.findChildren<QWidget *>()) {
            if (!widget->isVisible() || visibleText(widget).trimmed().isEmpty())
                continue;
            const QRect rect(widget->mapTo(&look->window, QPoint()), widget->size());
            const QColor text = foreground(widget);
            const QColor ground = background(image, rect.adjusted(3, 3, -3, -3));
            ++measured;
            QVERIFY2(contrast(text, ground) >= wanted(theme),
                     qPrintable(QString("%1 on %2: %3 on %4, %5")
                                    .arg(widget->objectName(), page, text.name(), ground.name())
                                    .arg(contrast(text, ground))));
        }
    }
    QVERIFY(measured > 200);
}

void TestLook::stateContrast_data()
{
    themeRows();
}

// States that need a pointer are measured in the table of colours.
void TestLook::stateContrast()
{
    QFETCH(QString, theme);
    QFile file(VELMOR_TEST_SOURCE_DIR "/Shared/themes/" + theme + ".cmake");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QHash<QString, QColor> colours;
    auto rows = QRegularExpression("set\\((\\w+) \"(#\\w+)\"\\)").globalMatch(file.readAll());
    while (rows.hasNext()) {
        const auto row = rows.next();
        colours[row.captured(1)] = QColor(row.captured(2));
    }

    static const char *pairs[][2] = {
        { "headerText", "headerHover" },
        { "primaryHoverText", "primaryHover" },
        { "neutralHoverText", "neutralHover" },
        { "text", "comboHover" },
        { "text", "tile" },
        { "selectionText", "selection" },
        { "text", "card" },
        { "error", "surface" },
        { "error", "card" },
        { "offText", "off" },
        { "disabledText", "card" },
        { "disabledText", "comboOff" },
    };
    for (const auto &pair : pairs) {
        QVERIFY2(colours.contains(pair[0]) && colours.contains(pair[1]), pair[0]);
        const double found = contrast(colours[pair[0]], colours[pair[1]]);
        QVERIFY2(found >= wanted(theme), qPrintable(QString("%1 on %2: %3").arg(pair[0], pair[1]).arg(found)));
    }
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
