#pragma once

#include "host/processactivities.h"
#include "host/userdefaults.h"

#include <QObject>

#include <memory>

namespace zemrak {

/// The person's wish that the computer does not fall asleep by itself, kept over restarts and carried out by at most
/// one activity. Main thread only.
class KeepAwake : public QObject
{
    Q_OBJECT

public:
    KeepAwake(ProcessActivities &activities, UserDefaults &defaults, QObject *parent = nullptr);

    /// The wish; it holds whether or not the system could be told.
    [[nodiscard]] bool isOn() const { return m_on; }
    void set(bool on);
    /// Once at launch: takes up a wish from earlier.
    void restore();

Q_SIGNALS:
    void changed();

private:
    ProcessActivities &m_activities;
    UserDefaults &m_defaults;
    std::unique_ptr<ProcessActivities::Activity> m_activity;
    bool m_on;
};

} // namespace zemrak
