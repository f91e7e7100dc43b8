#include "support/flow.h"

// Photo and drawings on a screen of twice the density, whose letters are larger still: as large as their places, in the
// screen's own pixels.
class TestWindowHomeDense : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void photoIsSharpAndFillsItsPlace_data()
    {
        QTest::addColumn<QByteArray>("place");
        QTest::newRow("home page") << QByteArray("lPhoto");
        QTest::newRow("personal data") << QByteArray("lPhotoLarge");
    }
    void photoIsSharpAndFillsItsPlace()
    {
        QFETCH(QByteArray, place);
        Flow flow;
        QVERIFY(flow.showCard("anna"));
        QTRY_VERIFY(flow.photoArrived());
        if (place == "lPhotoLarge")
            flow.button("bArrowICAO")->click();
        const QLabel *label = flow.label(place.constData());
        QVERIFY(label->isVisible());
        QCOMPARE(label->devicePixelRatioF(), 2.0);

        const QPixmap picture = label->pixmap(Qt::ReturnByValue);

        QCOMPARE(picture.devicePixelRatio(), 2.0);
        // It keeps its shape, so one side is that of the place and the other may reach beyond.
        const QSize size = picture.size() / 2;
        QVERIFY(size.width() >= label->width() && size.height() >= label->height());
        QVERIFY(size.width() == label->width() || size.height() == label->height());
    }

    // As they stand in the form; the size of the letters is no matter of theirs.
    void drawingsAreSharpAndKeepTheirSize_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("file");
        QTest::newRow("footer") << QByteArray("lfooter") << "footer";
        QTest::newRow("sign") << QByteArray("lostrel") << "ostrel";
        QTest::newRow("no connection") << QByteArray("lno_connection") << "no_connection";
        QTest::newRow("keypad, change") << QByteArray("lpinpad") << "pinpad";
        QTest::newRow("keypad, unblock") << QByteArray("lPinPadImg_2") << "pinpad";
        QTest::newRow("change of the card") << QByteArray("lchange_card") << "change_card";
    }
    void drawingsAreSharpAndKeepTheirSize()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, file);
        Flow flow;
        flow.openWindow();

        const QPixmap picture = flow.label(name.constData())->pixmap(Qt::ReturnByValue);

        QCOMPARE(picture.devicePixelRatio(), 2.0);
        QCOMPARE(picture.size() / 2, QPixmap(":/images/" + file + ".svg").size());
    }
};

int main(int argc, char *argv[])
{
    qputenv("QT_SCALE_FACTOR", "2");
    qputenv("QT_FONT_DPI", "144");
    TestHome home;
    QApplication application(argc, argv);
    TestWindowHomeDense test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window_home_dense.moc"
