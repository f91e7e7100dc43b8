#include "contact_sheet.h"

#include <QFileInfo>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <QtMath>

#include <cmath>

namespace {

constexpr int leastColumns = 4;
// In pixels.
constexpr QSize cell(480, 400);
constexpr int captionHeight = 28;
constexpr int gap = 16;
const QColor paper(0xF4, 0xF5, 0xF6);
const QColor ink(0x2B, 0x30, 0x34);

bool drawCell(QPainter &painter, const QRect &place, const QString &path)
{
    QImage picture(path);
    if (picture.isNull())
        return false;
    picture.setDevicePixelRatio(1);
    const QRect room = place.adjusted(0, 0, 0, -captionHeight);
    // Dialogs keep their size, for they would be blown up.
    const QSize size = picture.size().boundedTo(picture.size().scaled(room.size(), Qt::KeepAspectRatio));
    QRect target(QPoint(), size);
    target.moveCenter(room.center());
    painter.drawImage(target, picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    painter.drawText(place.adjusted(0, room.height(), 0, 0), Qt::AlignCenter, QFileInfo(path).completeBaseName());
    return true;
}

} // namespace

bool saveContactSheet(const QStringList &pictures, const QString &path)
{
    // About as many as rows, so that the sheet can be looked at as a whole.
    const int columns = qMax(leastColumns, qCeil(std::sqrt(pictures.size())));
    const int rows = (pictures.size() + columns - 1) / columns;
    if (rows == 0)
        return false;
    QImage sheet(columns * (cell.width() + gap) + gap, rows * (cell.height() + gap) + gap, QImage::Format_RGB32);
    sheet.fill(paper);
    QPainter painter(&sheet);
    QFont font("Poppins");
    font.setPixelSize(15);
    painter.setFont(font);
    painter.setPen(ink);
    bool done = true;
    for (int i = 0; i < pictures.size(); ++i) {
        const QPoint corner(gap + (i % columns) * (cell.width() + gap), gap + (i / columns) * (cell.height() + gap));
        done = drawCell(painter, QRect(corner, cell), pictures[i]) && done;
    }
    painter.end();
    return done && sheet.save(path);
}
