#pragma once

#include <QBoxLayout>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>

// Pieces of which the pages are made, with the classes that the program's style sheet knows.
namespace PanelParts {

inline constexpr int gap = 16;
inline constexpr int rowGap = 8;
inline constexpr int rowHeight = 36;

inline QVBoxLayout *column(QWidget *parent, int margin = 0, int spacing = gap)
{
    auto *layout = new QVBoxLayout(parent);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    return layout;
}

inline QFrame *card()
{
    auto *frame = new QFrame;
    frame->setProperty("class", "card");
    return frame;
}

inline QLabel *label(const QString &text, const char *styleClass, const QString &name = {})
{
    auto *made = new QLabel(text);
    made->setProperty("class", styleClass);
    made->setObjectName(name);
    made->setWordWrap(true);
    return made;
}
inline QLabel *heading(const QString &text, const QString &name = {})
{
    return label(text, "heading", name);
}
inline QLabel *note(const QString &text, const QString &name = {})
{
    return label(text, "note", name);
}

inline QPushButton *button(const QString &text, const QString &name, const char *styleClass = "cardButton")
{
    auto *made = new QPushButton(text);
    made->setProperty("class", styleClass);
    made->setObjectName(name);
    made->setMinimumHeight(rowHeight);
    made->setAutoDefault(false);
    return made;
}

// On some systems the toolkit tells the chosen line as a box's name, so what the box is for is its description too.
inline QComboBox *choice(const QString &name, const QString &accessibleName)
{
    auto *made = new QComboBox;
    made->setObjectName(name);
    made->setAccessibleName(accessibleName);
    made->setAccessibleDescription(accessibleName);
    made->setMinimumHeight(rowHeight);
    return made;
}

} // namespace PanelParts
