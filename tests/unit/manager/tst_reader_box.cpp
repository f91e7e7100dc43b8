#include "look_window.h"
#include "reader_box.h"

#include "look/widget_walk.h"

#include <QAbstractItemView>

namespace {

const QStringList names {
    "OMNIA Smart 3121",
    "Czytnik zbliżeniowy Żółć Interface (kontaktowy i bezstykowy) 00 00",
    "Broadgate Corp Contacted SmartCard Reader with Secure Keypad 01 02",
};

} // namespace

// The box of the readers with a choice: enabled, opened, in all themes.
class TestReaderBox : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { LookWindow::loadFonts(); }
    void rowsAreHighAndNamesWhole_data() { themeRows(); }
    void rowsAreHighAndNamesWhole();
    void aNameThatTheWindowCannotHoldStaysInside();
    void listIsAsWideAsItsLongestName();
    void theWarningIsWholeOrJustItsSign();
    void boxHasItsWidthBeforeTheWindowIsLaidOut();
    void rowHasRoomForAllBesideTheBox();
    void theWarningIsWholeAsLongAsItJustFits();
    void openedListHasTheNameOfTheBox();
};

void TestReaderBox::rowsAreHighAndNamesWhole()
{
    QFETCH(QString, theme);
    LookWindow look;
    QVERIFY(QTest::qWaitForWindowActive(&look.window));
    look.useTheme(theme);
    look.showPage("pageHome");
    QComboBox *box = look.ui.cbReaders;
    prepareReaderBox(box);
    box->clear();
    box->addItems(names);
    QVERIFY(box->isEnabled());

    for (int chosen = 0; chosen < names.size(); ++chosen) {
        box->setCurrentIndex(chosen);
        fitReaderBox(box, look.ui.bReaderWarning);
        QCoreApplication::processEvents();
        QCOMPARE(box->width(), box->fontMetrics().horizontalAdvance(names[chosen]) + 30);
        const QStringList found = WidgetWalk::faults(look.ui.frameReaders);
        QVERIFY2(found.isEmpty(), qPrintable(found.join('\n')));
    }

    box->showPopup();
    QTRY_VERIFY(box->view()->isVisible());
    const QAbstractItemView *list = box->view();
    const QImage image = list->viewport()->grab().toImage();
    for (int row = 0; row < names.size(); ++row) {
        const QRect place = list->visualRect(box->model()->index(row, 0));
        QVERIFY2(place.height() >= 30, qPrintable(QString::number(place.height())));
        const int advance = list->fontMetrics().horizontalAdvance(names[row]);
        QVERIFY2(place.width() >= advance + 8, qPrintable(QString("%1 of %2").arg(place.width()).arg(advance)));
        QVERIFY(list->viewport()->rect().contains(place));
        // The row that is chosen has colours of its own.
        const QColor ground = background(image, place);
        double strongest = 1;
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x)
                strongest = std::max(strongest, contrast(image.pixelColor(x, y), ground));
        }
        QVERIFY2(strongest >= wanted(theme), qPrintable(QString("row %1: %2").arg(row).arg(strongest)));
    }
    // In the window, as far as it reaches to the right.
    const QPoint corner = look.ui.mainFrame->mapFromGlobal(list->window()->mapToGlobal(QPoint()));
    QVERIFY(corner.x() + list->window()->width() <= 900);
    box->hidePopup();
}

void TestReaderBox::aNameThatTheWindowCannotHoldStaysInside()
{
    LookWindow look;
    look.useTheme("light");
    look.showPage("pageHome");
    look.ui.cbReaders->clear();
    look.ui.cbReaders->addItem(QString("Czytnik bez końca ").repeated(12));

    fitReaderBox(look.ui.cbReaders, look.ui.bReaderWarning);
    QCoreApplication::processEvents();

    const QRect place(look.ui.cbReaders->mapTo(look.ui.mainFrame, QPoint()), look.ui.cbReaders->size());
    QVERIFY(place.right() < 900 - 24);
    // With the sign behind it.
    const QWidget *sign = look.ui.bWarningIcon;
    QVERIFY(sign->isVisible());
    QVERIFY(sign->mapTo(look.ui.mainFrame, QPoint(sign->width(), 0)).x() <= 900 - 24);
    QVERIFY(look.ui.cbReaders->view()->minimumWidth() < 900);
}

