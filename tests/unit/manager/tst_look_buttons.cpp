#include "look_window.h"
#include "ui_popup.h"
#include "ui_thecertitem.h"

#include <QDialog>
#include <QPainter>

namespace {

constexpr int visibleDifference = 24; // of the sum over three channels

double changedShare(const QImage &a, const QImage &b)
{
    int changed = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            changed += difference(a.pixel(x, y), b.pixel(x, y)) >= visibleDifference;
    }
    return double(changed) / (a.width() * a.height());
}

// Columns that hold something else than the ground.
struct Ink {
    int first = -1;
    int last = -1;
};

// The groups of ink of a button's inside, with a gap of more than four columns between two of them.
QVector<Ink> inkOf(const QImage &image)
{
    QVector<Ink> groups;
    const int edge = 6;
    const QRgb ground = image.pixel(edge, image.height() - edge);
    for (int x = edge; x < image.width() - edge; ++x) {
        bool inked = false;
        for (int y = edge; y < image.height() - edge; ++y)
            inked = inked || difference(image.pixel(x, y), ground) > 90;
        if (!inked)
            continue;
        if (groups.isEmpty() || x - groups.last().last > 5)
            groups << Ink { x, x };
        groups.last().last = x;
    }
    return groups;
}

void pointAt(QPushButton *button)
{
    QTest::mouseMove(button, QPoint(3, 3));
    QTest::mouseMove(button, button->rect().center());
    QCoreApplication::processEvents();
}

QRect differenceOf(const QImage &a, const QImage &b)
{
    QRect place;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y))
                place |= QRect(x, y, 1, 1);
        }
    }
    return place;
}

} // namespace

// What a button tells by its looks: that it is pressed, and what its key belongs to.
class TestLookButtons : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { LookWindow::loadFonts(); }
    void init()
    {
        look = std::make_unique<LookWindow>();
        QVERIFY(QTest::qWaitForWindowActive(&look->window));
    }
    void pressedIsSeen_data() { themeRows(); }
    void pressedIsSeen();
    void keyAndWordStandInTheMiddle_data() { themeRows(); }
    void keyAndWordStandInTheMiddle();
    void eachStateHasItsKey_data();
    void eachStateHasItsKey();

private:
    void press(QPushButton *button, QWidget *shown);

    std::unique_ptr<LookWindow> look;
    QStringList tried;
    QStringList still;
};

void TestLookButtons::press(QPushButton *button, QWidget *shown)
{
    const QString name = button->objectName().isEmpty() ? button->text() : button->objectName();
    if (!button->isVisible() || !button->isEnabled() || tried.contains(name))
        return;
    tried << name;
    const QRect place(button->mapTo(shown, QPoint()), button->size());
    pointAt(button); // as it is when it is pressed
    const QImage pointedAt = shown->grab(place).toImage();
    button->setDown(true);
    const double share = changedShare(pointedAt, shown->grab(place).toImage());
    button->setDown(false);
    if (share < 0.3)
        still << QString("%1: %2 of it").arg(name).arg(share, 0, 'f', 2);
}

void TestLookButtons::pressedIsSeen()
{
    QFETCH(QString, theme);
    tried.clear();
    still.clear();
    look->useTheme(theme);
    for (const QString &page : look->pages()) {
        look->showPage(page);
        for (QPushButton *button : look->window.findChildren<QPushButton *>())
            press(button, &look->window);
    }
    auto *holder = new QWidget(look->ui.pageCertInfo);
    Ui::TheCertItem card;
    card.setupUi(holder);
    look->showPage("pageCertInfo");
    holder->show();
    QCoreApplication::processEvents();
    press(card.bDetailsCert, &look->window);

    QDialog dialog;
    Ui::Popup popup;
    popup.setupUi(&dialog);
    popup.mainFrame->setStyleSheet(styleText(theme, "styles-popup.css"));
    popup.buttonBox->setStandardButtons(QDialogButtonBox::Yes | QDialogButtonBox::No);
    popup.buttonBox->button(QDialogButtonBox::Yes)->setDefault(true);
    popup.buttonBox->button(QDialogButtonBox::No)->setAutoDefault(false);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    for (QPushButton *button : dialog.findChildren<QPushButton *>())
        press(button, &dialog);

    QVERIFY2(tried.size() > 25, qPrintable(tried.join(' ')));
    QVERIFY2(still.isEmpty(), qPrintable(still.join('\n')));
}

