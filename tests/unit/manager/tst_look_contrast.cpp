#include "look_window.h"

#include <QPainter>
#include <QSvgRenderer>

namespace {

// Colours that are meant, and fainter than the rest has to be. Letters in them are larger and stronger instead.
struct Exception {
    const char *widgets; // a pattern of their names
    const char *colour;
    const char *what;
};

constexpr Exception exceptions[] = {
    { "l(ActualPin|NewPin|RepeatPin|Pin|Puk)Info(Puk)?", "#2B9EEB", "hints" },
    { "l(ActualPin|NewPin|RepeatPin|Pin|Puk)Info(Puk)?", "#EA0449", "hints of what is wrong" },
    { "lUnblockPinDetails", "#2B9EEB", "what to do with the PUK" },
    { "lUnblockPinDetails", "#EA0449", "what to do with the PUK, for a locked PIN" },
    { "lTryNumDesc(PUK)?(pinpad)?", "#2B9EEB", "tries that are left" },
    { "lPinChanged", "#2B9EEB", "a result without success or failure" },
    { "lPinChanged", "#6EBB6E", "a success" },
    { "lPinChanged", "#EA0449", "a failure" },
    { "labelTitle(Authen|Author|Presence|Qualified)Cert", "#98A0A7", "title of a tile that is off" },
    { "l(Guide|License|Changelog)", "#2B9EEB", "links to the documents" },
};

const Exception *exceptionFor(const QString &widget, const QColor &colour)
{
    for (const Exception &row : exceptions) {
        if (QColor(row.colour) == colour
            && QRegularExpression(QString("^%1$").arg(row.widgets)).match(widget).hasMatch())
            return &row;
    }
    return nullptr;
}

// The text as the eye has it, links included, whose colour stands in the text itself.
QString shownText(const QWidget *widget)
{
    return widget->property(widget->inherits("QComboBox") ? "currentText" : "text").toString();
}

QColor textColour(const QWidget *widget)
{
    static const QRegularExpression own("color: ?(#[0-9A-Fa-f]{6})");
    const auto match = own.match(shownText(widget));
    return match.hasMatch() ? QColor(match.captured(1)) : foreground(widget);
}

QHash<QString, QColor> coloursOf(const QString &theme)
{
    QFile file(VELMOR_TEST_SOURCE_DIR "/Shared/themes/" + theme + ".cmake");
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no theme %s", qPrintable(theme));
    QHash<QString, QColor> colours;
    auto rows = QRegularExpression("set\\((\\w+) \"(#\\w+)\"\\)").globalMatch(file.readAll());
    while (rows.hasNext()) {
        const auto row = rows.next();
        colours[row.captured(1)] = QColor(row.captured(2));
    }
    return colours;
}

// The strongest contrast that a part of a picture has with its ground: what its lines are seen by.
double strongest(const QImage &image, const QRect &part, const QColor &ground)
{
    double found = 1;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (image.valid(x, y))
                found = std::max(found, contrast(image.pixelColor(x, y), ground));
        }
    }
    return found;
}

} // namespace

// What is read and what is seen, in numbers: contrast after WCAG 2 of all texts and of the signs beside them.
class TestLookContrast : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { LookWindow::loadFonts(); }
    void init()
    {
        look = std::make_unique<LookWindow>();
        QVERIFY(QTest::qWaitForWindowActive(&look->window));
        lowest.clear();
    }
    void text_data() { themeRows(); }
    void text();
    void textUnderAPointer_data() { themeRows(); }
    void textUnderAPointer();
    void offLooksOff_data() { themeRows(); }
    void offLooksOff();
    void signs_data() { themeRows(); }
    void signs();
    void coloursOfTheLightTheme();
    void linksOfTheBlockedPuk_data() { themeRows(); }
    void linksOfTheBlockedPuk();

private:
    void note(const QString &kind, double found, const QString &where);
    void tell(const QString &theme) const;

    std::unique_ptr<LookWindow> look;
    QMap<QString, QPair<double, QString>> lowest;
};

void TestLookContrast::note(const QString &kind, double found, const QString &where)
{
    const auto known = lowest.constFind(kind);
    if (known == lowest.constEnd() || found < known->first)
        lowest[kind] = { found, where };
}

void TestLookContrast::tell(const QString &theme) const
{
    for (auto row = lowest.cbegin(); row != lowest.cend(); ++row)
        qInfo("%s: lowest of %s is %.2f, at %s", qPrintable(theme), qPrintable(row.key()), row->first,
              qPrintable(row->second));
}

