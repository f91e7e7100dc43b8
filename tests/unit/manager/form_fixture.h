#pragma once

#include "support/testmain.h"

#include "shared.h"
#include "ui_window.h"

#include <QMainWindow>

#include <memory>

// The form of the window alone, without the code that fills it.
class FormFixture {
protected:
    void setUpForm()
    {
        Shared::loadResources();
        window = std::make_unique<QMainWindow>();
        ui.setupUi(window.get());
    }

    template <typename T>
    T *find(const QString &name) const
    {
        return window->findChild<T *>(name);
    }

    std::unique_ptr<QMainWindow> window;
    Ui::Window ui;
};
