#pragma once

#include "support/privatebus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace zemrak::test {

/// One who cannot see a program's windows: is told what is in them, and presses it, over a test's own bus. Must be
/// there before the program starts. Questions block, so the program must live in another process. Elements go by their
/// names; of several that bear one, the first that is shown is meant, from the top of the window.
class ScreenReader final : public QDBusVirtualObject
{
    Q_OBJECT

public:
    explicit ScreenReader(const QString &busAddress);

    /// A program has come that can be asked. Until then it may wait for an answer of ours: ask it nothing else either.
    [[nodiscard]] bool knowsProgram() const { return !m_program.isEmpty(); }
    /// It is shown just now. False while no program can be asked.
    [[nodiscard]] bool finds(const QString &name) const;
    [[nodiscard]] bool findsHeading(const QString &name) const;
    [[nodiscard]] bool findsBox(const QString &name, bool ticked) const;
    // These also reach what would have to be scrolled to. False when there is none that takes it.
    [[nodiscard]] bool press(const QString &name) const;
    [[nodiscard]] bool focus(const QString &name) const; ///< gives it the keyboard
    [[nodiscard]] bool isFocused(const QString &name) const;
    /// What stands in a field.
    [[nodiscard]] QString textOf(const QString &name) const;

    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    /// Paths of all that bear this name, in the order of the tree.
    [[nodiscard]] QStringList allNamed(const QString &name) const;
    void collect(const QString &path, const QString &name, int depth, QStringList &found) const;
    [[nodiscard]] bool findsAs(
        uint role, const QString &name, const std::function<bool(const QString &path)> &fits) const;
    [[nodiscard]] QString findShown(const QString &name) const;
    [[nodiscard]] bool act(const QString &name, const QString &action) const;
    [[nodiscard]] bool doAction(const QString &path, const QString &action) const;
    [[nodiscard]] bool hasState(const QString &path, int state) const;
    [[nodiscard]] QVariant ask(
        const QString &path, const QString &interface, const QString &method, const QVariantList &arguments = {}) const;

    QString m_address;
    BusClient m_client;
    QString m_program; ///< its name on the bus
};

} // namespace zemrak::test