void TestReaderBox::listIsAsWideAsItsLongestName()
{
    LookWindow look;
    look.useTheme("light");
    look.showPage("pageHome");
    QComboBox *box = look.ui.cbReaders;
    for (const QStringList &order : { QStringList { names[2], "Alfa" }, QStringList { "Alfa", names[2] } }) {
        box->clear();
        box->addItems(order);

        fitReaderBox(box, look.ui.bReaderWarning);

        // With the scroll bar of many readers.
        QCOMPARE(box->view()->minimumWidth(), QFontMetrics(box->font()).horizontalAdvance(names[2]) + 40);
    }
}

void TestReaderBox::theWarningIsWholeOrJustItsSign()
{
    LookWindow look;
    look.useTheme("light");
    look.showPage("pageHome");
    const auto show = [&](const QString &name) {
        look.ui.cbReaders->clear();
        look.ui.cbReaders->addItem(name);
        fitReaderBox(look.ui.cbReaders, look.ui.bReaderWarning);
        QCoreApplication::processEvents();
    };

    show(names[2]);
    QVERIFY(look.ui.bReaderWarning->isHidden() && look.ui.bWarningIcon->isVisible());

    show(names[0]);
    QVERIFY(look.ui.bReaderWarning->isVisible());
}

// A list of readers can come before the window is shown.
void TestReaderBox::boxHasItsWidthBeforeTheWindowIsLaidOut()
{
    QMainWindow window;
    Ui::Window ui;
    ui.setupUi(&window);
    ui.frameReaders->resize(100, 30);
    ui.cbReaders->clear();
    ui.cbReaders->addItem(names[1]);

    fitReaderBox(ui.cbReaders, ui.bReaderWarning);

    // In the font of the theme, which nobody has asked for yet.
    ui.cbReaders->ensurePolished();
    QCOMPARE(ui.cbReaders->minimumWidth(), ui.cbReaders->fontMetrics().horizontalAdvance(names[1]) + 30);
    // Also where the name needs less.
    ui.cbReaders->setItemText(0, "Alfa");
    fitReaderBox(ui.cbReaders, ui.bReaderWarning);
    QCOMPARE(ui.cbReaders->view()->minimumWidth(), 280);
}

// Of the 900 pixels of a window 110 are before the box and 24 behind the row, and 34 are the sign's.
void TestReaderBox::rowHasRoomForAllBesideTheBox()
{
    QMainWindow window;
    Ui::Window ui;
    ui.setupUi(&window);
    ui.frameReaders->resize(100, 30);
    ui.cbReaders->clear();
    ui.cbReaders->addItem(QString("Czytnik bez końca ").repeated(12));

    fitReaderBox(ui.cbReaders, ui.bReaderWarning);

    QCOMPARE(ui.cbReaders->width(), 900 - 110 - 24 - 34);
    QCOMPARE(ui.cbReaders->view()->minimumWidth(), 900 - 110 - 24);
}

void TestReaderBox::theWarningIsWholeAsLongAsItJustFits()
{
    QMainWindow window;
    Ui::Window ui;
    ui.setupUi(&window);
    ui.cbReaders->clear();
    ui.cbReaders->addItem(names[2]);
    fitReaderBox(ui.cbReaders, ui.bReaderWarning);
    const int needed = 110 + ui.cbReaders->width() + 34 + ui.bReaderWarning->sizeHint().width() + 24;
    QVERIFY2(needed > 900, qPrintable(QString::number(needed)));

    ui.frameReaders->resize(needed - 1, 30);
    fitReaderBox(ui.cbReaders, ui.bReaderWarning);
    QVERIFY(ui.bReaderWarning->isHidden());

    ui.frameReaders->resize(needed, 30);
    fitReaderBox(ui.cbReaders, ui.bReaderWarning);
    QVERIFY(!ui.bReaderWarning->isHidden());
}

// The list is a window of its own, in which a screen reader finds no caption.
void TestReaderBox::openedListHasTheNameOfTheBox()
{
    QComboBox box;
    box.setAccessibleName("czytniki");
    prepareReaderBox(&box);
    QCOMPARE(box.view()->accessibleName(), QString("czytniki"));
}

VELMOR_TEST(TestReaderBox)
#include "tst_reader_box.moc"