void TestLookContrast::text()
{
    QFETCH(QString, theme);
    look->useTheme(theme);

    int measured = 0;
    QStringList faint;
    for (const QString &page : look->pages()) {
        look->showPage(page);
        const QImage image = look->window.grab().toImage();
        for (const QWidget *widget : look->window.findChildren<QWidget *>()) {
            if (!widget->isVisible() || widget->inherits("QLineEdit") || shownText(widget).trimmed().isEmpty())
                continue;
            const QRect rect(widget->mapTo(&look->window, QPoint()), widget->size());
            const QColor ink = textColour(widget);
            const QColor ground = background(image, rect.width() > 12 ? rect.adjusted(3, 3, -3, -3) : rect);
            const double found = contrast(ink, ground);
            const Exception *exception = exceptionFor(widget->objectName(), ink);
            ++measured;
            const QString where = QString("%1 on %2: %3 on %4, %5")
                                      .arg(widget->objectName(), page, ink.name(), ground.name())
                                      .arg(found, 0, 'f', 2);
            note(exception                 ? QString("exceptions, %1").arg(exception->what)
                     : widget->isEnabled() ? QString("text")
                                           : QString("disabled text"),
                 found, where);
            if (!exception && found < wanted(theme))
                faint << where;
            if (exception && (widget->font().pixelSize() < 13 || widget->font().weight() < QFont::Medium))
                faint << where + ": small or thin";
        }
    }
    tell(theme);
    QVERIFY(measured > 200);
    faint.removeDuplicates();
    QVERIFY2(faint.isEmpty(), qPrintable(faint.join('\n')));
}

// States that need a pointer are measured in the table of colours.
void TestLookContrast::textUnderAPointer()
{
    QFETCH(QString, theme);
    const QHash<QString, QColor> colours = coloursOf(theme);
    static const char *pairs[][2] = {
        { "headerText", "headerHover" },
        { "primaryHoverText", "primaryHover" },
        { "neutralHoverText", "neutralHover" },
        { "headerText", "headerDown" },
        { "primaryDownText", "primaryDown" },
        { "neutralDownText", "neutralDown" },
        { "text", "flatDown" },
        { "text", "comboHover" },
        { "text", "tile" },
        { "tileHoverText", "tileHover" },
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

// Readable, and yet not to be taken for what can be used.
void TestLookContrast::offLooksOff()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    look->showPage("pageSettings");
    look->ui.bUpdate->setText("Aktualizuj");
    for (QWidget *widget : std::initializer_list<QWidget *> { look->ui.cbReaders, look->ui.bSettings, look->ui.bHelp,
                                                              look->ui.bUpdate, look->ui.bIntegrate }) {
        widget->setEnabled(true);
        const QRect place(widget->mapTo(&look->window, QPoint()), widget->size());
        const QImage on = look->window.grab(place).toImage();
        const double text = contrast(foreground(widget), background(on, on.rect()));
        widget->setEnabled(false);
        QCoreApplication::processEvents();
        const QImage off = look->window.grab(place).toImage();
        int changed = 0;
        for (int y = 0; y < on.height(); ++y) {
            for (int x = 0; x < on.width(); ++x)
                changed += difference(on.pixel(x, y), off.pixel(x, y)) > 60;
        }
        const double share = double(changed) / (on.width() * on.height());
        const double faded = contrast(foreground(widget), background(off, off.rect()));
        const QString numbers =
            QString("%1: %2 to %3, %4 of it changed").arg(widget->objectName()).arg(text).arg(faded).arg(share);
        QVERIFY2(faded < 0.9 * text && share > 0.03, qPrintable(numbers));
    }
}

void TestLookContrast::signs()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    constexpr double least = 3.0;
    const auto &ui = look->ui;
    const auto measure = [&](const char *what, QWidget *widget, const QRect &part, QPoint ground) {
        const QImage image = look->window.grab().toImage();
        const QPoint corner = widget->mapTo(&look->window, QPoint());
        const double found = strongest(image, part.translated(corner), image.pixelColor(corner + ground));
        note("signs", found, what);
        QVERIFY2(found >= least, qPrintable(QString("%1: %2").arg(what).arg(found)));
    };

    look->showPage("pageSettings");
    // Its edge, then the tick in it.
    ui.cbCANStorage->setChecked(false);
    measure("check box", ui.cbCANStorage, { 6, 10, 2, 4 }, { 3, 3 });
    ui.cbCANStorage->setChecked(true);
    measure("ticked box", ui.cbCANStorage, { 6, 10, 2, 4 }, { 3, 3 });
    measure("tick", ui.cbCANStorage, { 10, 8, 12, 12 }, { 9, 7 });
    measure("warning sign", ui.bWarningIcon, { 4, 4, 24, 24 }, { 1, 1 });

    look->showPage("pageChangePin");
    const QRect edge(0, ui.fieldActualPin->height() / 2, 5, 4);
    measure("edge of a field", ui.fieldActualPin, edge, { -3, 20 });

    look->showPage("pageHelp");
    ui.tDiagnosticsRaport->setText(QString("wiersz<br>").repeated(60));
    QCoreApplication::processEvents();
    QWidget *bar = ui.tDiagnosticsRaport->findChild<QWidget *>("qt_scrollarea_vcontainer");
    QVERIFY(bar && bar->isVisible());
    measure("scroll bar", bar, { 0, 10, bar->width(), 4 }, { bar->width() / 2, bar->height() - 6 });

    // Also on a dialog's ground.
    const QColor card = coloursOf(theme)["card"];
    for (const char *file : { ":/images/warning.svg", ":/images/popup-info.svg" }) {
        QImage image(40, 40, QImage::Format_RGB32);
        image.fill(card);
        QPainter painter(&image);
        QSvgRenderer(QString(file)).render(&painter);
        painter.end();
        const double found = strongest(image, image.rect(), card);
        note("signs", found, file);
        QVERIFY2(found >= least, qPrintable(QString("%1: %2").arg(file).arg(found)));
    }
    tell(theme);
}

