#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

namespace zemrak::linux_ {

/// The `[Desktop Entry]` group of a desktop file, its values with their escapes undone.
class DesktopEntry
{
public:
    /// None when the text has no such group, or a line in it is neither a key, a comment nor blank.
    [[nodiscard]] static std::optional<DesktopEntry> parse(const QString &text);

    /// Null when the key is absent.
    [[nodiscard]] QString value(const QString &key) const { return m_values.value(key); }
    /// Absent or anything but "true" is false.
    [[nodiscard]] bool isTrue(const QString &key) const { return value(key) == QLatin1String("true"); }
    /// The parts of a list such as `OnlyShowIn`.
    [[nodiscard]] QStringList list(const QString &key) const;
    /// The words of `Exec` after unquoting; field codes are left out. None when the quoting is broken or there is no
    /// word.
    [[nodiscard]] std::optional<QStringList> exec() const;

private:
    QHash<QString, QString> m_values;
};

/// `text` as the value of a key.
[[nodiscard]] QString escapedValue(const QString &text);
/// `words` as the value of `Exec`, ready to be written into the file.
[[nodiscard]] QString execValue(const QStringList &words);

} // namespace zemrak::linux_
