#include "ui/presenters/profile/profilepresenter.h"

#include "health/vocabulary.h"
#include "ui/presenters/profile/maintenance.h"
#include "ui/presenters/profile/profileoptions.h"
#include "ui/presenters/text/palettename.h"
#include "ui/presenters/text/wholenumber.h"

#include <utility>

namespace zemrak {

namespace {

using namespace std::chrono_literals;

constexpr auto atOnce = 50ms;
constexpr auto onceTyped = 600ms; // a name is typed letter by letter

} // namespace

ProfilePresenter::ProfilePresenter(
    const PrinterInfo &printer, Clock &clock, Commands &commands, ProfileSaver &saver, QObject *parent)
    : QObject(parent)
    , m_printer(printer)
    , m_clock(clock)
    , m_commands(commands)
    , m_saver(&saver)
    , m_stored(ProfileForm::of(printer.profile))
    , m_form(m_stored)
    , m_pending(clock.makeTimer(Clock::Repeat::Once, [this] { save(); }))
{
    m_clock.after(0ms, this, [this] {
        m_loaded = true;
        Q_EMIT statusChanged();
    });
}

ProfilePresenter::~ProfilePresenter()
{
    if (m_dirty && m_saver)
        m_saver->save(m_printer.id, m_form.fields(), nullptr, {});
}

QString ProfilePresenter::printerName() const
{
    return displayName(m_printer);
}

template <typename Value>
void ProfilePresenter::change(
    Value &field, const Value &value, void (ProfilePresenter::*changed)(), std::chrono::milliseconds delay)
{
    if (field == value)
        return;
    field = value;
    Q_EMIT(this->*changed)();
    scheduleSave(delay);
}

void ProfilePresenter::setProto(const QString &proto)
{
    change(m_form.proto, proto, &ProfilePresenter::protoChanged, atOnce);
}

void ProfilePresenter::setDots(qint64 dots)
{
    change(m_form.dots, dots, &ProfilePresenter::dotsChanged, atOnce);
}

void ProfilePresenter::setCut(const QString &cut)
{
    change(m_form.cut, cut, &ProfilePresenter::cutChanged, atOnce);
}

void ProfilePresenter::setPin(const QString &pin)
{
    change(m_form.pin, pin, &ProfilePresenter::pinChanged, atOnce);
}

void ProfilePresenter::setDither(const QString &dither)
{
    change(m_form.dither, dither, &ProfilePresenter::ditherChanged, atOnce);
}

void ProfilePresenter::setRole(const QString &role)
{
    change(m_form.role, role, &ProfilePresenter::roleChanged, atOnce);
}

void ProfilePresenter::setAlias(const QString &alias)
{
    change(m_form.alias, alias, &ProfilePresenter::aliasChanged, onceTyped);
}

void ProfilePresenter::setEnc(const QString &enc)
{
    change(m_form.enc, enc, &ProfilePresenter::encChanged, atOnce);
}

void ProfilePresenter::setEscT(const QString &escT)
{
    change(m_form.escT, escT, &ProfilePresenter::escTChanged, atOnce);
}

QString ProfilePresenter::escTProblem() const
{
    constexpr qint64 largest = 255; // it is a byte of the command
    const std::optional<qint64> page = wholeNumber(m_form.escT);
    const bool right = m_form.escT.isEmpty() || (page && *page >= 0 && *page <= largest);
    return right ? QString() : QStringLiteral("اكتب رقمًا بين 0 و%1، بلا مسافات.").arg(largest);
}

void ProfilePresenter::scheduleSave(std::chrono::milliseconds delay)
{
    if (!m_loaded)
        return;
    m_dirty = true;
    m_pending->start(delay);
    Q_EMIT statusChanged();
}

void ProfilePresenter::save()
{
    if (!m_saver)
        return;
    m_pending->stop();
    m_dirty = false;
    m_saver->save(m_printer.id, m_form.fields(), this, [this](bool ok) { onSaved(ok); });
    Q_EMIT statusChanged();
}

void ProfilePresenter::onSaved(bool ok)
{
    m_saveError = !ok;
    if (ok)
        m_savedAt = QDateTime::fromMSecsSinceEpoch(m_clock.wallTime());
    Q_EMIT statusChanged();
}

void ProfilePresenter::close()
{
    if (m_dirty)
        save();
}

void ProfilePresenter::run(const QString &action)
{
    const QList<Maintenance> offered = maintenanceFor(m_printer.type);
    for (const Maintenance &each : offered) {
        if (each.action == action)
            m_commands.printerAction(
                m_printer.id, action, each.sendsPin ? std::optional(m_form.pin) : std::nullopt, each.okMessage);
    }
}

QString ProfilePresenter::notSaved()
{
    return QStringLiteral("لم تُحفظ آخر قيمة: تحقق من الاسم المستعار (حروف وأرقام ومسافات فقط)");
}

QString ProfilePresenter::footerIcon() const
{
    if (m_saveError)
        return QStringLiteral("exclamationmark.triangle.fill");
    return m_savedAt.isValid() ? QStringLiteral("checkmark.circle.fill") : QString();
}

QString ProfilePresenter::footerText() const
{
    if (m_saveError)
        return notSaved();
    return m_savedAt.isValid() ? QStringLiteral("تُحفظ التغييرات تلقائيًا ✓")
                               : QStringLiteral("كل تغيير يُطبَّق فورًا بدون زر حفظ");
}

QString ProfilePresenter::footerColor() const
{
    if (m_saveError)
        return paletteName(Tone::Red);
    return paletteName(m_savedAt.isValid() ? Tone::Green : Tone::Muted);
}

// The values offered besides the usual ones are those that were loaded, so that the lists stay as they are.
QVariantList ProfilePresenter::protoOptions() const
{
    return chooserOptions(protocolOptions(), m_stored.proto);
}

QVariantList ProfilePresenter::dotsOptions() const
{
    return chooserOptions(zemrak::dotsOptions(), m_stored.dots);
}

QVariantList ProfilePresenter::ditherOptions() const
{
    return chooserOptions(zemrak::ditherOptions(), m_stored.dither);
}

QVariantList ProfilePresenter::cutOptions() const
{
    return chooserOptions(zemrak::cutOptions(), m_stored.cut);
}

QVariantList ProfilePresenter::pinOptions() const
{
    return chooserOptions(zemrak::pinOptions(), m_stored.pin);
}

QVariantList ProfilePresenter::encOptions() const
{
    return chooserOptions(encodingOptions(), m_stored.enc);
}

QVariantList ProfilePresenter::roleOptions() const
{
    return chooserOptions(zemrak::roleOptions(), m_stored.role);
}

QVariantList ProfilePresenter::actions() const
{
    QVariantList list;
    const QList<Maintenance> offered = maintenanceFor(m_printer.type);
    for (const Maintenance &each : offered)
        list.append(QVariantMap{{QStringLiteral("action"), each.action}, {QStringLiteral("title"), each.title},
            {QStringLiteral("question"), each.question}});
    return list;
}

} // namespace zemrak
