#pragma once

#include "base/clock.h"
#include "host/printservice.h"
#include "model/agentstate.h"

#include <QByteArray>
#include <QObject>

#include <memory>
#include <optional>

namespace zemrak {

/// Reads the service's state every two seconds and holds the latest snapshot. Main thread only.
class StatePoll : public QObject
{
    Q_OBJECT

public:
    StatePoll(PrintService &service, Clock &clock, QObject *parent = nullptr);

    /// The latest snapshot; null while the service does not answer, or says what does not decode. Valid until
    /// stateChanged().
    [[nodiscard]] const AgentState *state() const { return m_state ? &*m_state : nullptr; }

    /// Tells the service with every poll whether a person looks at the window, as it asks printers more often then;
    /// until the first call nobody does. When it is shown, one poll is made at once, unless polling has been disarmed.
    void setWindowShown(bool shown);
    /// Polls every two seconds from now, and once extra after one second.
    void arm();
    /// Polls no more; an answer under way is still taken.
    void disarm();
    /// One poll.
    void refresh();

Q_SIGNALS:
    /// At the begin of every poll: the moment to look again at what else may have changed.
    void aboutToRefresh();
    /// The snapshot differs from the one before; never told for one that is the same.
    void stateChanged();
    /// The service gave a good answer, whether or not anything is new in it.
    void answered();

private:
    void ask(bool tellsClosed);
    void take(const PrintService::Answer &answer, bool toldClosed);
    void publish(std::optional<AgentState> state);

    PrintService &m_service;
    Clock &m_clock;
    std::unique_ptr<Timer> m_timer;
    std::optional<AgentState> m_state;
    bool m_windowShown = false;
    QByteArray m_body; ///< what m_state was decoded from: the same bytes again need no decoding
};

} // namespace zemrak
