#include "app/adminchannel.h"
#include "support/answeredcommands.h"
#include "support/testmain.h"
#include "ui/presenters/profile/profilepresenter.h"
#include "ui/presenters/text/wholenumber.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

PrinterInfo printer(const std::optional<Profile> &profile = {}, const QString &type = QStringLiteral("net"))
{
    return {.id = QStringLiteral("p1"),
        .name = QStringLiteral("Bar"),
        .type = type,
        .state = QStringLiteral("ready"),
        .profile = profile};
}

const QByteArray good = "{}";
const QByteArray refused = R"({"error":{"code":"invalid_alias"}})";

const QString savePath = QStringLiteral("/admin/profile");
const QString actionPath = QStringLiteral("/admin/printers/action");

struct Fixture : AnsweredCommands
{
    std::unique_ptr<ProfileSaver> saver = std::make_unique<ProfileSaver>(commands);
    std::unique_ptr<ProfilePresenter> editor;

    explicit Fixture(const PrinterInfo &info = printer())
        : editor(std::make_unique<ProfilePresenter>(info, clock, commands, *saver))
    {
    }
    // Past the turn of the event loop after which changes count.
    void load() { clock.advance(0ms); }

    QList<QJsonObject> saves() const { return service.bodiesTo(savePath); }
    QJsonValue lastSaved(const char *key) const
    {
        return service.lastTo(savePath).value(QLatin1String("profile"))[QLatin1String(key)];
    }
    void answerHeld(const QByteArray &body) { QVERIFY(service.release(savePath, body)); }
};

QStringList values(const QVariantList &list, const char *key)
{
    QStringList texts;
    for (const QVariant &item : list)
        texts.append(item.toMap().value(QLatin1String(key)).toString());
    return texts;
}

} // namespace

class ProfileEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fields_data()
    {
        QTest::addColumn<ProfileForm>("form");
        QTest::addColumn<QByteArray>("json");
        const auto row = [](const char *name, const ProfileForm &form, const QByteArray &json) {
            QTest::newRow(name) << form << json;
        };
        row("all automatic", {},
            R"({"cut":"partial","dither":"threshold","role":"receipt","drawerPin":"2",
                "protocol":null,"dots":null,"alias":null,"codepage":null})");
        row("all set",
            {.proto = QStringLiteral("none"),
                .dots = 576,
                .cut = QStringLiteral("esc-m"),
                .pin = QStringLiteral("both"),
                .dither = QStringLiteral("floyd"),
                .role = QStringLiteral("a4"),
                .alias = QStringLiteral("\t كاشير 1 "),
                .enc = QStringLiteral("windows-1256"),
                .escT = QStringLiteral("+50")},
            R"({"cut":"esc-m","dither":"floyd","role":"a4","drawerPin":"both","protocol":"none","dots":576,
                "alias":"كاشير 1","codepage":{"encoding":"windows-1256","escT":50}})");
        row("blanks only, a page but no encoding", {.alias = QStringLiteral(" \t "), .escT = QStringLiteral("50")},
            R"({"cut":"partial","dither":"threshold","role":"receipt","drawerPin":"2",
                "protocol":null,"dots":null,"alias":null,"codepage":null})");
        row("a page that is no number",
            {.alias = QStringLiteral("a\n"), .enc = QStringLiteral("x"), .escT = QStringLiteral("50 ")},
            R"({"cut":"partial","dither":"threshold","role":"receipt","drawerPin":"2",
                "protocol":null,"dots":null,"alias":"a\n","codepage":{"encoding":"x"}})");
    }
    void fields()
    {
        QFETCH(ProfileForm, form);
        QFETCH(QByteArray, json);
        QCOMPARE(form.fields(), QJsonDocument::fromJson(json).object());
    }

    void wholeNumbers()
    {
        QCOMPARE(wholeNumber(QStringLiteral("-007")), -7);
        QCOMPARE(wholeNumber(QStringLiteral("9223372036854775807")), std::numeric_limits<qint64>::max());
        for (const char16_t *odd : {u"", u"+", u" 5", u"5 ", u"5.0", u"0x5", u"٥ ", u"9223372036854775808", u"--5"})
            QVERIFY2(!wholeNumber(QString::fromUtf16(odd)), qPrintable(QString::fromUtf16(odd)));
    }

    void loadingSavesNothing()
    {
        Fixture f(printer(Profile{.protocolName = QStringLiteral("escpos"),
            .dots = 420,
            .alias = QStringLiteral("كاشير"),
            .drawerPin = QStringLiteral("5"),
            .codepageEncoding = QStringLiteral("iso-8859-6"),
            .codepageEscT = 22}));
        QVERIFY(f.editor->proto() == QLatin1String("escpos") && f.editor->dots() == 420
            && f.editor->pin() == QLatin1String("5") && f.editor->escT() == QLatin1String("22")
            && f.editor->cut() == QLatin1String("partial"));
        QCOMPARE(values(f.editor->dotsOptions(), "label").last(), QStringLiteral("420")); // seen, though no choice
        QCOMPARE(f.editor->cutOptions().size(), 6);

        f.editor->setCut(QStringLiteral("full")); // by the form's controls as they take their values
        QVERIFY(!f.editor->isLoaded());
        f.load();
        QVERIFY(f.editor->isLoaded() && !f.editor->isDirty());
        f.editor->setCut(QStringLiteral("full")); // no change
        f.clock.advance(10s);
        f.editor.reset();
        QCoreApplication::processEvents();
        QVERIFY(f.saves().isEmpty());
    }

    void choicesAreSentOnceTheyRest()
    {
        Fixture f;
        f.load();
        f.editor->setCut(QStringLiteral("full"));
        f.clock.advance(49ms);
        f.editor->setDots(576);
        f.clock.advance(49ms);
        f.editor->setRole(QStringLiteral("kitchen"));
        QVERIFY(f.editor->isPending() && f.editor->isDirty());
        f.clock.advance(49ms);
        QCoreApplication::processEvents();
        QVERIFY(f.saves().isEmpty());
        f.clock.advance(1ms);
        QVERIFY(!f.editor->isPending() && !f.editor->isDirty());
        QTRY_COMPARE(f.saves().size(), 1);
        QCOMPARE(f.saves()[0][QLatin1String("id")].toString(), QStringLiteral("p1"));
        QCOMPARE(f.lastSaved("cut"), QJsonValue(QStringLiteral("full")));
        QCOMPARE(f.lastSaved("role"), QJsonValue(QStringLiteral("kitchen")));
        QCOMPARE(f.lastSaved("dots"), QJsonValue(576));
        QCOMPARE(f.lastSaved("protocol"), QJsonValue(QJsonValue::Null));
    }

    void aNameIsSentOnceItIsTyped()
    {
        Fixture f;
        f.load();
        QString name;
        for (const QChar letter : QStringLiteral("Kasse")) {
            f.editor->setAlias(name += letter);
            f.clock.advance(599ms);
        }
        QCoreApplication::processEvents();
        QVERIFY(f.saves().isEmpty());
        f.clock.advance(1ms);
        QTRY_COMPARE(f.saves().size(), 1);
        QCOMPARE(f.lastSaved("alias"), QJsonValue(QStringLiteral("Kasse")));

        f.editor->setAlias(QStringLiteral("Kasse 2")); // a choice right after takes the name along
        f.editor->setPin(QStringLiteral("5"));
        f.clock.advance(50ms);
        QTRY_COMPARE(f.saves().size(), 2);
        QCOMPARE(f.lastSaved("alias"), QJsonValue(QStringLiteral("Kasse 2")));
        f.clock.advance(10s);
        QCoreApplication::processEvents();
        QCOMPARE(f.saves().size(), 2);
    }

    void pageNumberDoesNotWait()
    {
        Fixture f;
        f.load();
        f.editor->setEnc(QStringLiteral("windows-1256"));
        f.editor->setEscT(QStringLiteral("5"));
        f.clock.advance(50ms);
        QTRY_VERIFY(f.saver->isIdle());
        f.editor->setEscT(QStringLiteral("50"));
        f.clock.advance(50ms);
        QTRY_COMPARE(f.saves().size(), 2);
        QCOMPARE(f.lastSaved("codepage").toObject().value(QLatin1String("escT")), QJsonValue(50));
    }

    void closingSendsWhatIsLeft_data()
    {
        QTest::addColumn<bool>("byDestruction");
        QTest::newRow("closed") << false;
        QTest::newRow("destroyed") << true;
    }
    void closingSendsWhatIsLeft()
    {
        QFETCH(bool, byDestruction);
        Fixture f;
        f.load();
        f.editor->setAlias(QStringLiteral("a"));
        f.clock.advance(50ms);
        f.editor->setAlias(QStringLiteral("ab"));
        if (byDestruction)
            f.editor.reset();
        else
            f.editor->close();
        QTRY_COMPARE(f.saves().size(), 1);
        QCOMPARE(f.lastSaved("alias"), QJsonValue(QStringLiteral("ab")));
        if (f.editor)
            f.editor->close();
        f.editor.reset(); // once is enough
        f.clock.advance(1s);
        QCoreApplication::processEvents();
        QCOMPARE(f.saves().size(), 1);
    }

    void footerTellsTheLastOutcome()
    {
        Fixture f;
        f.load();
        QCOMPARE(f.editor->footerText(), QStringLiteral("كل تغيير يُطبَّق فورًا بدون زر حفظ"));
        QCOMPARE(f.editor->footerIcon(), QString());

        f.service.answer = refused;
        f.editor->setAlias(QStringLiteral("a!"));
        f.clock.advance(600ms);
        QTRY_VERIFY(f.editor->hasSaveError());
        QCOMPARE(f.editor->footerText(),
            QStringLiteral("لم تُحفظ آخر قيمة: تحقق من الاسم المستعار (حروف وأرقام ومسافات فقط)"));
        QCOMPARE(f.editor->footerIcon(), QStringLiteral("exclamationmark.triangle.fill"));
        QCOMPARE(f.editor->alias(), QStringLiteral("a!")); // what was typed stays
        QVERIFY(!f.editor->savedAt().isValid());

        f.service.answer = good;
        f.editor->setCut(QStringLiteral("none"));
        f.clock.advance(50ms);
        QTRY_VERIFY(!f.editor->hasSaveError());
        QCOMPARE(f.editor->savedAt().toMSecsSinceEpoch(), f.clock.wallTime());
        QCOMPARE(f.editor->footerText(), QStringLiteral("تُحفظ التغييرات تلقائيًا ✓"));
        QCOMPARE(f.editor->footerIcon(), QStringLiteral("checkmark.circle.fill"));
    }

    // While an answer is out, later changes wait for it together, and the newest is what arrives last.
    void savesDoNotOvertakeEachOther()
    {
        Fixture f;
        f.load();
        f.service.holdBack = true;
        f.editor->setCut(QStringLiteral("full"));
        f.clock.advance(50ms);
        QTRY_COMPARE(f.service.heldTo(savePath), 1);
        f.editor->setCut(QStringLiteral("esc-i"));
        f.clock.advance(50ms);
        f.editor->setCut(QStringLiteral("esc-m"));
        f.clock.advance(50ms);
        f.editor->setAlias(QStringLiteral("x")); // and one that is not even due
        QCoreApplication::processEvents();
        QCOMPARE(f.saves().size(), 1);
        QVERIFY(!f.saver->isIdle());
        QCOMPARE(
            f.saver->underWay(QStringLiteral("p1"))->value(QLatin1String("cut")), QJsonValue(QStringLiteral("esc-m")));

        f.answerHeld(refused);
        QTRY_VERIFY(f.editor->hasSaveError());
        QVERIFY(f.editor->isDirty()); // the answer to an earlier save is none to the later edit
        QTRY_COMPARE(f.service.heldTo(savePath), 1);
        QCOMPARE(f.lastSaved("cut"), QJsonValue(QStringLiteral("esc-m")));
        QCOMPARE(
            f.saver->underWay(QStringLiteral("p1"))->value(QLatin1String("cut")), QJsonValue(QStringLiteral("esc-m")));
        f.answerHeld(good);
        QTRY_VERIFY(f.saver->isIdle());
        QVERIFY(!f.saver->underWay(QStringLiteral("p1")));
        QVERIFY(!f.editor->hasSaveError());
        QCOMPARE(f.editor->alias(), QStringLiteral("x"));
        QCOMPARE(f.saves().size(), 2);
    }

    void closingWhileAnAnswerIsOut_data()
    {
        QTest::addColumn<bool>("withTheWindow");
        QTest::newRow("the sheet") << false;
        QTest::newRow("the window") << true; // nobody is left to wait for the answer
    }
    void closingWhileAnAnswerIsOut()
    {
        QFETCH(bool, withTheWindow);
        Fixture f;
        f.load();
        f.service.holdBack = true;
        f.editor->setCut(QStringLiteral("full"));
        f.clock.advance(50ms);
        QTRY_COMPARE(f.service.heldTo(savePath), 1);
        f.editor->setAlias(QStringLiteral("late"));
        f.editor.reset();
        QCoreApplication::processEvents();
        QCOMPARE(f.saves().size(), 1);
        if (withTheWindow)
            f.saver.reset();
        else
            f.answerHeld(good);
        QTRY_COMPARE(f.saves().size(), 2);
        QCOMPARE(f.lastSaved("alias"), QJsonValue(QStringLiteral("late")));
        f.service.holdBack = false;
        while (f.service.release(savePath, good)) { }
        QCoreApplication::processEvents();
        QCOMPARE(f.saves().size(), 2);
    }

    // A sheet that is still there tells it in its footer; after that somebody else has to.
    void refusalAfterTheSheetIsGoneIsTold()
    {
        Fixture f;
        f.load();
        QSignalSpy lost(f.saver.get(), &ProfileSaver::lost);
        f.service.answer = refused;
        f.editor->setAlias(QStringLiteral("#1"));
        f.clock.advance(600ms);
        QTRY_VERIFY(f.editor->hasSaveError());
        QCOMPARE(lost.count(), 0);
        f.editor->setAlias(QStringLiteral("#2"));
        f.editor->close();
        f.editor.reset();
        QTRY_COMPARE(lost.count(), 1);
        QCOMPARE(f.saves().size(), 2);
    }

    void maintenance()
    {
        Fixture f(printer({}, QStringLiteral("cups")));
        f.load();
        QCOMPARE(values(f.editor->actions(), "action").join(QLatin1Char(' ')),
            QStringLiteral("drawer cut codepage-test clear-queue"));
        f.editor->setPin(QStringLiteral("both"));
        f.editor->run(QStringLiteral("drawer"));
        QCOMPARE(f.service.lastTo(actionPath),
            QJsonDocument::fromJson(R"({"id":"p1","action":"drawer","pin":"both"})").object());
        QTRY_COMPARE(f.toast.text(), QStringLiteral("أُرسل أمر فتح الدرج"));
        f.editor->run(QStringLiteral("clear-queue"));
        QTRY_COMPARE(f.toast.text(), QStringLiteral("تم مسح الوظائف العالقة"));

        Fixture other;
        QCOMPARE(other.editor->actions().size(), 3);
        other.editor->run(QStringLiteral("clear-queue")); // not offered
        other.editor->run(QStringLiteral("cut"));
        QTRY_COMPARE(other.toast.text(), QStringLiteral("أُرسل أمر القص"));
        QCOMPARE(other.service.bodiesTo(actionPath),
            QList<QJsonObject>{QJsonDocument::fromJson(R"({"id":"p1","action":"cut"})").object()});
    }

    // As QML sees it.
    void propertiesKeepTheirNames()
    {
        Fixture f;
        f.load();
        QSignalSpy changed(f.editor.get(), &ProfilePresenter::dotsChanged);
        QVERIFY(f.editor->setProperty("__dots", 512));
        QCOMPARE(f.editor->property("__dots").toInt(), 512);
        QCOMPARE(changed.size(), 1);
        QVERIFY(f.editor->property("__pending").toBool());
    }
};

ZEMRAK_TEST(profileeditor, ProfileEditorTest, QCoreApplication)
#include "tst_profileeditor.moc"
