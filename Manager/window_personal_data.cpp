#include "window.h"

// The extended view of the holder's data: the photo and up to fourteen rows in three blocks. A row without a value is
// hidden and what stands below it closes up. Nothing is read from the card here; the page is built anew at each entry.

#include "personal_data.h"
#include "ui_window.h"

namespace {

// The first of these lines that can be seen decides, so they go from the nearest up.
int topBelow(std::initializer_list<const QFrame *> lines)
{
    for (const QFrame *line : lines) {
        if (line->isVisible())
            return PersonalData::topBelowLine(line->y());
    }
    return PersonalData::topOfPage;
}

void placeBlock(QFrame *block, int rowCount)
{
    if (rowCount > 0)
        block->setFixedHeight(PersonalData::blockHeight(rowCount));
    block->setVisible(rowCount > 0);
}

void placeLine(QFrame *line, const QFrame *block, int rowCount)
{
    if (rowCount > 0)
        line->move(line->x(), PersonalData::lineBelowBlock(block->y(), block->height()));
    line->setVisible(rowCount > 0);
}

} // namespace

void Window::moveToAllDataPage()
{
    // Two blanks on each side, which is meant.
    enterPage(ui->pageAllData, "Dane  z  velmor");
    ui->bWroc->show();
    if (card.photo.isNull())
        ui->lPhotoLarge->setStyleSheet(ui->lPhotoLarge->styleSheet() + " border: 1px solid rgb(76,83,88);");
    showPhotoIn(ui->lPhotoLarge);
    showPersonalData();
}

void Window::showPersonalData()
{
    const QVector<PersonalData::Row> rows =
        PersonalData::rows(card.data, { ui->lCommonNameVal->text(), ui->lsurnameVal->text(), ui->lNumIdVal->text() });
    QFrame *focus = nullptr;
    // Answers how many rows of the block are shown. The first one of the page gets the focus.
    const auto fill = [&](PersonalData::Block block) {
        int shown = 0;
        for (const PersonalData::Row &row : rows) {
            if (row.block != block)
                continue;
            auto *frame = ui->pageAllData->findChild<QFrame *>(row.frame);
            frame->setVisible(!row.value.isEmpty());
            if (row.value.isEmpty())
                continue;
            auto *label = frame->findChild<QLabel *>(row.label);
            if (row.elided)
                setLabelElided(label, row.value);
            else
                label->setText(row.value);
            frame->setAccessibleName(row.accessibleName());
            ++shown;
            if (!focus)
                focus = frame;
        }
        return shown;
    };

    const int first = fill(PersonalData::First);
    placeBlock(ui->personalData_2, first);
    placeLine(ui->greyLine_5, ui->personalData_2, first);

    ui->personalData_3->move(ui->personalData_3->x(), topBelow({ ui->greyLine_5 }));
    const int second = fill(PersonalData::Second);
    placeBlock(ui->personalData_3, second);
    placeLine(ui->greyLine_6, ui->personalData_3, second);

    ui->personalData_4->move(ui->personalData_4->x(), topBelow({ ui->greyLine_6, ui->greyLine_5 }));
    const int third = fill(PersonalData::Third);
    if (focus)
        focus->setFocus();
    if (third > 0)
        placeBlock(ui->personalData_4, third);
    else
        ui->personalData_3->hide(); // the middle one, and the last stays as it is: known and kept
}
