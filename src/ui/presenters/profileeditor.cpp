#include "ui/presenters/profileeditor.h"

#include "health/vocabulary.h"
#include "ui/presenters/maintenance.h"
#include "ui/presenters/palettename.h"
#include "ui/presenters/profileoptions.h"

#include <utility>

namespace zemrak {

namespace {

using namespace std::chrono_literals;

constexpr auto atOnce = 50ms;
constexpr auto onceTyped = 600ms; // a name is typed letter by letter

} // namespace

ProfileEditor::ProfileEditor(
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

ProfileEditor::~ProfileEditor()
{
    if (m_dirty && m_saver)
        m_saver->save(m_printer.id, m_form.fields(), nullptr, {});
}

QString ProfileEditor::printerName() const
{
    return displayName(m_printer);
}

template <typename Value>
void ProfileEditor::change(
    Value &field, const Value &value, void (ProfileEditor::*changed)(), std::chrono::milliseconds delay)
{
    if (field == value)
        return;
    field = value;
    Q_EMIT(this->*changed)();
    scheduleSave(delay);
}

void ProfileEditor::setProto(const QString &proto)
{
    change(m_form.proto, proto, &ProfileEditor::protoChanged, atOnce);
}

void ProfileEditor::setDots(qint64 dots)
{
    change(m_form.dots, dots, &ProfileEditor::dotsChanged, atOnce);
}

void ProfileEditor::setCut(const QString &cut)
{
    change(m_form.cut, cut, &ProfileEditor::cutChanged, atOnce);
}

void ProfileEditor::setPin(const QString &pin)
{
    change(m_form.pin, pin, &ProfileEditor::pinChanged, atOnce);
}

void ProfileEditor::setDither(const QString &dither)
{
    change(m_form.dither, dither, &ProfileEditor::ditherChanged, atOnce);
}

void ProfileEditor::setRole(const QString &role)
{
    change(m_form.role, role, &ProfileEditor::roleChanged, atOnce);
}

void ProfileEditor::setAlias(const QString &alias)
{
    change(m_form.alias, alias, &ProfileEditor::aliasChanged, onceTyped);
}

void ProfileEditor::setEnc(const QString &enc)
{
    change(m_form.enc, enc, &ProfileEditor::encChanged, atOnce);
}

void ProfileEditor::setEscT(const QString &escT)
{
    change(m_form.escT, escT, &ProfileEditor::escTChanged, atOnce);
}

void ProfileEditor::scheduleSave(std::chrono::milliseconds delay)
{
    if (!m_loaded)
        return;
    m_dirty = true;
    m_pending->start(delay);
    Q_EMIT statusChanged();
}

void ProfileEditor::save()
{
    if (!m_saver)
        return;
    m_pending->stop();
    m_dirty = false;
    m_saver->save(m_printer.id, m_form.fields(), this, [this](bool ok) { onSaved(ok); });
    Q_EMIT statusChanged();
}

void ProfileEditor::onSaved(bool ok)
{
    m_saveError = !ok;
    if (ok)
        m_savedAt = QDateTime::fromMSecsSinceEpoch(m_clock.wallTime());
    Q_EMIT statusChanged();
}

void ProfileEditor::close()
{
    if (m_dirty)
        save();
}

void ProfileEditor::run(const QString &action)
{
    const QList<Maintenance> offered = maintenanceFor(m_printer.type);
    for (const Maintenance &each : offered) {
        if (each.action == action)
            m_commands.printerAction(
                m_printer.id, action, each.sendsPin ? std::optional(m_form.pin) : std::nullopt, each.okMessage);
    }
}

QString ProfileEditor::notSaved()
{
    return QStringLiteral("لم تُحفظ آخر قيمة: تحقق من الاسم المستعار (حروف وأرقام ومسافات فقط)");
}

QString ProfileEditor::footerIcon() const
{
    if (m_saveError)
        return QStringLiteral("exclamationmark.triangle.fill");
    return m_savedAt.isValid() ? QStringLiteral("checkmark.circle.fill") : QString();
}

QString ProfileEditor::footerText() const
{
    if (m_saveError)
        return notSaved();
    return m_savedAt.isValid() ? QStringLiteral("تُحفظ التغييرات تلقائيًا ✓")
                               : QStringLiteral("كل تغيير يُطبَّق فورًا بدون زر حفظ");
}

QString ProfileEditor::footerColor() const
{
    if (m_saveError)
        return paletteName(Tone::Red);
    return paletteName(m_savedAt.isValid() ? Tone::Green : Tone::Muted);
}

// The values offered besides the usual ones are those that were loaded, so that the lists stay as they are.
QVariantList ProfileEditor::protoOptions() const
{
    return chooserOptions(protocolOptions(), m_stored.proto);
}

QVariantList ProfileEditor::dotsOptions() const
{
    return chooserOptions(zemrak::dotsOptions(), m_stored.dots);
}

QVariantList ProfileEditor::ditherOptions() const
{
    return chooserOptions(zemrak::ditherOptions(), m_stored.dither);
}

QVariantList ProfileEditor::cutOptions() const
{
    return chooserOptions(zemrak::cutOptions(), m_stored.cut);
}

QVariantList ProfileEditor::pinOptions() const
{
    return chooserOptions(zemrak::pinOptions(), m_stored.pin);
}

QVariantList ProfileEditor::encOptions() const
{
    return chooserOptions(encodingOptions(), m_stored.enc);
}

QVariantList ProfileEditor::roleOptions() const
{
    return chooserOptions(zemrak::roleOptions(), m_stored.role);
}

QVariantList ProfileEditor::actions() const
{
    QVariantList list;
    const QList<Maintenance> offered = maintenanceFor(m_printer.type);
    for (const Maintenance &each : offered)
        list.append(QVariantMap{{QStringLiteral("action"), each.action}, {QStringLiteral("title"), each.title}});
    return list;
}

} // namespace zemrak
