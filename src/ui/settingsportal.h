#pragma once

#include <QDBusPendingCall>
#include <QObject>
#include <QVariant>

#include <optional>

class QDBusMessage;
class QDBusPendingCallWatcher;

namespace zemrak {

/// What the desktop's settings portal says of the person's taste, read without waiting and followed from then on. A
/// desktop without a session bus or a portal simply says nothing. Main thread only.
class SettingsPortal : public QObject
{
    Q_OBJECT

public:
    explicit SettingsPortal(QObject *parent = nullptr);

    /// None: nothing said, or no preference.
    [[nodiscard]] std::optional<bool> prefersDark() const { return m_prefersDark; }
    [[nodiscard]] std::optional<bool> prefersNoAnimations() const { return m_noAnimations; }
    /// 1 is the ordinary size.
    [[nodiscard]] std::optional<double> textScale() const { return m_textScale; }

    /// Takes over answers that have arrived but were not delivered yet; never waits.
    void takeArrived();

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void onSettingChanged(const QDBusMessage &message);

private:
    void read(const QString &group, const QString &key);
    void take(QDBusPendingCallWatcher *watcher);
    void apply(const QString &group, const QString &key, QVariant value);

    QList<QDBusPendingCallWatcher *> m_waiting;
    std::optional<bool> m_prefersDark;
    std::optional<bool> m_noAnimations;
    std::optional<double> m_textScale;
};

} // namespace zemrak
