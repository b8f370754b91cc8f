#include "app/commands.h"

#include "model/wire.h"

#include <QJsonDocument>

namespace zemrak {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds usual = 5s;

// The service tells its verdict by the words in its answer, whatever the HTTP status.
bool answeredWithoutError(const PrintService::Answer &answer)
{
    return answer && !answer->contains("\"error\"");
}

bool answeredWith(const PrintService::Answer &answer, QByteArrayView word)
{
    return answer && answer->contains(word);
}

// The sentence of a refusal; empty: there is none.
QString hintOf(const PrintService::Answer &answer)
{
    const QJsonObject body = answer ? QJsonDocument::fromJson(*answer).object() : QJsonObject();
    return body[QLatin1String("error")][QLatin1String("message")].toString();
}

} // namespace

Commands::Commands(PrintService &service, StatePoll &poll, Toast &toast, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_poll(poll)
    , m_toast(toast)
    , m_clock(clock)
{
}

bool Commands::begin(const QString &wish)
{
    const std::chrono::milliseconds now = m_clock.steadyTime();
    const auto last = m_wishes.constFind(wish);
    if (last != m_wishes.cend() && (!last->answered || now - last->at < oneWish))
        return false;
    m_wishes.insert(wish, {now});
    return true;
}

void Commands::post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::seconds timeout,
    PrintService::Answered done)
{
    m_service.post(path, body, timeout, this, std::move(done));
}

void Commands::testPrint(const QString &printerId)
{
    const QString wish = QStringLiteral("test ") + printerId;
    if (!begin(wish))
        return;
    post(QStringLiteral("/admin/test"), QJsonObject{{QStringLiteral("printer"), printerId}}, usual,
        [this, wish](const PrintService::Answer &answer) {
            end(wish);
            m_toast.flash(answer ? QStringLiteral("تم إرسال طباعة التجربة") : QStringLiteral("تعذر إرسال الطباعة"));
        });
}

void Commands::saveProfile(const QString &printerId, const QJsonObject &profile, Succeeded done)
{
    const QJsonObject body{{QStringLiteral("id"), printerId}, {QStringLiteral("profile"), profile}};
    post(QStringLiteral("/admin/profile"), body, usual,
        [this, done = std::move(done)](const PrintService::Answer &answer) {
            const bool ok = answeredWithoutError(answer);
            if (ok)
                m_poll.refresh();
            if (done)
                done(ok);
        });
}

void Commands::printerAction(
    const QString &printerId, const QString &action, const std::optional<QString> &pin, const QString &okMessage)
{
    const QString wish = action + u' ' + printerId;
    if (!begin(wish))
        return;
    QJsonObject body{{QStringLiteral("id"), printerId}, {QStringLiteral("action"), action}};
    if (pin)
        body.insert(QStringLiteral("pin"), *pin);
    post(QStringLiteral("/admin/printers/action"), body, 15s,
        [this, wish, okMessage](const PrintService::Answer &answer) {
            end(wish);
            m_toast.flash(
                answeredWithoutError(answer) ? okMessage : QStringLiteral("تعذر تنفيذ الأمر على هذه الطابعة"));
        });
}

void Commands::remove(const QString &printerId)
{
    post(QStringLiteral("/admin/printers/remove"), QJsonObject{{QStringLiteral("id"), printerId}}, usual,
        [this](const PrintService::Answer &) { m_poll.refresh(); });
}

void Commands::addNetwork(const QString &name, const QString &host, int port, const QString &transport, Judged done)
{
    const QJsonObject body{
        {QStringLiteral("type"), QStringLiteral("net")},
        {QStringLiteral("name"), name},
        {QStringLiteral("host"), host},
        {QStringLiteral("port"), port},
        {QStringLiteral("transport"), transport},
    };
    // Success is told whatever the answer: the next poll shows what is really there.
    post(QStringLiteral("/admin/printers/add"), body, usual,
        [this, done = std::move(done)](const PrintService::Answer &answer) {
            m_poll.refresh();
            m_toast.flash(QStringLiteral("تمت إضافة الطابعة"));
            if (done)
                done(answeredWithoutError(answer), hintOf(answer));
        });
}

