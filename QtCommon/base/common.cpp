#include "base/common.h"

#include "base/platform.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextCodec>

namespace Common {

QString productName()
{
    return "velmor";
}

QString installRootOf(const QString &executable)
{
    const int cut = qMax(executable.lastIndexOf('\\'), executable.lastIndexOf('/'));
    const QString folder = executable.left(cut).replace('\\', '/');
    return sliceText(folder, "$/^", folder);
}

QString installRoot()
{
    return installRootOf(Platform::executablePath());
}

bool isDev()
{
    static int state = -1;
    if (state < 0)
        state = QFile::exists(installRoot() + "/Makefile") ? 1 : 0;
    return state == 1;
}

QString foldPolish(const QString &text)
{
    static const QString accented = QStringLiteral("ęĘóÓąĄśŚłŁżŻźŹćĆńŃ");
    static const QString plain = QStringLiteral("eEoOaAsSlLzZzZcCnN");
    QString folded = text;
    for (QChar &letter : folded) {
        const int index = accented.indexOf(letter);
        if (index >= 0)
            letter = plain.at(index);
    }
    return folded;
}

QString plainText(const QString &text)
{
    static const QRegularExpression markup("<[^>]*>");
    return QString(text).remove(markup).replace("CAN", "kan");
}

QString chopSuffix(const QString &text, const QString &suffix)
{
    return text.endsWith(suffix) ? text.left(text.size() - suffix.size()) : text;
}

QString readerName(const QString &text)
{
    const int cut = text.indexOf(" #");
    return cut < 0 ? text : text.left(cut);
}

bool isPrintableUtf8(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    const QString text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0)
        return false;
    const int tested = qMin(text.size(), bytes.size());
    for (int i = 0; i < tested; ++i) {
        if (!QChar(static_cast<uchar>(bytes.at(i))).isPrint())
            return false;
    }
    return true;
}

} // namespace Common
