// velmor-specimens FOLDER: makes the specimen cards, one folder a card.
#include <cstdio>

#include <QCoreApplication>
#include <QDir>

#include "simworld/card_file.h"
#include "specimens/cards.h"
#include "specimens/fixed_random.h"

int main(int argc, char *argv[])
{
    // It draws on pictures only and writes no text, so it needs no screen; the application is for the JPEG plug-in.
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fprintf(stderr, "velmor-specimens FOLDER\n");
        return 2;
    }
    specimen::fixRandomNumbers();
    std::string error;
    for (const sim::Card &card : specimen::makeCards(error)) {
        const std::string folder =
            QDir(arguments.at(1)).absoluteFilePath(QString::fromStdString(card.name)).toStdString();
        QDir(QString::fromStdString(folder)).removeRecursively();
        if (!sim::writeCard(folder, card, error))
            break;
    }
    if (error.empty())
        return 0;
    std::fprintf(stderr, "velmor-specimens: %s\n", error.c_str());
    return 1;
}
