#include "support/dg_builder.h"
#include "support/testmain.h"

#include "card/card-parser.h"

// The picture in DG2.
class TstCardParserPhoto : public QObject {
    Q_OBJECT

private slots:
    void pictureRunsFromItsMarkerToTheOuterEnd();
    void firstByteIsNotLookedAt();
    void onlyTheTwoByteLengthIsRead();
    void firstMarkerInTheFileWins();
    void markerMayStandInTheLength();
    void bytesBehindTheOuterEndAreLeftOut();
    void lengthBytesAreUnsigned();
    void outerEndBeforeTheMarkerGivesNoPicture();
    void outerEndBehindTheFileGivesWhatIsThere();
    void shortFilesGiveNoPicture();
    void noGroupIsLogged();
    void otherLengthFormIsLogged();
    void missingMarkerIsLoggedAsLoaded();
    void goodPictureLogsItsSizeOnly();
};

namespace {

using namespace DgBuilder;

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

QByteArray photoIn(const QByteArray &file)
{
    DGParser parser;
    parser.loadDg("DG2", file);
    return parser.photo();
}

QStringList logOfPhoto(const QByteArray &file)
{
    DGParser parser;
    parser.loadDg("DG2", file);
    const LogCatcher log;
    parser.photo();
    return log.lines();
}

} // namespace

void TstCardParserPhoto::pictureRunsFromItsMarkerToTheOuterEnd()
{
    for (const int size : { 0, 1, 100, 255, 256, 20000, 65000 }) {
        Dg2 dg2;
        dg2.picture = jpeg(size);

        QCOMPARE(photoIn(dg2.file()), dg2.picture);
    }
}

void TstCardParserPhoto::firstByteIsNotLookedAt()
{
    QByteArray file = Dg2().file();
    for (int value = 0; value <= 0xFF; ++value) {
        file[0] = static_cast<char>(value);

        QCOMPARE(photoIn(file), jpeg());
    }
}

void TstCardParserPhoto::onlyTheTwoByteLengthIsRead()
{
    QByteArray file = Dg2().file();
    for (int value = 0; value <= 0xFF; ++value) {
        file[1] = static_cast<char>(value);

        QCOMPARE(photoIn(file), value == 0x82 ? jpeg() : QByteArray());
    }
}

void TstCardParserPhoto::firstMarkerInTheFileWins()
{
    Dg2 dg2;
    dg2.headers = hex("1122FFD83344");

    QCOMPARE(photoIn(dg2.file()), hex("FFD83344") + jpeg());
}

void TstCardParserPhoto::markerMayStandInTheLength()
{
    // 65496 bytes are announced, and their two length bytes are the marker.
    QCOMPARE(photoIn(hex("7582FFD8010203")), hex("FFD8010203"));
}

void TstCardParserPhoto::bytesBehindTheOuterEndAreLeftOut()
{
    QCOMPARE(photoIn(Dg2().file() + "behind"), jpeg());
}

void TstCardParserPhoto::lengthBytesAreUnsigned()
{
    // 0x80FF bytes: each of the two length bytes would be negative as a signed one.
    Dg2 dg2;
    dg2.picture = jpeg(0x80FF - dg2.headers.size() - 4);
    QCOMPARE(dg2.file().mid(2, 2), hex("80FF"));

    QCOMPARE(photoIn(dg2.file() + "behind"), dg2.picture);
}

void TstCardParserPhoto::outerEndBeforeTheMarkerGivesNoPicture()
{
    QCOMPARE(photoIn(hex("75820000") + "headers" + jpeg()), QByteArray());
    QCOMPARE(photoIn(hex("75820006") + "headers" + jpeg()), QByteArray());
    QCOMPARE(photoIn(hex("75820007") + "headers" + jpeg()), QByteArray());
    QCOMPARE(photoIn(hex("75820008") + "headers" + jpeg()), hex("FF"));
}

void TstCardParserPhoto::outerEndBehindTheFileGivesWhatIsThere()
{
    QCOMPARE(photoIn(hex("7582FFFF") + "headers" + jpeg()), jpeg());
    QCOMPARE(photoIn(Dg2().file().chopped(10)), jpeg().chopped(10));
}

void TstCardParserPhoto::shortFilesGiveNoPicture()
{
    for (const char *file : { "75", "7582", "758200", "7582FF", "75820002", "75820002FF", "FFD8", "FF82FFD7" })
        QCOMPARE(photoIn(hex(file)), QByteArray());
    QCOMPARE(photoIn(hex("75820002FFD8")), hex("FFD8"));
}

void TstCardParserPhoto::noGroupIsLogged()
{
    QCOMPARE(logOfPhoto(QByteArray()), QStringList({ "Byte array of DG2 is empty" }));
}

void TstCardParserPhoto::otherLengthFormIsLogged()
{
    QCOMPARE(logOfPhoto(hex("758106FFD801020304")), QStringList({ "Photo size: 9", "actual size is less than 0" }));
    QCOMPARE(logOfPhoto(hex("75")), QStringList({ "Photo size: 1", "actual size is less than 0" }));
}

void TstCardParserPhoto::missingMarkerIsLoggedAsLoaded()
{
    QCOMPARE(logOfPhoto(hex("75820004FFD7D8FF")), QStringList({ "Photo size: 8", "photo loaded" }));
}

void TstCardParserPhoto::goodPictureLogsItsSizeOnly()
{
    QCOMPARE(logOfPhoto(hex("75820004FFD8FFD9")), QStringList({ "Photo size: 8" }));
}

VELMOR_TEST(TstCardParserPhoto)
#include "tst_card_parser_photo.moc"
