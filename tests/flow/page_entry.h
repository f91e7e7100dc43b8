#pragma once

#include "support/pin_flow.h"

// A page of the footer that is entered by the keyboard while a PIN is being typed.
class PageEntry {
public:
    std::unique_ptr<PinFlow> flow;
    QStringList reached; // who had the focus since the button was pressed, one after the other

    void typeAPin()
    {
        flow = std::make_unique<PinFlow>();
        flow->openWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4826");
        QCOMPARE(typed(), QString("123448264826"));
    }

    void press(const char *button)
    {
        flow->button(button)->setFocus();
        const auto watch = QObject::connect(qApp, &QApplication::focusChanged, [this](QWidget *, QWidget *now) {
            if (now)
                reached << now->objectName();
        });
        QTest::keyClick(flow->button(button), Qt::Key_Space);
        QObject::disconnect(watch);
    }

    // Nothing of the page with the PIN is left, and the reader's row is hidden. The toolkit would hand the focus of the
    // button, which goes off on the way, on to what comes next: a screen reader would tell of that before the page.
    void verifyItIs(const char *page, const char *title, const char *focus) const
    {
        QCOMPARE(flow->page(), QString(page));
        QCOMPARE(flow->title(), QString(title));
        QCOMPARE(flow->subtitle(), QString());
        QCOMPARE(typed(), QString());
        QVERIFY(flow->widget("frameReaders")->isHidden());
        QVERIFY(!flow->readersBox()->isEnabled());
        QVERIFY(!flow->widget("bWroc")->isHidden());
        QCOMPARE(reached, QStringList { QString(focus) });
    }

private:
    QString typed() const
    {
        QString all;
        for (const char *name : { "lineActualPin", "lineNewPin", "lineRepeatPin" })
            all += flow->field(name)->text();
        return all;
    }
};
