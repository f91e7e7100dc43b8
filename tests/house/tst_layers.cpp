#include "support/testmain.h"

#include <QDirIterator>
#include <QRegularExpression>

// The table of layers in docs/architecture.md, held against what the sources include.
class TstLayers : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void tableNamesEveryFolderOfTheProduct();
    void tableHasNoCircle();
    void folderIncludesOnlyWhatItStandsOn_data();
    void folderIncludesOnlyWhatItStandsOn();
    void productIncludesNoStandInAndNoTest();
    void wordsOfOnePlatformStayInItsFiles();

private:
    QMap<QString, QStringList> table; // folder without its parent: what it stands on
    QMap<QString, QString> parents;
};

namespace {

const QString root = VELMOR_TEST_SOURCE_DIR;

QString contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}

QStringList sourcesIn(const QString &folder)
{
    QStringList paths;
    QDirIterator entries(root + '/' + folder, { "*.cpp", "*.h" }, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext())
        paths << entries.next();
    return paths;
}

QStringList includesOf(const QString &path)
{
    static const QRegularExpression include("^\\s*#\\s*include\\s*[\"<]([^\">]+)[\">]",
                                            QRegularExpression::MultilineOption);
    QStringList names;
    auto matches = include.globalMatch(contentOf(path));
    while (matches.hasNext())
        names << matches.next().captured(1);
    return names;
}

// Folder of what an include of a product source names; empty for the toolkit, the system and what the forms become.
QString folderOf(const QString &include)
{
    const QString folder = include.contains('/') ? include.section('/', 0, 0) : QString();
    if (QDir(root + "/QtCommon/" + folder).exists() && !folder.isEmpty())
        return folder;
    if (QFile::exists(root + "/Manager/" + include))
        return "Manager";
    return QFile::exists(root + "/Shared/" + include) ? "Shared" : QString();
}

} // namespace

void TstLayers::initTestCase()
{
    static const QRegularExpression row("^\\| `(?:(QtCommon)/)?(\\w+)` \\|[^|]*\\|([^|]*)\\|$",
                                        QRegularExpression::MultilineOption);
    static const QRegularExpression word("`(\\w+)`");
    auto rows = row.globalMatch(contentOf(root + "/docs/architecture.md"));
    while (rows.hasNext()) {
        const QRegularExpressionMatch found = rows.next();
        QStringList below;
        auto words = word.globalMatch(found.captured(3));
        while (words.hasNext())
            below << words.next().captured(1);
        table.insert(found.captured(2), below);
        parents.insert(found.captured(2), found.captured(1));
    }
    QVERIFY(!table.isEmpty());
}

void TstLayers::tableNamesEveryFolderOfTheProduct()
{
    QStringList folders = QDir(root + "/QtCommon").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    folders << "Manager"
            << "Shared";
    folders.sort();
    QCOMPARE(QStringList(table.keys()), folders);
}

void TstLayers::tableHasNoCircle()
{
    QMap<QString, QStringList> left = table;
    // Takes away what stands on nothing that is left.
    for (bool taken = true; taken;) {
        taken = false;
        for (const QString &folder : left.keys()) {
            const QStringList below = left.value(folder);
            if (std::none_of(below.begin(), below.end(), [&](const QString &name) { return left.contains(name); })) {
                left.remove(folder);
                taken = true;
            }
        }
    }
    QCOMPARE(QStringList(left.keys()), QStringList());
}

void TstLayers::folderIncludesOnlyWhatItStandsOn_data()
{
    QTest::addColumn<QString>("folder");
    for (const QString &folder : table.keys())
        QTest::newRow(qPrintable(folder)) << folder;
}

void TstLayers::folderIncludesOnlyWhatItStandsOn()
{
    QFETCH(QString, folder);
    const QString path = parents.value(folder).isEmpty() ? folder : parents.value(folder) + '/' + folder;
    const QStringList sources = sourcesIn(path);
    QVERIFY(!sources.isEmpty());
    QStringList breaches;
    for (const QString &source : sources) {
        for (const QString &include : includesOf(source)) {
            const QString below = folderOf(include);
            if (!below.isEmpty() && below != folder && !table.value(folder).contains(below))
                breaches << source.mid(root.size() + 1) + ": " + include;
        }
    }
    QCOMPARE(breaches, QStringList());
}

void TstLayers::productIncludesNoStandInAndNoTest()
{
    QStringList breaches;
    for (const char *folder : { "Manager", "QtCommon", "Shared" }) {
        for (const QString &source : sourcesIn(folder)) {
            for (const QString &include : includesOf(source)) {
                if (QFile::exists(root + "/devkit/" + include) || QFile::exists(root + "/tests/" + include)
                    || include.contains("devkit") || include.contains("tests"))
                    breaches << source.mid(root.size() + 1) + ": " + include;
            }
        }
    }
    QCOMPARE(breaches, QStringList());
}

void TstLayers::wordsOfOnePlatformStayInItsFiles()
{
    static const QRegularExpression platformWord("\\b(Q_OS_\\w+|_WIN32|__linux__)\\b");
    QStringList breaches;
    for (const char *folder : { "Manager", "QtCommon", "Shared" }) {
        for (const QString &source : sourcesIn(folder)) {
            if (contentOf(source).contains(platformWord))
                breaches << source.mid(root.size() + 1);
        }
    }
    // The one place where the two classes of the platform meet.
    QCOMPARE(breaches, QStringList { "QtCommon/platform/os.h" });
}

VELMOR_TEST(TstLayers)
#include "tst_layers.moc"
