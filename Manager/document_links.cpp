#include "document_links.h"

QString documentLink(const QString &path, const QString &title)
{
    // The template has the slash of an absolute path; a path that brings its own gives it up.
    const QString relative = path.startsWith('/') ? path.mid(1) : path;
    return QString("<a href='file:///%1' style='color:#2b9eeb;'>%2</a>").arg(relative, title);
}
