#include "look_window.h"

#include "gui/scale_factor.h"
#include "look/widget_walk.h"

#include <QProcess>

#include <set>

// The form of the window in all themes, pages and states, at the densities of real screens with the factors that the
// program chooses for them. Density and factor are fixed when an application starts, so each has a process of its own.
class TestLookDensities : public QObject {
    Q_OBJECT

private slots:
    void nothingIsCutOrCovered_data();
    void nothingIsCutOrCovered();
};

namespace {

constexpr char walkOption[] = "--walk";

void report(const QString &line)
{
    std::fprintf(stdout, "%s\n", qPrintable(line));
}

// As a process of its own: the faults of all themes, pages and states, one a line, and their count last.
int walk()
{
    LookWindow::loadFonts();
    LookWindow look;
    look.window.setUpdatesEnabled(false); // laid out, but not drawn
    int walked = 0;
    for (const QString &theme : themes) {
        look.useTheme(theme);
        for (const QString &page : look.pages()) {
            look.showPage(page);
            QStringList found = WidgetWalk::faults(look.ui.mainFrame);
            // The picture stands between the two sentences, in the room of the breaks.
            if (page == "take card off")
                found.removeOne("lchange_card lies over lIntegration");
            for (const QString &fault : qAsConst(found))
                report(theme + ", " + page + ": " + fault);
            ++walked;
        }
    }
    report(QString("walked %1 at %2").arg(walked).arg(look.window.devicePixelRatioF()));
    return 0;
}

} // namespace

void TestLookDensities::nothingIsCutOrCovered_data()
{
    QTest::addColumn<int>("density");
    QTest::addColumn<int>("factor");
    std::set<std::pair<int, int>> seen;
    for (QSize screen : { QSize(1366, 768), QSize(1920, 1080), QSize(2560, 1440), QSize(3840, 2160) }) {
        for (int density : { 72, 80, 84, 96, 120, 144, 168, 192, 240, 288 }) {
            const int factor = int(scaleFactor({ screen, double(density) }, QSize(900, 697), false));
            if (seen.insert({ density, factor }).second)
                QTest::addRow("%d by %d", density, factor) << density << factor;
        }
    }
    QCOMPARE(int(seen.size()), 17);
}

void TestLookDensities::nothingIsCutOrCovered()
{
    QFETCH(int, density);
    QFETCH(int, factor);
    QProcessEnvironment surroundings = QProcessEnvironment::systemEnvironment();
    surroundings.insert("QT_FONT_DPI", QString::number(density));
    surroundings.insert("VELMOR_FACTORS", QString::number(factor));
    QProcess child;
    child.setProcessEnvironment(surroundings);
    child.start(QCoreApplication::applicationFilePath(), { walkOption });
    QVERIFY(child.waitForFinished(60000));
    QStringList lines = QString::fromUtf8(child.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);

    QVERIFY(!lines.isEmpty());
    QCOMPARE(lines.takeLast().trimmed().section(' ', -1), QString::number(factor));
    QVERIFY2(lines.isEmpty(), qPrintable(lines.join('\n')));
}

int main(int argc, char *argv[])
{
    TestHome home;
    const QByteArray factors = argc > 1 && qstrcmp(argv[1], walkOption) == 0 ? qgetenv("VELMOR_FACTORS") : QByteArray();
    if (!factors.isEmpty())
        qputenv("QT_SCREEN_SCALE_FACTORS", factors);
    QApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(walkOption))
        return walk();
    TestLookDensities test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_look_densities.moc"
