#include "base/own_environment.h"

#include <QString>

namespace {

constexpr char temporaryFolder[] = "TMPDIR";

// What each variable was before.
std::map<QByteArray, std::optional<QByteArray>> &former()
{
    static std::map<QByteArray, std::optional<QByteArray>> values;
    return values;
}

void put(const QByteArray &name, const std::optional<QByteArray> &value)
{
    if (value)
        qputenv(name.constData(), *value);
    else
        qunsetenv(name.constData());
}

} // namespace

void OwnEnvironment::set(const char *name, const QByteArray &value)
{
    const bool isSet = qEnvironmentVariableIsSet(name);
    former().try_emplace(name, isSet ? std::make_optional(qgetenv(name)) : std::nullopt);
    qputenv(name, value);
}

void OwnEnvironment::restore(const char *name)
{
    const auto row = former().find(name);
    if (row == former().end())
        return;
    put(row->first, row->second);
    former().erase(row);
}

QProcessEnvironment OwnEnvironment::forChild(Child child)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : former()) {
        const QString variable = QString::fromLatin1(name);
        if (child == Child::Sibling && name == temporaryFolder)
            continue;
        if (value)
            environment.insert(variable, QString::fromLocal8Bit(*value));
        else
            environment.remove(variable);
    }
    return environment;
}

OwnEnvironment::Lent::Lent()
{
    for (const auto &[name, value] : former()) {
        own[name] = qgetenv(name.constData());
        put(name, value);
    }
}

OwnEnvironment::Lent::~Lent()
{
    for (const auto &[name, value] : own)
        qputenv(name.constData(), value);
}
