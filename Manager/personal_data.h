#pragma once

#include <QString>
#include <QVector>

class DGParser;

// What the page of personal data shows, and where: rows in three blocks that close up around what is missing, with a
// line after the first two. No widgets here. Sizes are pixels at 96 dots per inch.
namespace PersonalData {

// What the page takes over from the home page, as it stands there: a surname that was cut there stays cut.
struct HomeTexts {
    QString names;
    QString surname;
    QString documentNumber;
};

enum Block { First, Second, Third };

struct Row {
    Block block;
    // Object names in the form: of the row itself, and of the label with its value.
    const char *frame;
    const char *label;
    QString value; // a row without one is hidden
    bool elided; // cut to the label's width
    QString caption;
    QString spokenValue = {}; // where a screen reader is told something else

    QString accessibleName() const { return caption + (spokenValue.isEmpty() ? value : spokenValue); }
};

// All rows, in the order in which they are filled.
QVector<Row> rows(const DGParser &parser, const HomeTexts &home);

// The word for a screen reader. It knows the letters only, while the page shows a word by then: a woman's row is
// spoken as "mężczyzna". That is known and kept.
QString spokenSex(const QString &shown);

// Where a block begins that no line stands above.
constexpr int topOfPage = 30;

int blockHeight(int rowCount);
int lineBelowBlock(int top, int height);
int topBelowLine(int line);

} // namespace PersonalData
