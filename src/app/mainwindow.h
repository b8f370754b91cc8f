#pragma once

#include "host/appearancesettings.h"

#include <QString>
#include <QtPlugin>

#include <functional>
#include <memory>

namespace zemrak {

class Agent;
class Clock;
class UserDefaults;

/// The one main window, as the rest of the application knows it. Main thread only.
class MainWindow
{
public:
    virtual ~MainWindow() = default;

    /// Builds the window if there is none, and brings it to the front. `activationToken` is what the desktop handed to
    /// whoever asked for the window; empty when it handed nothing. Asked for while close() waits, it comes right after.
    virtual void show(const QString &activationToken) = 0;
    /// Destroys the whole scene and what stands behind it before it returns, so that their memory is given back; the
    /// next show() builds a new one, which starts on the first page. Changes that wait to be saved are sent first, with
    /// two seconds for their answers, in which events are dealt with.
    virtual void close() = 0;
    [[nodiscard]] virtual bool isOpen() const = 0;
    /// `closed` is called after the window is gone, whoever closed it.
    virtual void onClosed(std::function<void()> closed) = 0;
};

/// What the window works with. Everything outlives it.
struct MainWindowServices
{
    Agent &agent;
    UserDefaults &defaults;
    Clock &clock;
    /// Called once, when the window is first shown: until then nobody needs the desktop's answers.
    std::function<std::unique_ptr<AppearanceSettings>()> makeAppearanceSettings;
};

/// The root object of the plugin that holds the window.
class MainWindowPlugin
{
public:
    virtual ~MainWindowPlugin() = default;

    [[nodiscard]] virtual std::unique_ptr<MainWindow> create(const MainWindowServices &services) = 0;
};

} // namespace zemrak

#define ZEMRAK_MAIN_WINDOW_IID "com.zemrak.Printer.MainWindow/1"
Q_DECLARE_INTERFACE(zemrak::MainWindowPlugin, ZEMRAK_MAIN_WINDOW_IID)