void Commands::addUsb(const QString &name, const QString &uri, Succeeded done)
{
    const QJsonObject body{{QStringLiteral("name"), name}, {QStringLiteral("uri"), uri}};
    post(QStringLiteral("/admin/printers/add-usb"), body, 40s,
        [this, done = std::move(done)](const PrintService::Answer &answer) {
            const bool ok = answeredWith(answer, "queue");
            m_poll.refresh();
            m_toast.flash(
                ok ? QStringLiteral("تم إنشاء طابعة USB") : QStringLiteral("تعذر إنشاء الطابعة (قد يلزم صلاحية مدير)"));
            if (done)
                done(ok);
        });
}

void Commands::addOrigin(const QString &origin, Judged done)
{
    post(QStringLiteral("/admin/origins/add"), QJsonObject{{QStringLiteral("origin"), origin}}, usual,
        [this, done = std::move(done)](const PrintService::Answer &answer) {
            const bool ok = answeredWith(answer, "\"origin\"");
            if (ok) {
                m_toast.flash(QStringLiteral("تمت إضافة الموقع"));
                m_poll.refresh();
            } else {
                m_toast.flash(QStringLiteral("عنوان غير صالح: اكتب نطاقًا مثل pos.example.com"));
            }
            if (done)
                done(ok, hintOf(answer));
        });
}

void Commands::removeOrigin(const QString &origin)
{
    post(QStringLiteral("/admin/origins/remove"), QJsonObject{{QStringLiteral("origin"), origin}}, usual,
        [this](const PrintService::Answer &) {
            m_toast.flash(QStringLiteral("تم حذف الموقع"));
            m_poll.refresh();
        });
}

void Commands::revoke(const QString &siteId)
{
    post(QStringLiteral("/admin/revoke"), QJsonObject{{QStringLiteral("id"), siteId}}, usual,
        [this](const PrintService::Answer &) { m_poll.refresh(); });
}

void Commands::setAutoApprove(bool on)
{
    post(QStringLiteral("/admin/settings"), QJsonObject{{QStringLiteral("autoApprovePairing"), on}}, usual,
        [this, on](const PrintService::Answer &) {
            m_poll.refresh();
            m_toast.flash(
                on ? QStringLiteral("الموافقة التلقائية مفعّلة") : QStringLiteral("الموافقة التلقائية متوقفة"));
        });
}

template <typename Result, typename Record>
void Commands::search(
    const QString &path, std::chrono::seconds timeout, QList<Record> Result::*hits, Found<Record> done)
{
    post(path, std::nullopt, timeout, [hits, done = std::move(done)](const PrintService::Answer &answer) {
        const std::optional<Result> result = answer ? decodeBody<Result>(*answer) : std::nullopt;
        if (!done)
            return;
        if (result)
            done((*result).*hits, result->message);
        else
            done({}, QStringLiteral("لم يجرِ البحث لأن خدمة الطباعة لم تجب. أعد المحاولة بعد قليل."));
    });
}

void Commands::scanBonjour(Found<BonjourService> done)
{
    search(QStringLiteral("/admin/discover/bonjour"), 20s, &BonjourResult::services, std::move(done));
}

void Commands::scanNetwork(Found<NetHost> done)
{
    search(QStringLiteral("/admin/discover/network"), 40s, &NetResult::hosts, std::move(done));
}

void Commands::scanUsb(Found<UsbDevice> done)
{
    search(QStringLiteral("/admin/discover/usb"), 15s, &UsbResult::devices, std::move(done));
}

bool Commands::printDesigner(const QString &printerId, const QJsonObject &document, Succeeded done)
{
    const QString wish = QStringLiteral("receipt ") + printerId;
    if (!begin(wish))
        return false;
    const QJsonObject body{{QStringLiteral("printer"), printerId}, {QStringLiteral("doc"), document}};
    post(QStringLiteral("/admin/designer/print"), body, 15s,
        [this, wish, done = std::move(done)](const PrintService::Answer &answer) {
            end(wish);
            if (done)
                done(answeredWithoutError(answer));
        });
    return true;
}

} // namespace zemrak