void TestLookButtons::keyAndWordStandInTheMiddle()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    look->showPage("pageHome");
    QPushButton *button = look->ui.bChangePinAuthenCert;
    QSet<int> gaps;
    for (const char *word : { "Zmień PIN", "Nadaj PIN", "Odblokuj PIN" }) {
        button->setText("       " + QString(word));
        QCoreApplication::processEvents();
        const QRect place(button->mapTo(&look->window, QPoint()), button->size());
        const QImage picture = look->window.grab(place).toImage();
        const QVector<Ink> ink = inkOf(picture);
        QVERIFY2(ink.size() >= 2, word);
        // The key alone, on its side.
        const int room = ink[0].first - 8;
        const QImage key = picture.copy(room, 0, ink[0].last + 8 - room, picture.height());
        const QVector<Ink> rows = inkOf(key.transformed(QTransform().rotate(90)));
        QVERIFY(!rows.isEmpty());
        const int below = rows.first().first;
        const int above = picture.height() - 1 - rows.last().last;
        QVERIFY2(std::abs(above - below) <= 1, qPrintable(QString("%1 above, %2 below").arg(above).arg(below)));
        const int left = ink.first().first;
        const int right = button->width() - 1 - ink.last().last;
        gaps << ink[1].first - ink[0].last;
        QVERIFY2(std::abs(left - right) <= 3,
                 qPrintable(QString("%1: %2 left, %3 right").arg(word).arg(left).arg(right)));
        QVERIFY2(ink[0].last - ink[0].first <= 16, word);
    }
    // The first letters differ by a pixel in where they begin.
    QVERIFY(*std::max_element(gaps.begin(), gaps.end()) - *std::min_element(gaps.begin(), gaps.end()) <= 1);
}

void TestLookButtons::eachStateHasItsKey_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("state");
    for (const QString &theme : themes) {
        for (const char *state : { "", "_off", "_down", "_hover", "still" })
            QTest::addRow("%s %s", qPrintable(theme), state) << theme << state;
    }
}

void TestLookButtons::eachStateHasItsKey()
{
    QFETCH(QString, theme);
    QFETCH(QString, state);
    look->useTheme(theme);
    look->showPage("pageHome");
    QPushButton *button = look->ui.bChangePinAuthenCert;
    button->setText("       Zmień PIN");
    button->setEnabled(state != "_off");
    button->setDown(state == "_down");
    if (state == "_hover")
        pointAt(button);
    // The button has come up where the pointer was, and the toolkit does not draw it as pointed at.
    button->setAttribute(Qt::WA_UnderMouse, state == "still" || state == "_hover");
    QCoreApplication::processEvents();

    const QString pictures = button->property("pictures").toString();
    const QImage whole = button->grab().toImage();
    button->setProperty("pictures", QString());
    const QImage bare = button->grab().toImage();
    const QRect place = differenceOf(whole, bare);
    QVERIFY(!place.isEmpty());

    constexpr int side = 16;
    QImage wanted = bare;
    const auto draw = [&](QPoint corner) {
        wanted = bare;
        QPainter painter(&wanted);
        QIcon(pictures.arg(state == "still" ? "" : state)).paint(&painter, QRect(corner, QSize(side, side)));
    };
    draw(place.topLeft());
    const QPoint offset = differenceOf(wanted, bare).topLeft() - place.topLeft();
    draw(place.topLeft() - offset);
    QCOMPARE(differenceOf(wanted, whole), QRect());
}

VELMOR_TEST(TestLookButtons)
#include "tst_look_buttons.moc"
