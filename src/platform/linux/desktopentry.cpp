#include "platform/linux/desktopentry.h"

namespace zemrak::linux_ {

namespace {

// The escapes of string values; anything else after a backslash stands for itself.
QString unescaped(const QString &value)
{
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != QLatin1Char('\\') || i + 1 == value.size()) {
            text += value[i];
            continue;
        }
        switch (value[++i].unicode()) {
        case 's':
            text += QLatin1Char(' ');
            break;
        case 'n':
            text += QLatin1Char('\n');
            break;
        case 't':
            text += QLatin1Char('\t');
            break;
        case 'r':
            text += QLatin1Char('\r');
            break;
        case '\\':
            text += QLatin1Char('\\');
            break;
        default:
            text += QLatin1Char('\\');
            text += value[i];
        }
    }
    return text;
}

bool needsQuotes(const QString &word)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    for (const QChar c : word) {
        if (reserved.contains(c))
            return true;
    }
    return word.isEmpty();
}

QString quoted(const QString &word)
{
    QString text;
    for (const QChar c : word) {
        if (QStringLiteral("\"`$\\").contains(c))
            text += QLatin1Char('\\');
        text += c;
    }
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// Takes the field codes out of a word; "%%" is a percent sign. None for a lone or unknown code.
std::optional<QString> withoutFieldCodes(const QString &word)
{
    QString text;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (word[i] != QLatin1Char('%')) {
            text += word[i];
            continue;
        }
        if (++i == word.size() || !QStringLiteral("%fFuUickdDnNvm").contains(word[i]))
            return std::nullopt;
        if (word[i] == QLatin1Char('%'))
            text += word[i];
    }
    return text;
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::parse(const QString &text)
{
    DesktopEntry entry;
    bool inGroup = false;
    bool found = false;
    for (const QString &rawLine : text.split(QLatin1Char('\n'))) {
        const QString line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('['))) {
            inGroup = line == QLatin1String("[Desktop Entry]");
            found |= inGroup;
            continue;
        }
        if (!inGroup)
            continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0)
            return std::nullopt;
        entry.m_values.insert(line.left(equals).trimmed(), unescaped(line.mid(equals + 1).trimmed()));
    }
    return found ? std::optional(entry) : std::nullopt;
}

QStringList DesktopEntry::list(const QString &key) const
{
    return value(key).split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

std::optional<QStringList> DesktopEntry::exec() const
{
    const QString line = value(QStringLiteral("Exec"));
    QStringList words;
    std::optional<QString> word;
    bool inQuotes = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == QLatin1Char('"')) {
            inQuotes = !inQuotes;
            word = word.value_or(QString());
        } else if (inQuotes && c == QLatin1Char('\\') && i + 1 < line.size()) {
            word = word.value_or(QString()) + line[++i];
        } else if (!inQuotes && c.isSpace()) {
            if (word)
                words.append(*std::exchange(word, std::nullopt));
        } else {
            word = word.value_or(QString()) + c;
        }
    }
    if (inQuotes)
        return std::nullopt;
    if (word)
        words.append(*word);

    QStringList result;
    for (const QString &raw : words) {
        const std::optional<QString> plain = withoutFieldCodes(raw);
        if (!plain)
            return std::nullopt;
        if (!plain->isEmpty() || raw.isEmpty())
            result.append(*plain);
    }
    return result.isEmpty() ? std::nullopt : std::optional(result);
}

QString escapedValue(const QString &text)
{
    QString value;
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '\\':
            value += QLatin1String("\\\\");
            break;
        case '\n':
            value += QLatin1String("\\n");
            break;
        case '\t':
            value += QLatin1String("\\t");
            break;
        case '\r':
            value += QLatin1String("\\r");
            break;
        default:
            value += c;
        }
    }
    // Readers drop blanks around a value.
    if (value.startsWith(QLatin1Char(' ')))
        value.replace(0, 1, QLatin1String("\\s"));
    return value;
}

QString execValue(const QStringList &words)
{
    QStringList parts;
    for (QString word : words) {
        word.replace(QLatin1Char('%'), QLatin1String("%%"));
        parts.append(needsQuotes(word) ? quoted(word) : word);
    }
    return escapedValue(parts.join(QLatin1Char(' ')));
}

} // namespace zemrak::linux_
