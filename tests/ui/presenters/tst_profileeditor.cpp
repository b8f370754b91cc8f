// A printer's settings: what is sent, when, in which order, and what the sheet says of it.
#include "ui/presenters/presentertest.h"
#include "ui/presenters/profile/profilepresenter.h"
#include "ui/presenters/text/wholenumber.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const char *const save = "/admin/profile";
const char *const action = "/admin/printers/action";
const QByteArray refused = R"({"error":{"code":"invalid_alias"}})";

/// An open sheet past the turn of the event loop after which changes count.
struct Fixture : Parts
{
    std::unique_ptr<ProfileSaver> saver = std::make_unique<ProfileSaver>(commands);
    std::unique_ptr<ProfilePresenter> editor;

    explicit Fixture(const std::optional<Profile> &profile = {}, const QString &type = u"net"_s, bool isLoaded = true)
        : editor(std::make_unique<ProfilePresenter>(
            PrinterInfo{.id = u"p1"_s, .name = u"Bar"_s, .type = type, .state = u"ready"_s, .profile = profile}, clock,
            commands, *saver))
    {
        if (isLoaded)
            clock.advance(0ms);
    }
    /// What a field of the last save was; "null": told to be nothing.
    QString saved(const char *field) const
    {
        const QJsonValue value = body(save)[u"profile"][QLatin1String(field)];
        return value.isNull() ? u"null"_s : value.toVariant().toString();
    }
    /// What is wanted for the cut of the paper by the newest save that has no answer.
    QString underWay() const { return saver->underWay(u"p1"_s)->value(u"cut"_s).toString(); }
};

QString values(const QVariantList &list, const QString &key)
{
    QStringList texts;
    for (const QVariant &item : list)
        texts.append(item.toMap().value(key).toString());
    return texts.join(u' ');
}

} // namespace

class ProfileEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fields()
    {
        const auto sent = [](const char *changes) {
            QJsonObject all = json(R"({"cut":"partial","dither":"threshold","role":"receipt","drawerPin":"2",
                "protocol":null,"dots":null,"alias":null,"codepage":null})");
            const QJsonObject own = json(changes);
            for (auto field = own.begin(); field != own.end(); ++field)
                all[field.key()] = *field;
            return all;
        };
        QCOMPARE(ProfileForm().fields(), sent("{}"));
        const ProfileForm all{.proto = u"none"_s,
            .dots = 576,
            .cut = u"esc-m"_s,
            .pin = u"both"_s,
            .dither = u"floyd"_s,
            .role = u"a4"_s,
            .alias = u"\t كاشير 1 "_s,
            .enc = u"windows-1256"_s,
            .escT = u"+50"_s};
        QCOMPARE(all.fields(), json(R"({"cut":"esc-m","dither":"floyd","role":"a4","drawerPin":"both","protocol":"none",
            "dots":576,"alias":"كاشير 1","codepage":{"encoding":"windows-1256","escT":50}})"));
        QCOMPARE((ProfileForm{.alias = u" \t "_s, .escT = u"50"_s}).fields(), sent("{}")); // a page, but no encoding
        QCOMPARE((ProfileForm{.alias = u"a\n"_s, .enc = u"x"_s, .escT = u"50 "_s}).fields(),
            sent(R"({"alias":"a\n","codepage":{"encoding":"x"}})"));
        QCOMPARE(wholeNumber(u"-007"_s), -7);
        QCOMPARE(wholeNumber(u"9223372036854775807"_s), std::numeric_limits<qint64>::max());
        for (const char16_t *odd : {u"", u"+", u" 5", u"5 ", u"5.0", u"0x5", u"٥ ", u"9223372036854775808", u"--5"})
            QVERIFY2(!wholeNumber(QString::fromUtf16(odd)), qPrintable(QString::fromUtf16(odd)));
    }

    void loadingSavesNothing()
    {
        Fixture f(Profile{.protocolName = u"escpos"_s,
                      .dots = 420,
                      .alias = u"كاشير"_s,
                      .drawerPin = u"5"_s,
                      .codepageEncoding = u"iso-8859-6"_s,
                      .codepageEscT = 22},
            u"net"_s, false);
        QVERIFY(f.editor->proto() == u"escpos" && f.editor->dots() == 420 && f.editor->pin() == u"5"
            && f.editor->escT() == u"22" && f.editor->cut() == u"partial");
        QVERIFY(values(f.editor->dotsOptions(), u"label"_s).endsWith(u" 420"_s)); // seen, though no choice
        QCOMPARE(f.editor->cutOptions().size(), 6);
        f.editor->setCut(u"full"_s); // by the form's controls as they take their values
        QVERIFY(!f.editor->isLoaded());
        f.clock.advance(0ms);
        QVERIFY(f.editor->isLoaded() && !f.editor->isDirty());
        f.editor->setCut(u"full"_s); // no change
        f.clock.advance(10s);
        f.editor.reset();
        QCOMPARE(f.sent(save), 0);
    }

    void choicesAreSentOnceTheyRest()
    {
        Fixture f;
        f.editor->setCut(u"full"_s);
        f.clock.advance(49ms);
        QSignalSpy changed(f.editor.get(), &ProfilePresenter::dotsChanged);
        QVERIFY(f.editor->setProperty("__dots", 576)); // by the name that QML knows
        QVERIFY(f.editor->property("__dots").toInt() == 576 && changed.size() == 1);
        f.clock.advance(49ms);
        f.editor->setRole(u"kitchen"_s);
        QVERIFY(f.editor->isPending() && f.editor->property("__pending").toBool() && f.editor->isDirty());
        f.clock.advance(49ms);
        QCOMPARE(f.sent(save), 0);
        f.clock.advance(1ms);
        QVERIFY(!f.editor->isPending() && !f.editor->isDirty());
        QCOMPARE(f.sent(save), 1);
        QCOMPARE(f.body(save)[u"id"].toString(), u"p1"_s);
        QCOMPARE(f.saved("cut") + f.saved("role") + f.saved("dots") + f.saved("protocol"), u"fullkitchen576null"_s);
    }

    void aNameIsSentOnceItIsTyped()
    {
        Fixture f;
        QString name;
        for (const QChar letter : u"Kasse"_s) {
            f.editor->setAlias(name += letter);
            f.clock.advance(599ms);
        }
        QCOMPARE(f.sent(save), 0);
        f.clock.advance(1ms);
        QVERIFY(f.answer(save));
        QCOMPARE(f.saved("alias"), u"Kasse"_s);
        f.editor->setAlias(u"Kasse 2"_s); // a choice right after takes the name along
        f.editor->setPin(u"5"_s);
        f.clock.advance(50ms);
        QVERIFY(f.answer(save));
        QCOMPARE(f.saved("alias"), u"Kasse 2"_s);
        for (const QString &page : {u"5"_s, u"50"_s}) { // a code page's number does not wait
            f.editor->setEnc(u"windows-1256"_s);
            f.editor->setEscT(page);
            f.clock.advance(50ms);
            QVERIFY(f.answer(save));
        }
        QCOMPARE(f.body(save)[u"profile"][u"codepage"][u"escT"], QJsonValue(50));
        f.clock.advance(10s);
        QCOMPARE(f.sent(save), 4);
    }

    void closingSendsWhatIsLeft()
    {
        for (const bool byDestruction : {false, true}) {
            Fixture f;
            f.editor->setAlias(u"a"_s);
            f.clock.advance(50ms);
            f.editor->setAlias(u"ab"_s);
            if (!byDestruction)
                f.editor->close();
            f.editor.reset(); // once is enough
            f.clock.advance(1s);
            QCOMPARE(f.sent(save), 1);
            QCOMPARE(f.saved("alias"), u"ab"_s);
        }
    }

    void footerTellsTheLastOutcome()
    {
        Fixture f;
        const auto footer = [&f] { return f.editor->footerIcon() + u' ' + f.editor->footerText(); };
        QCOMPARE(footer(), u" كل تغيير يُطبَّق فورًا بدون زر حفظ"_s);
        f.editor->setAlias(u"a!"_s);
        f.clock.advance(600ms);
        QVERIFY(f.answer(save, refused));
        QVERIFY(f.editor->hasSaveError() && !f.editor->savedAt().isValid());
        QCOMPARE(footer(),
            u"exclamationmark.triangle.fill لم تُحفظ آخر قيمة: تحقق من الاسم المستعار "
            "(حروف وأرقام ومسافات فقط)"_s);
        QCOMPARE(f.editor->alias(), u"a!"_s); // what was typed stays
        f.editor->setCut(u"none"_s);
        f.clock.advance(50ms);
        QVERIFY(f.answer(save));
        QVERIFY(!f.editor->hasSaveError());
        QCOMPARE(f.editor->savedAt().toMSecsSinceEpoch(), f.clock.wallTime());
        QCOMPARE(footer(), u"checkmark.circle.fill تُحفظ التغييرات تلقائيًا ✓"_s);
    }

    // While an answer is out, later changes wait for it together, and the newest is what arrives last.
    void savesDoNotOvertakeEachOther()
    {
        Fixture f;
        for (const QString &cut : {u"full"_s, u"esc-i"_s, u"esc-m"_s}) {
            f.editor->setCut(cut);
            f.clock.advance(50ms);
        }
        f.editor->setAlias(u"x"_s); // and one that is not even due
        QVERIFY(f.sent(save) == 1 && !f.saver->isIdle());
        QCOMPARE(f.underWay(), u"esc-m"_s);
        QVERIFY(f.answer(save, refused));
        QVERIFY(f.editor->hasSaveError());
        QVERIFY(f.editor->isDirty()); // the answer to an earlier save is none to the later edit
        QCOMPARE(f.saved("cut") + f.underWay(), u"esc-mesc-m"_s);
        QVERIFY(f.answer(save));
        QVERIFY(f.saver->isIdle() && !f.saver->underWay(u"p1"_s) && !f.editor->hasSaveError());
        QCOMPARE(f.editor->alias(), u"x"_s);
        QCOMPARE(f.sent(save), 2);
    }

    // With the window nobody is left to wait for the answer.
    void closingWhileAnAnswerIsOut()
    {
        for (const bool withTheWindow : {false, true}) {
            Fixture f;
            f.editor->setCut(u"full"_s);
            f.clock.advance(50ms);
            f.editor->setAlias(u"late"_s);
            f.editor.reset();
            QCOMPARE(f.sent(save), 1);
            if (withTheWindow)
                f.saver.reset();
            else
                QVERIFY(f.answer(save));
            QCOMPARE(f.saved("alias"), u"late"_s);
            while (f.answer(save)) { }
            QCOMPARE(f.sent(save), 2);
        }
    }

    void theEndWaitsForTheLastSave()
    {
        Fixture f;
        const auto change = [&f](const QString &alias) { f.saver->save(u"p1"_s, {{u"alias"_s, alias}}, nullptr, {}); };
        change(u"last"_s);
        QTimer::singleShot(0, this, [&f] { f.answer(save); });
        f.saver->finish(f.clock, 1s);
        QVERIFY(f.saver->isIdle());
        change(u"never answered"_s);
        QTimer::singleShot(20, this, [&f] { f.clock.advance(1s); });
        f.saver->finish(f.clock, 1s); // comes back all the same
        QVERIFY(!f.saver->isIdle());
    }

    // A sheet that is still there tells it in its footer; after that somebody else has to.
    void refusalAfterTheSheetIsGoneIsTold()
    {
        Fixture f;
        QSignalSpy lost(f.saver.get(), &ProfileSaver::lost);
        f.editor->setAlias(u"#1"_s);
        f.clock.advance(600ms);
        QVERIFY(f.answer(save, refused));
        QVERIFY(f.editor->hasSaveError() && lost.isEmpty());
        f.editor->setAlias(u"#2"_s);
        f.editor.reset();
        QVERIFY(f.answer(save, refused));
        QCOMPARE(lost.count(), 1);
    }

    void maintenance()
    {
        Fixture f({}, u"cups"_s);
        QCOMPARE(values(f.editor->actions(), u"action"_s), u"drawer cut codepage-test clear-queue"_s);
        f.editor->setPin(u"both"_s);
        f.editor->run(u"drawer"_s);
        QCOMPARE(f.body(action), json(R"({"id":"p1","action":"drawer","pin":"both"})"));
        QVERIFY(f.answer(action));
        QCOMPARE(f.toast.text(), u"أُرسل أمر فتح الدرج"_s);
        f.editor->run(u"clear-queue"_s);
        QVERIFY(f.answer(action));
        QCOMPARE(f.toast.text(), u"تم مسح الوظائف العالقة"_s);

        Fixture other;
        QCOMPARE(other.editor->actions().size(), 3);
        other.editor->run(u"clear-queue"_s); // not offered
        other.editor->run(u"cut"_s);
        QCOMPARE(other.body(action), json(R"({"id":"p1","action":"cut"})"));
        QVERIFY(other.answer(action) && other.sent(action) == 1);
        QCOMPARE(other.toast.text(), u"أُرسل أمر القص"_s);
    }
};

ZEMRAK_TEST(profileeditor, ProfileEditorTest, QCoreApplication)
#include "tst_profileeditor.moc"
