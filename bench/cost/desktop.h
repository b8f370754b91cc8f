#pragma once

#include "child.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct sd_bus;
struct xcb_connection_t;

namespace zemrak::bench {

/// A display, a session bus and a tray of the bench's own. Without Qt, so that no page of the measured programs'
/// libraries is shared with the one that measures. Ends the program when they cannot be had.
class Desktop
{
public:
    explicit Desktop(const std::string &folder);
    ~Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;

    /// What puts a program on it; each "NAME=value".
    [[nodiscard]] std::vector<std::string> environment() const;

    /// Whether an item has come into the tray since forgetTrayItem(); the first one counts.
    [[nodiscard]] bool hasTrayItem() const { return !m_item.empty(); }
    void forgetTrayItem() { m_item.clear(); }
    /// Clicks the item; does not wait for what comes of it.
    void clickTrayItem();

    /// Something other than the empty screen is drawn in the middle of the display.
    [[nodiscard]] bool isPainted() const;
    /// Asks the window there to close, as the button in its frame does.
    void closeWindow() const;

    /// Serves the tray until `done` says so, asked every half millisecond; ends the program after 20 s.
    void waitFor(std::string_view what, const std::function<bool()> &done);
    void rest(double seconds);

private:
    void serve();
    [[nodiscard]] std::uint32_t windowInTheMiddle() const;
    [[nodiscard]] std::uint32_t atom(std::string_view name) const;

    std::unique_ptr<Child> m_busDaemon;
    std::unique_ptr<Child> m_server;
    std::string m_busAddress;
    std::string m_displayName;
    sd_bus *m_bus = nullptr;
    xcb_connection_t *m_display = nullptr;
    std::uint32_t m_root = 0;
    std::string m_item; ///< bus name of the item in the tray
};

} // namespace zemrak::bench
