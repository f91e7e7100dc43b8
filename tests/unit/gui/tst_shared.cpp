#include "support/testmain.h"

#include "shared.h"

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QPainter>
#include <QRawFont>
#include <QSettings>
#include <QSvgRenderer>

// The resource library: when its content appears, that it is complete, and that every picture draws something.
class TestShared : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyPictureIsCompiledIn();
    void themeHasItsFiles_data();
    void themeHasItsFiles();
    void everyFileOfAStyleExists_data();
    void everyFileOfAStyleExists();
    void styleHasNoOpenPlaceholder_data();
    void styleHasNoOpenPlaceholder();
    void pictureDraws_data();
    void pictureDraws();
    void loaderMoves_data();
    void loaderMoves();
    void fontHoldsThePolishLetters_data();
    void fontHoldsThePolishLetters();
    void iconComesInAllSizesOfAWindow();
    void popupSettingsAreReadable();
    void loadingTwiceIsHarmless();
};

static const QStringList themes { "light", "dark", "hc" };

static QString textOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

static void themeRows()
{
    QTest::addColumn<QString>("theme");
    for (const QString &theme : themes)
        QTest::newRow(qPrintable(theme)) << theme;
}

static void pictureRows(const QStringList &folders, const QString &filter)
{
    QTest::addColumn<QString>("path");
    for (const QString &folder : folders) {
        for (const QString &name : QDir(folder).entryList({ filter }))
            QTest::newRow(qPrintable(folder + "/" + name)) << folder + "/" + name;
    }
}

void TestShared::initTestCase()
{
    // Absent until they are asked for, although the library is linked and its function is called below.
    for (const char *folder : { ":/images", ":/fonts", ":/icons", ":/themes", ":/settings" })
        QVERIFY2(!QDir(folder).exists(), folder);

    Shared::loadResources();

    for (const char *folder : { ":/images", ":/fonts", ":/icons", ":/themes", ":/settings" })
        QVERIFY2(QDir(folder).exists(), folder);
}

void TestShared::everyPictureIsCompiledIn()
{
    // The list is kept by hand, for Qt Designer.
    const QStringList drawn = QDir(VELMOR_TEST_SOURCE_DIR "/Shared/images").entryList({ "*.svg" });

    QVERIFY(drawn.size() > 10);
    QCOMPARE(QDir(":/images").entryList(), drawn);
}

void TestShared::themeHasItsFiles_data()
{
    themeRows();
}

void TestShared::themeHasItsFiles()
{
    QFETCH(QString, theme);

    for (const char *name : { "styles-window.css", "styles-popup.css", "loader.svg", "loader_photo.svg" })
        QVERIFY2(!textOf(QString(":/themes/%1/%2").arg(theme, name)).isEmpty(), name);
    QStringList files = QDir(":/themes/light").entryList();
    // The pictures are drawn in the colours of the light theme, so that it needs none of its own.
    if (theme != "light") {
        for (const char *name :
             { "blocked", "change_card", "footer", "no_chip", "no_connection", "no_photo", "ostrel", "pinpad" })
            files << QString(name) + ".svg";
    }
    files.sort();
    QStringList found = QDir(":/themes/" + theme).entryList();
    found.sort();
    QCOMPARE(found, files);
}

void TestShared::everyFileOfAStyleExists_data()
{
    themeRows();
}

void TestShared::everyFileOfAStyleExists()
{
    QFETCH(QString, theme);

    int found = 0;
    for (const char *sheet : { "styles-window.css", "styles-popup.css" }) {
        const QString css = textOf(QString(":/themes/%1/%2").arg(theme, sheet));
        QRegularExpressionMatchIterator urls = QRegularExpression("url\\(\"?([^\")]*)").globalMatch(css);
        for (; urls.hasNext(); ++found) {
            const QString path = urls.next().captured(1);
            QVERIFY2(path.startsWith(":/") && QFile::exists(path), qPrintable(path));
        }
    }
    QVERIFY(found > 10);
}

void TestShared::styleHasNoOpenPlaceholder_data()
{
    themeRows();
}

