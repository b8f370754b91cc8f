#pragma once

#include "app/toast.h"
#include "host/desktop.h"

namespace zemrak {

/// The system's own settings, opened for the person. Main thread only.
class SystemSettings
{
public:
    /// Both outlive this object.
    SystemSettings(Desktop &desktop, Toast &toast)
        : m_desktop(desktop)
        , m_toast(toast)
    {
    }

    /// Opens them at `pane`, or says by a short message that there are none.
    void open(Desktop::SettingsPane pane);

private:
    Desktop &m_desktop;
    Toast &m_toast;
};

} // namespace zemrak
