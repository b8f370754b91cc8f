#pragma once

#include "desktop.h"
#include "subjects.h"

#include <filesystem>
#include <memory>

namespace zemrak::bench {

/// A program whose icon is in the tray.
struct Start
{
    std::unique_ptr<Child> program;
    double iconMs = 0; ///< from its start until then
    double cpuMs = 0; ///< of the processor, until then
    double serviceMs = 0; ///< until its service was launched; not a floor's
};

struct Opening
{
    double ms; ///< from the click in the tray to the first picture
    double cpuMs; ///< of the processor, until then
};

/// The desktop and what runs on it.
class Stage
{
public:
    /// As for Subjects; `folder` is for the desktop, too.
    Stage(const std::filesystem::path &bundle, const std::filesystem::path &tools, const std::filesystem::path &folder);

    [[nodiscard]] Subjects &subjects() { return m_subjects; }

    /// Starts the application; returns when its service answers as well.
    [[nodiscard]] Start launch(std::unique_ptr<Child> application);
    [[nodiscard]] std::unique_ptr<Child> launchApplication() { return launch(m_subjects.application()).program; }
    [[nodiscard]] Start launchFloor();
    /// Returns when the service is gone, too.
    void end(std::unique_ptr<Child> &application);

    Opening openWindow(const Child &application);
    void closeWindow();
    void awaitService();
    void rest(double seconds) { m_desktop.rest(seconds); }

private:
    Desktop m_desktop;
    Subjects m_subjects;
};

} // namespace zemrak::bench
