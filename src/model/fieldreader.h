#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

namespace zemrak {

// A single JSON value as one type; none when it has another type. A number is an integer when it has no fraction
// (5 and 5.0 alike) and fits 64 bits with its sign.
[[nodiscard]] std::optional<QString> toText(const QJsonValue &value);
[[nodiscard]] std::optional<qint64> toInteger(const QJsonValue &value);
[[nodiscard]] std::optional<double> toNumber(const QJsonValue &value);
[[nodiscard]] std::optional<bool> toBoolean(const QJsonValue &value);

/// Reads the fields of one JSON object strictly: the first field that is missing or of the wrong type makes ok() false
/// for good, so that a record is read in one go and judged once at the end.
class FieldReader
{
public:
    explicit FieldReader(const QJsonValue &value);

    [[nodiscard]] bool ok() const { return m_ok; }

    [[nodiscard]] QString text(QLatin1String key) { return required(toText(m_object.value(key))); }
    [[nodiscard]] qint64 integer(QLatin1String key) { return required(toInteger(m_object.value(key))); }
    [[nodiscard]] double number(QLatin1String key) { return required(toNumber(m_object.value(key))); }
    [[nodiscard]] bool boolean(QLatin1String key) { return required(toBoolean(m_object.value(key))); }
    [[nodiscard]] QList<QString> texts(QLatin1String key);

    /// Missing and null both give no value; any other type than the asked one fails the record.
    [[nodiscard]] std::optional<QString> optionalText(QLatin1String key) { return optional(key, toText); }
    [[nodiscard]] std::optional<double> optionalNumber(QLatin1String key) { return optional(key, toNumber); }

    /// A list whose every element must decode.
    template <typename Record> [[nodiscard]] QList<Record> records(QLatin1String key)
    {
        return elements<Record>(key, Record::decode);
    }

private:
    template <typename Value> Value required(std::optional<Value> value)
    {
        m_ok = m_ok && value.has_value();
        return value ? *std::move(value) : Value{};
    }

    template <typename Convert> auto optional(QLatin1String key, Convert convert) -> decltype(convert(QJsonValue()))
    {
        const QJsonValue value = m_object.value(key);
        if (value.isUndefined() || value.isNull())
            return {};
        auto converted = convert(value);
        m_ok = m_ok && converted.has_value();
        return converted;
    }

    template <typename Value, typename Convert> QList<Value> elements(QLatin1String key, Convert convert)
    {
        const QJsonValue value = m_object.value(key);
        m_ok = m_ok && value.isArray();
        const QJsonArray array = value.toArray();
        QList<Value> result;
        result.reserve(array.size());
        for (qsizetype i = 0; m_ok && i < array.size(); ++i)
            result.append(required<Value>(convert(array.at(i))));
        return result;
    }

    QJsonObject m_object;
    bool m_ok;
};

} // namespace zemrak
