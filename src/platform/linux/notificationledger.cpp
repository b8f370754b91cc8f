#include "platform/linux/notificationledger.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>

namespace zemrak::linux_ {

namespace {

constexpr qint64 longest = 1024 * 1024; // bytes; a ledger is a few hundred short lines

} // namespace

NotificationLedger::NotificationLedger(QString fileName)
    : m_fileName(std::move(fileName))
{
    load();
}

void NotificationLedger::setBus(const QString &busId)
{
    if (m_busId == busId)
        return;
    m_busId = busId;
    m_server.clear();
    m_numbers.clear();
}

void NotificationLedger::add(const QString &id, const QString &server, uint number)
{
    if (std::exchange(m_server, server) != server)
        m_numbers.clear();
    m_numbers.insert(id, number);
    // Servers count upward.
    while (m_numbers.size() > capacity)
        m_numbers.erase(std::min_element(m_numbers.cbegin(), m_numbers.cend()));
    save();
}

std::optional<uint> NotificationLedger::take(const QString &id)
{
    const auto found = m_numbers.constFind(id);
    if (found == m_numbers.cend())
        return std::nullopt;
    const uint number = *found;
    m_numbers.erase(found);
    save();
    return number;
}

void NotificationLedger::forget(const QString &server, uint number)
{
    if (server == m_server && m_numbers.removeIf([number](auto entry) { return entry.value() == number; }) > 0)
        save();
}

bool NotificationLedger::knows(const QString &server, uint number) const
{
    return server == m_server && std::find(m_numbers.cbegin(), m_numbers.cend(), number) != m_numbers.cend();
}

void NotificationLedger::load()
{
    QFile file(m_fileName);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject ledger = QJsonDocument::fromJson(file.read(longest)).object();
    m_busId = ledger.value(QLatin1String("bus")).toString();
    m_server = ledger.value(QLatin1String("server")).toString();
    const QJsonObject numbers = ledger.value(QLatin1String("numbers")).toObject();
    for (auto entry = numbers.begin(); entry != numbers.end(); ++entry)
        m_numbers.insert(entry.key(), static_cast<uint>(entry.value().toInteger()));
}

void NotificationLedger::save() const
{
    QJsonObject numbers;
    for (auto entry = m_numbers.cbegin(); entry != m_numbers.cend(); ++entry)
        numbers.insert(entry.key(), static_cast<qint64>(entry.value()));
    const QJsonObject ledger{
        {QStringLiteral("bus"), m_busId}, {QStringLiteral("server"), m_server}, {QStringLiteral("numbers"), numbers}};
    // Losing the ledger costs no more than a notification that stays until the person closes it.
    QSaveFile file(m_fileName);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(ledger).toJson(QJsonDocument::Compact));
        file.commit();
    }
}

} // namespace zemrak::linux_
