#pragma once

#include "base/clock.h"
#include "host/loginitem.h"
#include "host/userdefaults.h"

#include <QDateTime>
#include <QObject>
#include <QStringList>

#include <chrono>

namespace zemrak {

/// Whether a launch with `arguments`, `uptime` after the computer was started, is one that nobody made by hand: it
/// carries the login item's argument, or comes within the first five minutes.
[[nodiscard]] bool isAutomaticStart(const QStringList &arguments, std::chrono::milliseconds uptime);

/// Keeps the application registered to start with the computer, as long as the person wishes it: remembers the wish
/// even when the desktop refuses, repairs the entry at launch, and keeps the proof that it worked. Main thread only.
class LaunchAtLogin : public QObject
{
    Q_OBJECT

public:
    /// `bundlePath`: where the running application lives.
    LaunchAtLogin(LoginItem &item, UserDefaults &defaults, Clock &clock, QString bundlePath, QObject *parent = nullptr);

    /// As of the last refreshLoginState(), which every operation here ends with.
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin; }
    [[nodiscard]] bool loginNeedsApproval() const { return m_loginNeedsApproval; }
    /// The last automatic start; invalid when none was ever seen.
    [[nodiscard]] QDateTime lastSystemStart() const { return m_lastSystemStart; }

    void refreshLoginState();
    /// A refusal is a line in the log; the wish is kept, and tried again at the next launch.
    void setLaunchAtLogin(bool on);
    /// The repair by hand: registers anew, and says how it went.
    void reRegisterLogin();
    /// Once at launch: repairs an entry that is wished for but switched off, gone, or made for another folder.
    void healLoginItemIfNeeded();
    /// Notes that this launch is an automatic one.
    void recordSystemStart();

Q_SIGNALS:
    void launchAtLoginChanged();
    void loginNeedsApprovalChanged();
    void lastSystemStartChanged();
    /// How reRegisterLogin() went, in Arabic, for the person to read.
    void notice(const QString &text);
    /// Why the desktop refused, for the service's log; begins a line and does not end it.
    void logged(const QString &text);

private:
    LoginItem &m_item;
    UserDefaults &m_defaults;
    Clock &m_clock;
    QString m_bundlePath;
    QDateTime m_lastSystemStart;
    bool m_launchAtLogin = false;
    bool m_loginNeedsApproval = false;
};

} // namespace zemrak
