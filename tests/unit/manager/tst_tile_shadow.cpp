#include "gui/gui_base.h"
#include "shared.h"
#include "tile_shadow.h"
#include "ui_window.h"

#include "base/settings.h"
#include "gui/box_shadow.h"
#include "support/testmain.h"

#include <QFrame>
#include <QGraphicsDropShadowEffect>
#include <QMainWindow>

#include <functional>

// The shadow of a tile.
class TestTileShadow : public QObject {
    Q_OBJECT

private slots:
    void tileHasTheShadowThatIsAskedFor()
    {
        QWidget tile;
        addTileShadow(&tile, 7, 3);

        const auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(tile.graphicsEffect());
        QVERIFY(shadow);
        QCOMPARE(shadow->blurRadius(), 7.0);
        QCOMPARE(shadow->offset(), QPointF(3, 3));
        QCOMPARE(shadow->color(), QColor(186, 187, 188));
    }

    void nothingElseInTheWindowHasOne()
    {
        const QMap<QString, QPair<qreal, qreal>> wanted {
            { "widgetBlurAuthen", { 20, 1 } }, { "widgetBlurAuthor", { 20, 1 } }, { "widgetBlurQualified", { 20, 1 } },
            { "presenceCert", { 20, 1 } },     { "bChangePin", { 10, 1 } },       { "bCancel", { 10, 1 } },
            { "bChangePinPuk", { 10, 1 } },    { "bCancel_2", { 10, 1 } },        { "bWrocPin", { 10, 1 } },
            { "bWrocPuk", { 10, 1 } },         { "widgetLargePhoto", { 40, 3 } },
        };
        QMainWindow window;
        Ui::Window ui;
        ui.setupUi(&window);

        addWindowShadows(ui);

        QMap<QString, QPair<qreal, qreal>> found;
        for (const QWidget *widget : window.findChildren<QWidget *>()) {
            if (const auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(widget->graphicsEffect()))
                found[widget->objectName()] = { shadow->blurRadius(), shadow->offset().x() };
        }
        QCOMPARE(found, wanted);
    }

    // On a dark ground a shadow is a smear.
    void onlyTheLightThemeHasShadows()
    {
        Shared::loadResources();
        for (const char *theme : { "dark", "highContrast", "light" }) {
            Settings::instance()->setValue("theme", theme);
            GuiBase::instance()->load();
            QWidget tile;
            addTileShadow(&tile, 7, 3);
            QCOMPARE(tile.graphicsEffect()->isEnabled(), GuiBase::instance()->theme() == "light");
        }
        QCOMPARE(GuiBase::instance()->theme(), QString("light"));
    }

    void shadowGoesRoundTheCornersOfTheTile()
    {
        const auto picture = [](const std::function<void(QWidget *)> &addShadow) {
            QWidget ground;
            ground.resize(160, 120);
            QFrame tile(&ground);
            tile.setStyleSheet("background: white; border-radius: 12px;");
            tile.setGeometry(40, 40, 80, 40);
            addShadow(&tile);
            return ground.grab().toImage();
        };
        const QImage wanted = picture([](QWidget *tile) {
            auto *shadow = new BoxShadow(tile, 12);
            shadow->setColor(QColor(186, 187, 188));
            shadow->setBlurRadius(15);
            shadow->setOffset(1, 1);
            tile->setGraphicsEffect(shadow);
        });
        QVERIFY(picture([](QWidget *tile) { addTileShadow(tile, 15, 1); }) == wanted);
    }
};

VELMOR_TEST(TestTileShadow)
#include "tst_tile_shadow.moc"
