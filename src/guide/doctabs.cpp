#include "guide/doctabs.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <optional>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcGuide, "zemrak.guide")

class Reader
{
public:
    explicit Reader(const QString &folder)
        : m_folder(folder + QLatin1Char('/'))
    {
    }

    GuideReading read()
    {
        for (const QJsonValue &id : json(QStringLiteral("tabs.json")).array())
            readTab(id.toString());
        if (m_reading.tabs.isEmpty())
            fault(QStringLiteral("no tabs"));
        return std::move(m_reading);
    }

private:
    void fault(const QString &what) { m_reading.faults.append(m_file + QStringLiteral(": ") + what); }

    std::optional<QByteArray> bytes(const QString &name)
    {
        QFile file(m_folder + name);
        if (file.open(QIODevice::ReadOnly))
            return file.readAll();
        fault(name + QStringLiteral(" cannot be read"));
        return {};
    }

    QJsonDocument json(const QString &name)
    {
        m_file = name;
        QJsonParseError error;
        QJsonDocument document = QJsonDocument::fromJson(bytes(name).value_or(QByteArray()), &error);
        if (error.error != QJsonParseError::NoError)
            fault(error.errorString());
        return document;
    }

    void readTab(const QString &id)
    {
        const QJsonObject object = json(QStringLiteral("tabs/%1.json").arg(id)).object();
        DocTab tab{id, text(object[QLatin1String("title")]), text(object[QLatin1String("icon")]), {}};
        for (const QJsonValue &block : object[QLatin1String("blocks")].toArray()) {
            if (const auto read = readBlock(block.toObject()))
                tab.blocks.append(*read);
        }
        if (tab.blocks.isEmpty())
            fault(QStringLiteral("no blocks"));
        m_reading.tabs.append(tab);
    }

    std::optional<DocBlock> readBlock(const QJsonObject &block)
    {
        const auto only = [&block](QLatin1String key) { return block.size() == 1 && block.contains(key); };
        if (only(QLatin1String("heading")))
            return DocHeading{text(block[QLatin1String("heading")])};
        if (only(QLatin1String("text")))
            return DocText{text(block[QLatin1String("text")])};
        if (only(QLatin1String("note")))
            return DocNote{text(block[QLatin1String("note")])};
        if (only(QLatin1String("table")))
            return readTable(block[QLatin1String("table")].toArray());
        if (block.size() == 2 && block.contains(QLatin1String("code")))
            return readCode(text(block[QLatin1String("code")]), text(block[QLatin1String("file")]));
        fault(QStringLiteral("a block of no known kind"));
        return {};
    }

    /// A string, or a list of strings, one a line.
    QString text(const QJsonValue &value)
    {
        QStringList lines;
        for (const QJsonValue &line : value.isArray() ? value.toArray() : QJsonArray{value})
            lines.append(line.toString());
        QString joined = lines.join(QLatin1Char('\n'));
        if (joined.trimmed().isEmpty())
            fault(QStringLiteral("an empty or missing text"));
        return joined;
    }

    std::optional<DocBlock> readTable(const QJsonArray &rows)
    {
        DocTable table;
        for (const QJsonValue &row : rows) {
            QStringList cells;
            for (const QJsonValue &cell : row.toArray())
                cells.append(text(cell));
            table.rows.append(cells);
        }
        const auto fits = [&table](const QStringList &row) { return row.size() == table.rows.first().size(); };
        if (!table.rows.isEmpty() && !table.rows.first().isEmpty()
            && std::all_of(table.rows.cbegin(), table.rows.cend(), fits))
            return table;
        fault(QStringLiteral("a table without cells, or with rows of different lengths"));
        return {};
    }

    std::optional<DocBlock> readCode(const QString &lang, const QString &file)
    {
        const auto content = bytes(QStringLiteral("samples/") + file);
        if (!content)
            return {};
        QString code = QString::fromUtf8(*content);
        while (code.endsWith(QLatin1Char('\n')))
            code.chop(1);
        return DocCode{lang, code};
    }

    QString m_folder;
    QString m_file; ///< being read
    GuideReading m_reading;
};

} // namespace

bool DocTable::monoFirst() const
{
    static const std::array titles{QStringLiteral("الطلب"), QStringLiteral("kind"), QStringLiteral("type"),
        QStringLiteral("الخيار"), QStringLiteral("errorCode"), QStringLiteral("الحالة"), QStringLiteral("الرمز"),
        QStringLiteral("العنوان"), QStringLiteral("دالة SDK")};
    return !rows.isEmpty() && !rows.first().isEmpty()
        && std::ranges::find(titles, rows.first().first()) != titles.end();
}

GuideReading readGuide(const QString &folder)
{
    return Reader(folder).read();
}

const QList<DocTab> &docTabs()
{
    static const QList<DocTab> tabs = [] {
        const GuideReading reading = readGuide(QStringLiteral(":/zemrak/guide"));
        for (const QString &fault : reading.faults)
            qCCritical(lcGuide).noquote() << "The guide is damaged:" << fault;
        return reading.tabs;
    }();
    return tabs;
}

} // namespace zemrak
