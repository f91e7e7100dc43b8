#include "reader_box.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QPushButton>
#include <QStyledItemDelegate>

namespace {

// In pixels.
constexpr int besideText = 30; // in the box
constexpr int besideRow = 40; // in the list, a scroll bar included
constexpr int leastList = 280;
constexpr int rightMargin = 24; // of the row
constexpr int sign = 34; // with the gap behind it
constexpr int beforeBox = 110; // margin, caption and gaps
constexpr int wholeRow = 900; // as it will be, also before the window is laid out

} // namespace

void prepareReaderBox(QComboBox *box)
{
    box->view()->setAccessibleName(box->accessibleName());
    // The toolkit's own delegate of a box takes no notice of a style sheet's rows.
    box->setItemDelegate(new QStyledItemDelegate(box));
}

void fitReaderBox(QComboBox *box, QPushButton *words)
{
    box->ensurePolished();
    const QFontMetrics metrics(box->font());
    const int row = qMax(box->parentWidget()->width(), wholeRow) - beforeBox - rightMargin;
    box->setFixedWidth(qMin(metrics.horizontalAdvance(box->currentText()) + besideText, row - sign));
    int longest = leastList;
    for (int i = 0; i < box->count(); ++i)
        longest = qMax(longest, metrics.horizontalAdvance(box->itemText(i)) + besideRow);
    box->view()->setMinimumWidth(qMin(longest, row));
    words->setVisible(box->width() + sign + words->sizeHint().width() <= row);
}
