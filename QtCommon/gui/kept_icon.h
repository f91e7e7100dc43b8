#pragma once

#include <QIcon>

// The icon of a file, the same one each time. The toolkit keeps every picture that it has drawn of an SVG, under the
// icon that it was drawn for: new icons of one file would fill its store of ten megabytes with the same picture.
QIcon keptIcon(const QString &path);
