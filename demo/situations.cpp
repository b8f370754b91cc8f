#include "demo/situations.h"

#include "support/wiredata.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace zemrak::test {

namespace {

const QByteArray statePath = "/admin/state";
const QByteArray alertsPath = "/admin/alerts";
const QByteArray scanPath = "/admin/scan";

QJsonObject shopState()
{
    return storedObject(QStringLiteral("situations/shop-state.json"));
}

QJsonObject shopAlerts()
{
    return storedObject(QStringLiteral("situations/shop-alerts.json"));
}

// What a connection check would find out about the printers of `state`.
QJsonObject checkOf(const QJsonObject &state)
{
    QJsonArray found;
    const QJsonArray printers = state.value(QStringLiteral("printers")).toArray();
    for (const QJsonValue &value : printers) {
        QJsonObject printer;
        for (const char *key : {"id", "name", "state", "reason"})
            printer.insert(QLatin1String(key), value.toObject().value(QLatin1String(key)));
        if (printer.value(QStringLiteral("state")) == QLatin1String("busy"))
            printer.insert(QStringLiteral("state"), QStringLiteral("ready"));
        found.append(printer);
    }
    const auto answered = std::ranges::count_if(
        found, [](const QJsonValue &printer) { return printer[QStringLiteral("state")] == QLatin1String("ready"); });
    return {{QStringLiteral("printers"), found}, {QStringLiteral("connected"), int(answered)}};
}

Answers both(const QJsonObject &state, const QJsonObject &alerts)
{
    return {{statePath, toJson(state)}, {alertsPath, toJson(alerts)}, {scanPath, toJson(checkOf(state))}};
}

// What the searches for printers find.
Answers withSearches(Answers answers, const QString &product)
{
    const auto list = [&answers](const char *what, const QString &key, const QJsonArray &hits) {
        answers.insert(QByteArrayLiteral("/admin/discover/") + what, toJson({{key, hits}}));
    };
    const auto service = [&product](const char *name, const char *host, int port, const char *transport) {
        return QJsonObject{{QStringLiteral("name"), product + QLatin1String(name)},
            {QStringLiteral("host"), QLatin1String(host)}, {QStringLiteral("port"), port},
            {QStringLiteral("transport"), QLatin1String(transport)}};
    };
    const auto host = [](const char *address) {
        return QJsonObject{{QStringLiteral("host"), QLatin1String(address)}, {QStringLiteral("port"), 9100}};
    };
    const QString uri = QStringLiteral("usb:tm");
    list("network", QStringLiteral("hosts"), {host("192.168.1.50"), host("192.168.1.51")});
    list("bonjour", QStringLiteral("services"),
        {service(" Kitchen", "kitchen.local", 9100, "raw"), service(" Office", "192.168.1.77", 631, "ipp")});
    list("usb", QStringLiteral("devices"),
        {QJsonObject{{QStringLiteral("vendor"), QStringLiteral("ACME")}, {QStringLiteral("product"), product},
             {QStringLiteral("uri"), uri}},
            QJsonObject{{QStringLiteral("product"), QStringLiteral("USB Printing Support")},
                {QStringLiteral("uri"), uri + QLatin1Char('2')}}});
    return answers;
}

Answers shop()
{
    return withSearches(both(shopState(), shopAlerts()), QStringLiteral("RP-80"));
}

QJsonObject noAlerts()
{
    return {{QStringLiteral("alerts"), QJsonArray()}, {QStringLiteral("unread"), 0}};
}

// Every object of the array, changed by `change`, which also gets its place.
QJsonArray changed(const QJsonArray &array, const std::function<void(QJsonObject &, int)> &change)
{
    QJsonArray result;
    for (const QJsonValue &value : array) {
        QJsonObject object = value.toObject();
        change(object, static_cast<int>(result.size()));
        result.append(object);
    }
    return result;
}

QJsonArray repeated(const QJsonArray &array, int times, const std::function<void(QJsonObject &, int)> &change)
{
    QJsonArray result;
    for (int i = 0; i < times; ++i) {
        QJsonObject object = array.at(i % array.size()).toObject();
        change(object, i);
        result.append(object);
    }
    return result;
}

void number(QJsonObject &object, const QString &key, int i)
{
    object.insert(key, QStringLiteral("%1 %2").arg(object.value(key).toString()).arg(i + 1));
}

Answers quiet()
{
    QJsonObject state = shopState();
    state.insert(QStringLiteral("alertsUnread"), 0);
    Answers answers = both(state, noAlerts());
    for (const auto &[what, key] : {std::pair("network", "hosts"), {"bonjour", "services"}, {"usb", "devices"}})
        answers.insert(QByteArray("/admin/discover/") + what, toJson({{QLatin1String(key), QJsonArray()}}));
    return answers;
}

Answers empty()
{
    QJsonObject state = shopState();
    for (const char *list : {"printers", "pairedSites", "recentJobs", "allowedOrigins", "defaultOrigins"})
        state.insert(QLatin1String(list), QJsonArray());
    return both(state, noAlerts());
}

Answers offline()
{
    QJsonObject state = shopState();
    const auto unplug = [](QJsonObject &printer, int) {
        printer.insert(QStringLiteral("state"), QStringLiteral("offline"));
        printer.insert(QStringLiteral("reason"), QStringLiteral("unreachable"));
    };
    state.insert(QStringLiteral("printers"), changed(state.value(QStringLiteral("printers")).toArray(), unplug));
    return both(state, shopAlerts());
}

// Printers that say what is wrong with them, jobs that wait for them, and sites that nobody has allowed.
Answers waiting()
{
    QJsonObject state = shopState();
    const auto trouble = [](QJsonObject &printer, int i) {
        if (i == 0)
            printer.insert(QStringLiteral("paper"), QStringLiteral("low"));
        if (i == 0 || i == 2)
            return;
        printer.insert(QStringLiteral("state"), QStringLiteral("error"));
        printer.insert(QStringLiteral("problem"), i == 1 ? QStringLiteral("paused") : QStringLiteral("paper_out"));
    };
    state.insert(QStringLiteral("printers"), changed(state.value(QStringLiteral("printers")).toArray(), trouble));
    const auto keep = [](QJsonObject &job, int i) {
        const QString status = job.value(QStringLiteral("status")).toString();
        if (status == QLatin1String("completed"))
            job.insert(QStringLiteral("confirmed"), i % 2 == 0 ? QStringLiteral("yes") : QStringLiteral("unknown"));
        else if (i == 1 || i == 2)
            job.insert(QStringLiteral("waitingFor"), i == 1 ? QStringLiteral("paper_out") : QStringLiteral("offline"));
    };
    state.insert(QStringLiteral("recentJobs"), changed(state.value(QStringLiteral("recentJobs")).toArray(), keep));
    const auto site = [](const char *host, double askedAt) {
        return QJsonObject{
            {QStringLiteral("origin"), QStringLiteral("https:") + QLatin1String("//") + QLatin1String(host)},
            {QStringLiteral("askedAt"), askedAt}};
    };
    state.insert(QStringLiteral("askedOrigins"),
        QJsonArray{site("menu.shop.example", 1699999820000), site("till-2.shop.example:8443", 1699990000000)});
    Answers answers = both(state, shopAlerts());
    const QString unsearched = QStringLiteral("خدمة Avahi متوقفة على هذا الجهاز فلم يجرِ البحث.");
    answers.insert("/admin/discover/bonjour",
        toJson({{QStringLiteral("services"), QJsonArray()}, {QStringLiteral("message"), unsearched}}));
    const QJsonObject refusal{{QStringLiteral("message"),
        QStringLiteral("العنوان ناقص أو رقم فيه أكبر من 255. اكتب عنوان الطابعة وحده، مثل 192.168.1.50.")}};
    answers.insert("/admin/printers/add", toJson({{QStringLiteral("error"), refusal}}));
    return answers;
}

Answers crowded()
{
    QJsonObject state = shopState();
    QJsonObject alerts = shopAlerts();
    const auto renumber = [](QJsonObject &object, int i) {
        number(object, QStringLiteral("id"), i);
        if (object.contains(QStringLiteral("name")))
            number(object, QStringLiteral("name"), i);
    };
    const auto grow = [&renumber](QJsonObject &holder, const char *list, int times) {
        holder.insert(QLatin1String(list), repeated(holder.value(QLatin1String(list)).toArray(), times, renumber));
    };
    grow(state, "printers", 500);
    grow(state, "recentJobs", 5000);
    grow(alerts, "alerts", 300);
    QJsonArray origins = state.value(QStringLiteral("allowedOrigins")).toArray();
    for (int i = 0; i < 200; ++i)
        origins.append(QStringLiteral("https:") + QStringLiteral("//branch-%1.shop.example").arg(i + 1));
    state.insert(QStringLiteral("allowedOrigins"), origins);
    return both(state, alerts);
}

Answers longTexts()
{
    QJsonObject state = shopState();
    QJsonObject alerts = shopAlerts();
    const QStringList names = {
        QStringLiteral("طابعة الكاشير الرئيسي في الفرع الجديد بجانب المدخل الشرقي للمجمع التجاري الكبير قرب المواقف"),
        QStringLiteral("EPSON_TM-T88VI_Receipt_Front_Desk_Very_Long_Queue_Name_Without_Any_Blank_In_It_At_All"),
        QStringLiteral("طابعة Kitchen رقم 2 (Epson TM-T20III) – المطبخ الساخن <b>bold</b> & <img src=x>"),
        QStringLiteral("سطر أول\nسطر ثان\nسطر ثالث")};
    const auto rename = [&names](QJsonObject &printer, int i) {
        printer.insert(QStringLiteral("name"), names.at(i % names.size()));
        printer.insert(QStringLiteral("profile"), QJsonValue::Null);
    };
    state.insert(QStringLiteral("printers"), changed(state.value(QStringLiteral("printers")).toArray(), rename));
    const auto retitle = [&names](QJsonObject &alert, int i) {
        alert.insert(QStringLiteral("title"), names.at(i % names.size()));
        alert.insert(QStringLiteral("message"), names.join(u' '));
    };
    alerts.insert(QStringLiteral("alerts"), changed(alerts.value(QStringLiteral("alerts")).toArray(), retitle));
    const auto relabel
        = [&names](QJsonObject &job, int i) { job.insert(QStringLiteral("printerName"), names.at(i % names.size())); };
    state.insert(QStringLiteral("recentJobs"), changed(state.value(QStringLiteral("recentJobs")).toArray(), relabel));
    const QString site
        = QStringLiteral("https:") + QStringLiteral("//a-very-long-name-of-a-branch.%1.shop.example:8443");
    state.insert(QStringLiteral("allowedOrigins"),
        QJsonArray{site.arg(QStringLiteral("in-the-new-commercial-centre-at-the-eastern-entrance")), site.arg(1)});
    state.insert(QStringLiteral("pairedSites"),
        QJsonArray{QJsonObject{{QStringLiteral("id"), QStringLiteral("s")}, {QStringLiteral("origin"), site.arg(1)},
            {QStringLiteral("name"), names.first()}, {QStringLiteral("createdAt"), 1699000000000.0}}});
    return withSearches(both(state, alerts), names.at(1));
}

} // namespace

std::span<const Situation> situations()
{
    static const Situation table[] = {
        {QStringLiteral("shop"), QStringLiteral("يوم عادي"), shop},
        {QStringLiteral("quiet"), QStringLiteral("بلا تحذيرات"), quiet},
        {QStringLiteral("offline"), QStringLiteral("كل الطابعات منقطعة"), offline},
        {QStringLiteral("waiting"), QStringLiteral("طابعات تنتظر"), waiting},
        {QStringLiteral("empty"), QStringLiteral("بلا شيء"), empty},
        {QStringLiteral("stopped"), QStringLiteral("الخدمة متوقفة"), [] { return Answers(); }},
        {QStringLiteral("long"), QStringLiteral("نصوص طويلة"), longTexts},
        {QStringLiteral("crowded"), QStringLiteral("قوائم كبيرة"), crowded},
    };
    return table;
}

const Situation *findSituation(const QString &name)
{
    const auto found = std::ranges::find(situations(), name, &Situation::name);
    return found == situations().end() ? nullptr : &*found;
}

} // namespace zemrak::test
