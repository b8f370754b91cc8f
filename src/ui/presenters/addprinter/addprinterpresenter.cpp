#include "ui/presenters/addprinter/addprinterpresenter.h"

#include "ui/presenters/text/wholenumber.h"

#include <QPointer>

#include <limits>

namespace zemrak {

namespace {

constexpr int usualPort = 9100;
constexpr int largestPort = 65535;

// A number no port can be stays one: the service judges it.
int sendable(qint64 port)
{
    return int(std::clamp<qint64>(port, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

QVariantMap tabEntry(const QString &value, const QString &label)
{
    return {{QStringLiteral("value"), value}, {QStringLiteral("label"), label}};
}

} // namespace

AddPrinterPresenter::AddPrinterPresenter(Commands &commands, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
{
    for (const FoundPrinterModel *hits : {&m_hosts, &m_bonjour, &m_usb})
        connect(hits, &CountedListModel::countChanged, this, &AddPrinterPresenter::hintsChanged);
}

void AddPrinterPresenter::setTab(const QString &tab)
{
    if (m_tab == tab)
        return;
    m_tab = tab;
    Q_EMIT tabChanged();
}

void AddPrinterPresenter::setName(const QString &name)
{
    if (m_name == name)
        return;
    m_name = name;
    Q_EMIT manualChanged();
}

void AddPrinterPresenter::setHost(const QString &host)
{
    if (m_host == host)
        return;
    m_host = host;
    m_refusal.clear();
    Q_EMIT manualChanged();
}

void AddPrinterPresenter::setPort(const QString &port)
{
    if (m_port == port)
        return;
    m_port = port;
    m_refusal.clear();
    Q_EMIT manualChanged();
}

QVariantList AddPrinterPresenter::tabs() const
{
    return {tabEntry(QStringLiteral("net"), QStringLiteral("شبكة (LAN / Wi-Fi)")),
        tabEntry(QStringLiteral("usb"), QStringLiteral("USB")),
        tabEntry(QStringLiteral("bluetooth"), QStringLiteral("بلوتوث"))};
}

QString AddPrinterPresenter::networkHint() const
{
    if (isScanning())
        return QStringLiteral("جارٍ البحث…");
    return m_hosts.count() + m_bonjour.count() > 0 ? QString()
                                                   : QStringLiteral("اضغط بحث، أو أدخل العنوان يدويًا أدناه.");
}

QString AddPrinterPresenter::portProblem() const
{
    if (m_port.isEmpty())
        return {};
    const std::optional<qint64> port = wholeNumber(m_port);
    if (!port)
        return QStringLiteral("هذا ليس رقم منفذ، وسيُستخدم %1 بدلًا منه.").arg(usualPort);
    return *port < 1 || *port > largestPort ? QStringLiteral("رقم المنفذ بين 1 و%1.").arg(largestPort) : QString();
}

QString AddPrinterPresenter::hindrance(std::initializer_list<Kind> kinds) const
{
    QStringList told;
    for (const Kind kind : kinds) {
        if (!m_searching[kind] && !m_hindrances[kind].isEmpty() && !told.contains(m_hindrances[kind]))
            told.append(m_hindrances[kind]);
    }
    return told.join(u' ');
}

QString AddPrinterPresenter::networkOutcome() const
{
    if (const QString why = hindrance({Network, Bonjour}); !why.isEmpty())
        return why;
    const bool nothing
        = !isScanning() && (m_searched[Network] || m_searched[Bonjour]) && m_hosts.count() + m_bonjour.count() == 0;
    return nothing ? QStringLiteral("لم يُعثر على طابعة في الشبكة. تأكد من أنها تعمل وموصولة بالشبكة نفسها.")
                   : QString();
}

QString AddPrinterPresenter::usbHint() const
{
    return isScanning() ? QStringLiteral("جارٍ البحث…") : QString();
}

QString AddPrinterPresenter::usbOutcome() const
{
    if (const QString why = hindrance({Usb}); !why.isEmpty())
        return why;
    return !isScanning() && m_searched[Usb] && m_usb.count() == 0
        ? QStringLiteral("لم يُعثر على طابعة USB. تأكد من الكابل ومن أنها تعمل.")
        : QString();
}

template <typename Record>
void AddPrinterPresenter::search(Kind kind, FoundPrinterModel &hits, void (Commands::*scan)(Commands::Found<Record>))
{
    if (m_searching[kind])
        return;
    setSearching(kind, true);
    (m_commands.*scan)([self = QPointer(this), kind, &hits](const QList<Record> &records, const QString &why) {
        if (!self)
            return;
        QList<FoundPrinter> rows;
        for (const Record &record : records)
            rows.append(found(record));
        hits.show(rows);
        self->m_searched[kind] = true;
        self->m_hindrances[kind] = why;
        self->setSearching(kind, false);
    });
}

void AddPrinterPresenter::setSearching(Kind kind, bool searching)
{
    m_searching[kind] = searching;
    Q_EMIT scanningChanged();
    Q_EMIT hintsChanged();
}

void AddPrinterPresenter::searchNetwork()
{
    search(Network, m_hosts, &Commands::scanNetwork);
}

void AddPrinterPresenter::searchBonjour()
{
    search(Bonjour, m_bonjour, &Commands::scanBonjour);
}

void AddPrinterPresenter::searchUsb()
{
    search(Usb, m_usb, &Commands::scanUsb);
}

void AddPrinterPresenter::add(FoundPrinterModel &hits, int row)
{
    if (row < 0 || row >= hits.count())
        return;
    const FoundPrinter hit = hits.rows().at(row);
    if (!hit.note.isEmpty() || hit.adding != FoundPrinter::Adding::NotYet)
        return;
    hits.mark(hit.id, FoundPrinter::Adding::UnderWay);
    const auto done = [self = QPointer(this), &hits, id = hit.id](bool ok) {
        if (self)
            hits.mark(id, ok ? FoundPrinter::Adding::Done : FoundPrinter::Adding::NotYet);
    };
    if (hit.uri.isEmpty())
        m_commands.addNetwork(
            hit.name, hit.host, sendable(hit.port), hit.transport, [done](bool ok, const QString &) { done(ok); });
    else
        m_commands.addUsb(hit.name, hit.uri, done);
}

void AddPrinterPresenter::addHost(int row)
{
    add(m_hosts, row);
}

void AddPrinterPresenter::addBonjour(int row)
{
    add(m_bonjour, row);
}

void AddPrinterPresenter::addUsb(int row)
{
    add(m_usb, row);
}

void AddPrinterPresenter::addManual()
{
    if (!canAddManual() || m_addingManual)
        return;
    const QString name = m_name.isEmpty() ? QStringLiteral("Network ") + m_host : m_name;
    setAddingManual(true);
    m_commands.addNetwork(name, m_host, sendable(wholeNumber(m_port).value_or(usualPort)), QStringLiteral("raw"),
        [self = QPointer(this)](bool, const QString &hint) {
            if (!self)
                return;
            self->m_refusal = hint;
            self->setAddingManual(false);
        });
}

void AddPrinterPresenter::setAddingManual(bool adding)
{
    m_addingManual = adding;
    Q_EMIT manualChanged();
}

} // namespace zemrak
