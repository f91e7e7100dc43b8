#include "look_window.h"

#include <QPainter>
#include <QSvgRenderer>

namespace {

const QStringList drawings { "blocked",       "change_card", "footer", "no_chip",
                             "no_connection", "no_photo",    "ostrel", "pinpad" };

// As the program finds it: the theme's own, or the one for all.
QString pictureOf(const QString &theme, const QString &name)
{
    const QString own = QString(":/themes/%1/%2.svg").arg(theme, name);
    return QFile::exists(own) ? own : QString(":/images/%1.svg").arg(name);
}

QImage drawn(const QString &path, const QColor &ground)
{
    QSvgRenderer svg(path);
    QImage image(svg.defaultSize() * 2, QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    svg.render(&painter);
    return image;
}

} // namespace

// Pictures in the colours of the theme, and the background only where it is more than scraps.
class TestLookPictures : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { LookWindow::loadFonts(); }
    void init()
    {
        look = std::make_unique<LookWindow>();
        QVERIFY(QTest::qWaitForWindowActive(&look->window));
    }
    void drawingsSuitTheTheme_data() { themeRows(); }
    void drawingsSuitTheTheme();
    void picturesStandOnThePage_data() { themeRows(); }
    void picturesStandOnThePage();
    void theGridHasNoScrapsOfTheBackground_data() { themeRows(); }
    void theGridHasNoScrapsOfTheBackground();

private:
    std::unique_ptr<LookWindow> look;
};

void TestLookPictures::drawingsSuitTheTheme()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    look->showPage("pageDisconected");
    const QColor surface = look->window.grab().toImage().pixelColor(20, 400);
    for (const QString &name : drawings) {
        const QImage image = drawn(pictureOf(theme, name), surface);
        double strongest = 1;
        int light = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                strongest = std::max(strongest, contrast(image.pixelColor(x, y), surface));
                light += luminance(image.pixelColor(x, y)) > 0.8;
            }
        }
        // Of no meaning by itself, since a sentence stands beside each; yet it is to be seen.
        QVERIFY2(strongest >= 2.5, qPrintable(QString("%1: %2").arg(name).arg(strongest)));
        // A plate, which lines do not cover.
        if (theme != "light")
            QVERIFY2(light < 0.5 * image.width() * image.height(), qPrintable(name));
    }
}

void TestLookPictures::picturesStandOnThePage()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    const struct {
        const char *page;
        QLabel *label;
    } rows[] = {
        { "pageDisconected", look->ui.lno_connection },     { "pageNoElectricLayer", look->ui.lNoChipPicture },
        { "pageBlockedPuk_2", look->ui.lBlockedPicture_2 }, { "pinpad change", look->ui.lpinpad },
        { "pinpad unblock", look->ui.lPinPadImg_2 },        { "take card off", look->ui.lchange_card },
    };
    for (const auto &row : rows) {
        look->showPage(row.page);
        const QImage image = look->window.grab().toImage();
        const QRect place(row.label->mapTo(&look->window, QPoint()), row.label->size());
        const QColor beside = image.pixelColor(place.left() - 4, place.center().y());
        const QColor inside = image.pixelColor(place.center().x(), place.top() + 2);
        QVERIFY2(contrast(inside, beside) < 1.1, row.page);
    }
}

void TestLookPictures::theGridHasNoScrapsOfTheBackground()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    const auto scraps = [this](const QString &page) {
        look->showPage(page);
        const QImage image = look->window.grab().toImage();
        const QPoint corner = look->ui.mainFrame->mapTo(&look->window, QPoint());
        int found = 0;
        // Right of the grid.
        for (int y = 240; y < 639; ++y) {
            for (int x = 876; x < 900; ++x)
                found += image.pixel(corner + QPoint(x, y)) != image.pixel(corner + QPoint(876, 240));
        }
        return found;
    };
    for (const char *page : { "pageHome", "pageAllData", "pageCertInfo", "pageUnblockPin", "pageSettings", "pageHelp" })
        QVERIFY2(scraps(page) == 0, page);
    QCOMPARE(scraps("pageDisconected") > 0, theme != "hc");
}

VELMOR_TEST(TestLookPictures)
#include "tst_look_pictures.moc"
