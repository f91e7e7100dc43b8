#include "document_links.h"

#include "support/testmain.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QUrl>

// Links to the installed documents, and the colour of links.
class TestDocumentLinks : public QObject {
    Q_OBJECT

private slots:
    void everyLinkOfATextGetsTheColour()
    {
        QCOMPARE(inLinkColour("<p><a href='x'>1</a> <a href=\"y\">2</a></p>", QColor(0x2C, 0x9E, 0xEB)),
                 QString("<p><a style=\"color:#2c9eeb;\" href='x'>1</a> "
                         "<a style=\"color:#2c9eeb;\" href=\"y\">2</a></p>"));
    }

    void documentLinkHasOneSlashBeforeThePath()
    {
        QCOMPARE(documentLink("/opt/velmor/statics/instrukcja.html", "Instrukcja"),
                 QString("<a href='file:///opt/velmor/statics/instrukcja.html' style='color:#2b9eeb;'>Instrukcja</a>"));
        QCOMPARE(
            documentLink("C:/velmor/Licenses/license.html", "Umowa  Licencyjna"),
            QString("<a href='file:///C:/velmor/Licenses/license.html' style='color:#2b9eeb;'>Umowa  Licencyjna</a>"));
    }

    void documentLinkLeadsIntoAFolderOfAnyName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("address");
        QTest::newRow("number sign") << "a#b"
                                     << "a%23b";
        QTest::newRow("question mark") << "a?b"
                                       << "a%3Fb";
        QTest::newRow("percent sign") << "100%"
                                      << "100%25";
        QTest::newRow("what looks encoded") << "a%41b"
                                            << "a%2541b";
        QTest::newRow("what looks like a place of the template") << "%2"
                                                                 << "%252";
        QTest::newRow("apostrophe") << "it's"
                                    << "it%27s";
        QTest::newRow("entity") << "R&amp;D"
                                << "R%26amp;D";
        QTest::newRow("markup") << "<b>"
                                << "%3Cb>";
        QTest::newRow("plain") << "Łódź (x86) a.b-c_d~e+f"
                               << "Łódź (x86) a.b-c_d~e+f";
    }

    void documentLinkLeadsIntoAFolderOfAnyName()
    {
        QFETCH(QString, name);
        QFETCH(QString, address);
        const QString path = "/opt/" + name + "/x.html";

        const QString link = documentLink(path, "T");

        QCOMPARE(link, "<a href='file:///opt/" + address + "/x.html' style='color:#2b9eeb;'>T</a>");
        QTextDocument shown;
        shown.setHtml(link);
        QCOMPARE(shown.toPlainText(), QString("T"));
        const QTextCharFormat format = shown.begin().begin().fragment().charFormat();
        QCOMPARE(QUrl(format.anchorHref()).toLocalFile(), path);
    }
};

VELMOR_TEST(TestDocumentLinks)
#include "tst_document_links.moc"
