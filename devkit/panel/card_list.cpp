#include "panel/card_list.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyledItemDelegate>

namespace {

constexpr QSize portraitSize(45, 60);
constexpr int margin = 8;
constexpr int gap = 12;
constexpr int barWidth = 4;
constexpr qreal radius = 8;

class CardPainter : public QStyledItemDelegate {
public:
    explicit CardPainter(CardList *cards) : QStyledItemDelegate(cards), list(*cards) { }

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return { 2 * margin + portraitSize.width(), 2 * margin + portraitSize.height() };
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        painter->save();
        painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        const bool inserted = index.data(CardList::Inserted).toBool();
        const QRect row = option.rect.adjusted(1, 1, -1, -1);
        drawGround(*painter, row, inserted, (option.state & QStyle::State_HasFocus) != 0);
        const QRect picture(row.topLeft() + QPoint(margin + gap, margin - 1), portraitSize);
        drawPortrait(*painter, picture, index.data(Qt::DecorationRole).value<QImage>());
        const int left = picture.right() + 1 + gap;
        drawWords(*painter, QRect(left, picture.top(), row.right() - margin - left, picture.height()), index);
        painter->restore();
    }

private:
    void drawGround(QPainter &painter, const QRect &row, bool inserted, bool focused) const
    {
        const QRectF box = QRectF(row).adjusted(1, 1, -1, -1);
        painter.setPen(focused ? QPen(list.focusColour, 2) : QPen(Qt::NoPen));
        painter.setBrush(inserted ? QBrush(list.groundColour) : QBrush(Qt::NoBrush));
        painter.drawRoundedRect(box, radius, radius);
        painter.setPen(Qt::NoPen);
        if (inserted) {
            painter.setBrush(list.insertedColour);
            painter.drawRoundedRect(
                QRectF(row.left() + margin, row.top() + margin, barWidth, row.height() - 2 * margin), barWidth / 2.0,
                barWidth / 2.0);
        }
    }

    // A card without one has an empty frame.
    void drawPortrait(QPainter &painter, const QRect &place, const QImage &portrait) const
    {
        QPainterPath rounded;
        rounded.addRoundedRect(place, 6, 6);
        if (!portrait.isNull()) {
            painter.save();
            painter.setClipPath(rounded);
            painter.drawImage(place, portrait);
            painter.restore();
        }
        painter.strokePath(rounded, QPen(list.lineColour, 1));
    }

    void drawWords(QPainter &painter, const QRect &place, const QModelIndex &index) const
    {
        QFont font = list.font();
        font.setPixelSize(14);
        font.setWeight(QFont::Medium);
        painter.setFont(font);
        painter.setPen(list.textColour);
        const QFontMetrics metrics(font);
        QFont small = list.font();
        small.setPixelSize(12);
        const QString name = index.data(CardList::Name).toString();
        const int room = place.width() - gap - QFontMetrics(small).horizontalAdvance(name);
        const QRect line(place.left(), place.top(), place.width(), metrics.height());
        painter.drawText(line, Qt::AlignVCenter,
                         metrics.elidedText(index.data(CardList::Holder).toString(), Qt::ElideRight, room));
        painter.setFont(small);
        painter.setPen(list.secondaryColour);
        painter.drawText(line, Qt::AlignVCenter | Qt::AlignRight, name);
        QString words = index.data(CardList::State).toString();
        if (index.data(CardList::Inserted).toBool())
            words.prepend("W czytniku. ");
        painter.drawText(place.adjusted(0, metrics.height() + 1, 0, 0), Qt::AlignTop | Qt::TextWordWrap, words);
    }

    CardList &list;
};

} // namespace

CardList::CardList(QWidget *parent) : SpokenList(parent)
{
    setItemDelegate(new CardPainter(this));
    setMouseTracking(true);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setUniformItemSizes(true);
    connect(this, &QListWidget::itemClicked, this,
            [this](QListWidgetItem *item) { emit toggled(item->data(Name).toString()); });
}

void CardList::addCard(const QString &name, const QString &holder, const QImage &portrait)
{
    auto *item = new QListWidgetItem(this);
    item->setData(Name, name);
    item->setData(Holder, holder);
    item->setData(Qt::DecorationRole, portrait);
}

void CardList::setState(QListWidgetItem *item, const QString &words, bool inserted)
{
    const bool hasPortrait = !item->data(Qt::DecorationRole).value<QImage>().isNull();
    const QString all = hasPortrait ? words : words + " Bez zdjęcia.";
    item->setData(State, all);
    item->setData(Inserted, inserted);
    item->setData(Qt::AccessibleTextRole,
                  QString("%1. %2%3").arg(item->data(Holder).toString(), inserted ? "W czytniku. " : "", all));
}

void CardList::keyPressEvent(QKeyEvent *event)
{
    const bool isToggle =
        event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isToggle || !currentItem()) {
        SpokenList::keyPressEvent(event);
        return;
    }
    if (!event->isAutoRepeat())
        emit toggled(currentItem()->data(Name).toString());
}
