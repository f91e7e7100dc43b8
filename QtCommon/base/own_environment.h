#pragma once

#include <QByteArray>
#include <QProcessEnvironment>

#include <map>
#include <optional>

// Variables of the environment that the program sets for itself alone: they steer its own toolkit, and another program
// that got them would be drawn too large, without fonts, or fill a folder that is not its own.
namespace OwnEnvironment {

void set(const char *name, const QByteArray &value);
// As it was before the first `set`.
void restore(const char *name);

enum class Child {
    Sibling, // shares the folder of the segments
    Stranger
};

// The environment for a program that this one starts.
QProcessEnvironment forChild(Child child);

// While it lives, the environment is that for a stranger. For what starts programs without letting anyone choose their
// environment.
class Lent {
public:
    Lent();
    ~Lent();
    Lent(const Lent &) = delete;
    Lent &operator=(const Lent &) = delete;

private:
    std::map<QByteArray, QByteArray> own;
};

} // namespace OwnEnvironment
