#include "support/flow.h"

// The photo on a screen of twice the density: as large as its place, in the screen's own pixels.
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
};

int main(int argc, char *argv[])
{
    qputenv("QT_SCALE_FACTOR", "2");
    TestHome home;
    QApplication application(argc, argv);
    TestWindowHomeDense test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window_home_dense.moc"