void TestShared::styleHasNoOpenPlaceholder()
{
    QFETCH(QString, theme);

    // An unknown colour in a template becomes an empty value, which the parser drops without a word.
    const QRegularExpression gap("@|:\\s*;|url\\(\"\"\\)|stroke=\"\"|fill=\"\"");
    for (const QString &name : QDir(":/themes/" + theme).entryList(QDir::Files)) {
        const auto match = gap.match(textOf(":/themes/" + theme + "/" + name));
        QVERIFY2(!match.hasMatch(), qPrintable(name + ": " + match.captured()));
    }
}

void TestShared::pictureDraws_data()
{
    pictureRows({ ":/images", ":/themes/light", ":/themes/dark", ":/themes/hc" }, "*.svg");
}

void TestShared::pictureDraws()
{
    QFETCH(QString, path);

    QSvgRenderer renderer(path);
    QVERIFY(renderer.isValid());
    QImage image(renderer.defaultSize() * 2, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();

    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            drawn += qAlpha(image.pixel(x, y)) > 0;
    }
    QVERIFY(drawn > image.width());
    // Files are handed to the renderer as Latin-1, so they must be plain ASCII.
    for (const QChar c : textOf(path))
        QVERIFY(c.unicode() < 128);
}

void TestShared::loaderMoves_data()
{
    pictureRows({ ":/themes/light", ":/themes/dark", ":/themes/hc" }, "loader*.svg");
}

void TestShared::loaderMoves()
{
    QFETCH(QString, path);

    QVERIFY(QSvgRenderer(path).animated());
}

void TestShared::fontHoldsThePolishLetters_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("style");
    QTest::newRow("regular") << ":/fonts/Poppins_400Regular.ttf"
                             << "Regular";
    QTest::newRow("medium") << ":/fonts/Poppins_500Medium.ttf"
                            << "Medium";
    QTest::newRow("semibold") << ":/fonts/Poppins_600SemiBold.ttf"
                              << "SemiBold";
    QTest::newRow("bold") << ":/fonts/Poppins_700Bold.ttf"
                          << "Bold";
}

void TestShared::fontHoldsThePolishLetters()
{
    QFETCH(QString, path);
    QFETCH(QString, style);

    const QRawFont font(path, 16);

    QVERIFY(font.isValid());
    QCOMPARE(font.familyName(), QString("Poppins"));
    QCOMPARE(font.styleName(), style);
    for (const QChar letter : QString("ąćęłńóśźżĄĆĘŁŃÓŚŹŻ„”–•"))
        QVERIFY2(font.supportsCharacter(letter), qPrintable(QString(letter)));
}

void TestShared::iconComesInAllSizesOfAWindow()
{
    const QIcon icon(":/icons/Manager.iconset/Manager.ico");

    const QList<QSize> sizes = icon.availableSizes();
    for (const int size : { 16, 20, 24, 32, 40, 48, 64 })
        QVERIFY2(sizes.contains(QSize(size, size)), qPrintable(QString::number(size)));
    // The card on it is white, its ground is the red of the header, the corner is empty.
    for (const int size : { 48, 64 }) {
        const QImage image = icon.pixmap(size, size).toImage();
        QCOMPARE(image.pixelColor(size / 2, size * 60 / 256), QColor("#9E0231"));
        QCOMPARE(image.pixelColor(size / 2, size * 90 / 256), QColor(Qt::white));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
    }
}

void TestShared::popupSettingsAreReadable()
{
    const QSettings settings(":/settings/popup.ini", QSettings::IniFormat);

    QVERIFY(settings.contains("shadowButtons"));
    QVERIFY(settings.value("bCloseSize").toInt() > 0);
    QVERIFY(settings.value("bCloseRightMargin").toInt() > 0);
}

void TestShared::loadingTwiceIsHarmless()
{
    const QStringList before = QDir(":/images").entryList();

    Shared::loadResources();

    QCOMPARE(QDir(":/images").entryList(), before);
}

VELMOR_TEST(TestShared)
#include "tst_shared.moc"
