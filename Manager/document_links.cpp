#include "document_links.h"

namespace {

// What would end the address, or be taken for a mark of it or of the rich text around it. All else stays as it is.
QString encoded(const QString &path)
{
    QString result;
    for (const QChar letter : path) {
        if (QStringLiteral("#?%'&<").contains(letter))
            result += '%' + QString::number(letter.unicode(), 16).toUpper();
        else
            result += letter;
    }
    return result;
}

} // namespace

QString inLinkColour(QString html, const QColor &colour)
{
    return html.replace("<a href", QString("<a style=\"color:%1;\" href").arg(colour.name()));
}

QString documentLink(const QString &path, const QString &title)
{
    // The template has the slash of an absolute path; a path that brings its own gives it up.
    const QString relative = path.startsWith('/') ? path.mid(1) : path;
    return QString("<a href='file:///%1' style='color:#2b9eeb;'>%2</a>").arg(encoded(relative), title);
}