void TestLookContrast::coloursOfTheLightTheme()
{
    look->useTheme("light");
    look->showPage("pageHome");
    const QImage image = look->window.grab().toImage();
    const auto &ui = look->ui;
    const auto at = [&](const QWidget *widget, QPoint point) {
        return image.pixelColor(widget->mapTo(&look->window, point));
    };
    QCOMPARE(at(ui.header, { 500, 5 }), QColor("#9E0231"));
    QCOMPARE(foreground(ui.lMainTitle), QColor(Qt::white));
    QCOMPARE(foreground(ui.lSubTitle), QColor(Qt::white));
    QCOMPARE(foreground(ui.lCommonNameVal), QColor("#4C5358"));
    QCOMPARE(foreground(ui.lDesc2), QColor("#4C5358"));
    QCOMPARE(at(ui.authenticationCert, { 300, 70 }), QColor("#ECEDEE"));
    QCOMPARE(at(ui.bChangePinAuthenCert, { 60, 4 }), QColor("#98A0A7"));
    QCOMPARE(at(ui.pageHome, { 10, 40 }), QColor(Qt::white));
    QCOMPARE(foreground(ui.lTryNumDesc), QColor("#2B9EEB"));
    QCOMPARE(foreground(ui.lNewPinInfo), QColor("#2B9EEB"));
    QCOMPARE(foreground(ui.lRepeatPinInfo), QColor("#EA0449"));
    look->showPage("result done");
    QCOMPARE(foreground(ui.lPinChanged), QColor("#6EBB6E"));
    const QHash<QString, QColor> colours = coloursOf("light");
    QCOMPARE(colours["accent"], QColor("#2B9EEB"));
    QCOMPARE(colours["error"], QColor("#EA0449"));
    QCOMPARE(colours["neutral"], QColor("#98A0A7"));
}

void TestLookContrast::linksOfTheBlockedPuk()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    const QSettings colours(QString(":/themes/%1/colours.ini").arg(theme), QSettings::IniFormat);
    const QColor link(colours.value("link").toString());
    QVERIFY(link.isValid());
    QVERIFY(!look->ui.lPukBlocked_2->text().contains("#2b9eeb"));
    look->showPage("pageBlockedPuk_2");
    const QLabel *label = look->ui.lPukBlocked_2;
    const QImage image = look->window.grab().toImage();
    const QRect rect(label->mapTo(&look->window, QPoint()), label->size());
    const QColor ground = background(image, rect);
    QVERIFY2(contrast(link, ground) >= wanted(theme), qPrintable(QString::number(contrast(link, ground))));
    int inked = 0;
    for (int y = rect.top(); y < rect.bottom(); ++y) {
        for (int x = rect.left(); x < rect.right(); ++x)
            inked += image.pixelColor(x, y) == link;
    }
    QVERIFY2(inked > 100, qPrintable(QString::number(inked)));
}

VELMOR_TEST(TestLookContrast)
#include "tst_look_contrast.moc"
