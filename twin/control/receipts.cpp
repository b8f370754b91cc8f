#include "twin/control/receipts.h"

#include <QBuffer>
#include <QDir>
#include <QJsonDocument>
#include <QSaveFile>

namespace zemrak::twin {

namespace {

constexpr qsizetype keptBytes = 64 << 20;
constexpr int dotsPerMetre = 8000;

QByteArray pngOf(const paper::Dots &paper)
{
    QImage image = paper.toImage();
    if (image.isNull())
        return {};
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return buffer.data();
}

QString stem(int number)
{
    return QStringLiteral("receipt-%1").arg(number, 4, 10, QLatin1Char('0'));
}

} // namespace

Receipts::Receipts(const QString &folder, QObject *parent)
    : QObject(parent)
    , m_folder(folder)
{
    if (folder.isEmpty())
        return;
    const QDir place(folder);
    if (!place.mkpath(QStringLiteral(".")) || !QFileInfo(folder).isWritable())
        m_problem = QStringLiteral("%1 cannot be written to").arg(folder);
    const QStringList files = place.entryList({QStringLiteral("receipt-*.json")}, QDir::Files);
    for (const QString &file : files)
        m_next = std::max(m_next, file.mid(8, file.size() - 13).toInt() + 1);
}

bool Receipts::write(const QString &name, const QByteArray &bytes)
{
    QSaveFile file(m_folder + u'/' + name);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

void Receipts::keep(const paper::Receipt &receipt)
{
    Kept kept{m_next++, receipt.toJson(), pngOf(receipt.paper), receipt.bytes};
    kept.list.insert(QStringLiteral("number"), kept.number);
    ++m_count;
    if (!m_folder.isEmpty()) {
        const QString name = stem(kept.number);
        const bool written = (kept.png.isEmpty() || write(name + QStringLiteral(".png"), kept.png))
            && write(name + QStringLiteral(".bin"), kept.bytes)
            && write(name + QStringLiteral(".json"), QJsonDocument(kept.list).toJson());
        if (!written)
            qWarning("%s cannot be written to", qPrintable(m_folder));
    }
    m_kept.append(std::move(kept));
    dropOldest();
}

void Receipts::dropOldest()
{
    qsizetype bytes = 0;
    for (qsizetype i = m_kept.size() - 1; i >= 0; --i) {
        bytes += m_kept.at(i).png.size() + m_kept.at(i).bytes.size();
        if (m_kept.size() - i > most || (bytes > keptBytes && i < m_kept.size() - 1)) {
            m_kept.remove(0, i + 1);
            return;
        }
    }
}

void Receipts::clear()
{
    m_kept.clear();
    m_count = 0;
}

const Receipts::Kept *Receipts::find(int number) const
{
    for (const Kept &kept : m_kept)
        if (kept.number == number)
            return &kept;
    return nullptr;
}

QJsonArray Receipts::summary() const
{
    QJsonArray list;
    for (const Kept &kept : m_kept) {
        QJsonObject entry = kept.list;
        entry.remove(QStringLiteral("printed"));
        list.append(entry);
    }
    return list;
}

} // namespace zemrak::twin
