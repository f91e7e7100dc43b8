#include "field_style.h"

#include <QLineEdit>

void setFieldStyle(QLineEdit *lineEdit, bool good)
{
    static const QString border =
        "border-style: none;\nborder-radius:10px;padding: 10px;font-size: 16px;font-family: Poppins;";
    static const QString goodColours = "background: rgba(212, 214, 215, 70%);";
    static const QString badColours = "background:rgb(234,4,73,30%); color: rgb(234,4,73);";
    lineEdit->setStyleSheet(border + (good ? goodColours : badColours));
}
