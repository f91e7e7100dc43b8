#pragma once

#include "card/card_results.h"
#include "support/flow.h"
#include "support/pin_results.h"

#include <QLineEdit>
#include <QSignalSpy>

// A user before the PIN pages: the card is on the home page, and what is done is done by keys and clicks.
class PinFlow : public Flow {
public:
    static constexpr const char *puk = "87654321";

    // PIN of a specimen card, another that it can be changed to, and the home page's button.
    struct Container {
        const char *name;
        const char *button;
        const char *pin;
        const char *newPin;
    };
    static const Container &container(const QByteArray &name)
    {
        static const Container rows[] = {
            { sim::Authentication, "bChangePinAuthenCert", "1234", "4826" },
            { sim::Authorization, "bChangePinAuthorCert", "123456", "482615" },
            { sim::Qualified, "bChangePinQualifiedCert", "12345678", "48261537" },
        };
        for (const Container &row : rows) {
            if (name == row.name)
                return row;
        }
        qFatal("no such container: %s", name.constData());
    }

    QLineEdit *field(const char *name) const { return find<QLineEdit>(name); }

    // The card in a reader, with what `prepare` does to the world before.
    bool start(const std::string &card, bool pinpad = false)
    {
        if (!world.addReader(readerName, pinpad))
            qFatal("%s", world.error().c_str());
        cardName = card;
        return showCard(card, readerName);
    }
    std::string card() const { return cardName; }
    sim::CardState state() const { return *world.cardState(cardName); }

    // By the mouse, which takes the focus along.
    void click(const char *name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    void openPinPage(const QByteArray &name) const { click(container(name).button); }

    void type(const char *name, const QString &text) const
    {
        field(name)->setFocus();
        QTest::keyClicks(field(name), text);
    }
    void typeChange(const QString &actual, const QString &fresh, const QString &repeat) const
    {
        type("lineActualPin", actual);
        type("lineNewPin", fresh);
        type("lineRepeatPin", repeat);
    }
    void typeUnblock(const QString &given, const QString &fresh, const QString &repeat) const
    {
        type("lineInsertPuk", given);
        type("lineNewPinPuk", fresh);
        type("lineRepeatPinPuk", repeat);
    }

    bool waitForEnd() const
    {
        return waitFor([this] { return !loaderShown(); });
    }
    void answerAtPad(sim::PadAnswer::Kind kind)
    {
        sim::PadAnswer answer;
        answer.kind = kind;
        if (!world.pad(answer))
            qFatal("%s", world.error().c_str());
    }
    // The worker has done all that was asked of it, and its answers have arrived.
    bool waitForWorker() const
    {
        LogCatcher log;
        emit window->loadSsl();
        const bool done = waitFor([&] { return log.has("SSL loaded"); });
        QCoreApplication::processEvents();
        return done;
    }

    // The result page tells of this result.
    bool showsChange(int code) const
    {
        const PinResult &result = pin_results::find(pin_results::ofAChange, code);
        return showsResult(result.text, result.colour);
    }
    bool showsUnblock(int code) const
    {
        const PinResult &result = pin_results::find(pin_results::ofAnUnblock, code);
        return showsResult(result.text, result.colour);
    }
    bool showsFirstPin(int code) const
    {
        const PinResult &result = pin_results::find(pin_results::ofAnUnblock, code);
        return showsResult(result.firstPinText, result.colour);
    }

    QString resultText() const { return label("lPinChanged")->text(); }
    QString resultStyle() const { return widget("pinChangedFrame")->styleSheet(); }
    QString subtitle() const { return label("lSubTitle")->text(); }

    // Calls that open, use and close a login since the trace was cleared, as "C_Login container=... -> 0x0".
    QStringList pinCalls() const
    {
        QStringList result;
        for (const std::string &text : world.traceTexts()) {
            const QString line = QString::fromStdString(text);
            for (const char *function : { "C_OpenSession ", "C_Login ", "C_SetPIN ", "C_InitPIN ", "C_Logout " }) {
                if (line.startsWith(function))
                    result << line;
            }
        }
        return result;
    }

    // The colour that was appended last, which is the one that shows.
    static bool hintIs(const QLabel *hint, const char *colour)
    {
        return hint->styleSheet().endsWith(QString(" color:%1;").arg(colour));
    }

private:
    bool showsResult(const QString &text, const QString &colour) const
    {
        return resultText() == text && resultStyle().contains(colour);
    }

    static constexpr const char *readerName = "Czytnik Alfa";
    std::string cardName;
};

constexpr const char *redHint = "#EA0449";
constexpr const char *blueHint = "#2B9EEB";
