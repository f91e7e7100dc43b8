#include "look_window.h"
#include "pin_fields.h"
#include "ui_popup.h"
#include "ui_thecertitem.h"

#include <QDialog>

namespace {

constexpr double leastContrast = 3.0;
constexpr int leastWidth = 2;
// How far inside its edge, in pixels, the ring of a widget may lie.
constexpr int depth = 12;

// Between two pictures of the same place, from one of its edges inwards: the contrast that the second strongest pixel
// reaches, since two of them make a line that can be seen.
double lineContrast(const QImage &before, const QImage &after, QPoint start, QPoint inwards)
{
    QVector<double> found;
    for (int i = 0; i < depth; ++i) {
        const QPoint point = start + i * inwards;
        if (before.rect().contains(point))
            found << contrast(before.pixelColor(point), after.pixelColor(point));
    }
    std::sort(found.begin(), found.end(), std::greater<>());
    return found.value(leastWidth - 1, 1.0);
}

// The weakest place of the ring, corners aside: they are round, and those of a round button are all of it.
double ringContrast(const QImage &before, const QImage &after)
{
    const int width = before.width();
    const int height = before.height();
    double least = 100;
    const auto side = [&](int length, const std::function<double(int)> &at) {
        const int reach = length > 60 ? length / 4 : 2;
        for (int i = length / 2 - reach; i <= length / 2 + reach; ++i)
            least = std::min(least, at(i));
    };
    side(width, [&](int x) { return lineContrast(before, after, { x, 0 }, { 0, 1 }); });
    side(width, [&](int x) { return lineContrast(before, after, { x, height - 1 }, { 0, -1 }); });
    side(height, [&](int y) { return lineContrast(before, after, { 0, y }, { 1, 0 }); });
    side(height, [&](int y) { return lineContrast(before, after, { width - 1, y }, { -1, 0 }); });
    return least;
}

bool isStop(const QWidget *widget)
{
    return widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus)
        && !widget->objectName().startsWith("qt_") && !widget->inherits("QScrollBar");
}

} // namespace

// Every place that the focus can reach, in every theme: a ring of two pixels all round that stands 3:1 from what was
// there before, measured on the pixels.
class TestLookFocus : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void ringIsSeen_data() { themeRows(); }
    void ringIsSeen();
    void highContrastAlsoWidensTheRing();

private:
    void tryStop(QWidget *widget, QWidget *shown);
    void tryAll(QWidget *window);

    std::unique_ptr<LookWindow> look;
    QStringList tried;
    QStringList faint;
    QPair<double, QString> lowest;
};

void TestLookFocus::initTestCase()
{
    LookWindow::loadFonts();
    connect(qApp, &QApplication::focusChanged, this, markFocusInRings);
}

void TestLookFocus::init()
{
    look = std::make_unique<LookWindow>();
    QVERIFY(QTest::qWaitForWindowActive(&look->window));
    QTest::keyClick(&look->window, Qt::Key_Tab); // who moves by this key sees the rings of text as well
}

void TestLookFocus::tryStop(QWidget *widget, QWidget *shown)
{
    // The ring of a field is the frame around it.
    const bool field = widget->inherits("QLineEdit");
    const QWidget *ring = field ? widget->parentWidget() : widget;
    const QRect rect(ring->mapTo(shown, QPoint()), ring->size());
    if (QApplication::focusWidget())
        QApplication::focusWidget()->clearFocus();
    const QImage before = shown->grab(rect).toImage();
    widget->setFocus(Qt::TabFocusReason);
    QCOMPARE(QApplication::focusWidget(), widget);
    const double found = ringContrast(before, shown->grab(rect).toImage());
    const QString name = widget->objectName().isEmpty() ? widget->property("text").toString() : widget->objectName();
    tried << name;
    if (found < leastContrast)
        faint << QString("%1: %2").arg(name).arg(found, 0, 'f', 2);
    lowest = std::min(lowest, qMakePair(found, name));
}

void TestLookFocus::tryAll(QWidget *window)
{
    for (QWidget *widget : window->findChildren<QWidget *>()) {
        if (isStop(widget) && (widget->objectName().isEmpty() || !tried.contains(widget->objectName())))
            tryStop(widget, window);
    }
}

void TestLookFocus::ringIsSeen()
{
    QFETCH(QString, theme);
    tried.clear();
    faint.clear();
    lowest = { 100, {} };
    look->useTheme(theme);
    for (const QString &page : look->pages()) {
        look->showPage(page);
        tryAll(&look->window);
    }

    auto *holder = new QWidget(look->ui.pageCertInfo);
    Ui::TheCertItem card;
    card.setupUi(holder);
    look->showPage("pageCertInfo");
    holder->show();
    QCoreApplication::processEvents();
    tryAll(holder);

    QDialog dialog;
    Ui::Popup popup;
    popup.setupUi(&dialog);
    popup.mainFrame->setStyleSheet(styleText(theme, "styles-popup.css"));
    popup.buttonBox->setStandardButtons(QDialogButtonBox::Yes | QDialogButtonBox::No);
    popup.buttonBox->button(QDialogButtonBox::Yes)->setDefault(true);
    popup.buttonBox->button(QDialogButtonBox::No)->setAutoDefault(false); // else the focus would make it the default
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    tried.removeOne("bClose"); // it has a name in common with the window's
    tryAll(&dialog);

    qInfo("%s: the lowest of %d stops is %.2f, at %s", qPrintable(theme), int(tried.size()), lowest.first,
          qPrintable(lowest.second));
    QVERIFY2(tried.size() > 70, qPrintable(tried.join(' ')));
    QVERIFY2(faint.isEmpty(),
             qPrintable(QString("%1 of %2:\n").arg(faint.size()).arg(tried.size()) + faint.join('\n')));
}

// By width and form too, for who sees no colours: where a border stands already, that of the focus is wider.
void TestLookFocus::highContrastAlsoWidensTheRing()
{
    look->useTheme("hc");
    look->showPage("pageHome");
    const auto inkBeside = [this](QWidget *widget) {
        const QImage image = widget->grab().toImage();
        const double black = luminance(Qt::black);
        int width = 0;
        while (width < depth && luminance(image.pixelColor(width, image.height() / 2)) > black + 0.2)
            ++width;
        return width;
    };
    for (QWidget *widget : std::initializer_list<QWidget *> { look->ui.cbReaders, look->ui.bChangePinAuthenCert,
                                                              look->ui.bArrowAuthenCert }) {
        const int before = inkBeside(widget);
        widget->setFocus(Qt::TabFocusReason);
        const int after = inkBeside(widget);
        QVERIFY2(before > 0 && after >= before + leastWidth,
                 qPrintable(QString("%1: %2 to %3").arg(widget->objectName()).arg(before).arg(after)));
    }
    look->showPage("pageHelp");
    const int before = inkBeside(look->ui.tDiagnosticsRaport);
    look->ui.tDiagnosticsRaport->setFocus(Qt::TabFocusReason);
    QVERIFY(inkBeside(look->ui.tDiagnosticsRaport) >= before + leastWidth);
}

VELMOR_TEST(TestLookFocus)
#include "tst_look_focus.moc"
