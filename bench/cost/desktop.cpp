#include "desktop.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <systemd/sd-bus.h>
#include <xcb/xcb.h>

namespace zemrak::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int16_t width = 1280;
constexpr std::int16_t height = 900;
constexpr const char *registrar = "org.kde.StatusNotifierWatcher";

template <typename Thing> using Owned = std::unique_ptr<Thing, decltype([](Thing *thing) { std::free(thing); })>;

void must(int result, const char *what)
{
    if (result < 0)
        giveUp(std::string(what) + ": " + std::to_string(result));
}

int noteItem(sd_bus_message *message, void *item, sd_bus_error *)
{
    if (auto *first = static_cast<std::string *>(item); first->empty())
        *first = sd_bus_message_get_sender(message);
    return sd_bus_reply_method_return(message, "");
}

int hasHost(sd_bus *, const char *, const char *, const char *, sd_bus_message *answer, void *, sd_bus_error *)
{
    return sd_bus_message_append(answer, "b", 1);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic" // the macros are C's
const std::array<sd_bus_vtable, 4> registrarFace{
    {SD_BUS_VTABLE_START(0), SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", noteItem, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", hasHost, 0, 0), SD_BUS_VTABLE_END}};
#pragma GCC diagnostic pop

// Nothing can be activated on it: what the desktop happens to have installed would be measured as well.
std::string busConfiguration(const std::string &folder)
{
    std::string file = folder + "/bus.conf";
    std::ofstream(file) << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
                           "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                           "<busconfig><type>session</type><listen>unix:dir="
                        << folder
                        << "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                           "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
                           "<allow own=\"*\"/></policy></busconfig>\n";
    return file;
}

} // namespace

Desktop::Desktop(const std::string &folder)
    : m_busDaemon(std::make_unique<Child>(std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address",
                                              "--config-file=" + busConfiguration(folder)},
        std::vector<std::string>{}, Child::Output::Read))
    , m_server(
          std::make_unique<Child>(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0",
                                      std::to_string(width) + "x" + std::to_string(height) + "x24", "-nolisten", "tcp"},
              std::vector<std::string>{}, Child::Output::Read))
    , m_busAddress(m_busDaemon->readLine())
    , m_displayName(":" + m_server->readLine())
{
    must(sd_bus_new(&m_bus), "No bus");
    must(sd_bus_set_address(m_bus, m_busAddress.c_str()), "The bus's address");
    must(sd_bus_set_bus_client(m_bus, 1), "The bus's kind");
    must(sd_bus_start(m_bus), "No connection to the bus");
    must(sd_bus_add_object_vtable(m_bus, nullptr, "/StatusNotifierWatcher", registrar, registrarFace.data(), &m_item),
        "No tray");
    must(sd_bus_request_name(m_bus, registrar, 0), "No name for the tray");

    m_display = xcb_connect(m_displayName.c_str(), nullptr);
    if (xcb_connection_has_error(m_display) != 0)
        giveUp("No connection to the display " + m_displayName);
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_display)).data->root;
}

Desktop::~Desktop()
{
    xcb_disconnect(m_display);
    sd_bus_flush_close_unref(m_bus);
}

std::vector<std::string> Desktop::environment() const
{
    return {"DISPLAY=" + m_displayName, "DBUS_SESSION_BUS_ADDRESS=" + m_busAddress,
        "DBUS_SYSTEM_BUS_ADDRESS=" + m_busAddress, "QT_QPA_PLATFORM=xcb"};
}

void Desktop::clickTrayItem()
{
    must(sd_bus_call_method_async(
             m_bus, nullptr, m_item.c_str(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
             [](sd_bus_message *, void *, sd_bus_error *) { return 0; }, nullptr, "ii", 0, 0),
        "The click on the tray's icon");
    must(sd_bus_flush(m_bus), "The click on the tray's icon");
}

bool Desktop::isPainted() const
{
    constexpr std::uint32_t allPlanes = 0xffffffff;
    const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(m_display,
        xcb_get_image(m_display, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, width / 2, height / 2, 1, 1, allPlanes), nullptr));
    if (!image)
        giveUp("The display shows nothing");
    const std::uint8_t *pixel = xcb_get_image_data(image.get());
    return (pixel[0] | pixel[1] | pixel[2]) != 0;
}

std::uint32_t Desktop::windowInTheMiddle() const
{
    const Owned<xcb_translate_coordinates_reply_t> found(xcb_translate_coordinates_reply(
        m_display, xcb_translate_coordinates(m_display, m_root, m_root, width / 2, height / 2), nullptr));
    if (!found || found->child == XCB_WINDOW_NONE)
        giveUp("There is no window to close");
    return found->child;
}

std::uint32_t Desktop::atom(std::string_view name) const
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_display, xcb_intern_atom(m_display, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void Desktop::closeWindow() const
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = windowInTheMiddle();
    message.type = atom("WM_PROTOCOLS");
    message.data.data32[0] = atom("WM_DELETE_WINDOW");
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(m_display, 0, message.window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&message));
    xcb_flush(m_display);
}

void Desktop::serve()
{
    int more = 1;
    while (more > 0) {
        more = sd_bus_process(m_bus, nullptr);
        must(more, "The bus has gone");
    }
    constexpr std::uint64_t patienceUs = 500;
    must(sd_bus_wait(m_bus, patienceUs), "The bus has gone");
}

void Desktop::waitFor(std::string_view what, const std::function<bool()> &done)
{
    const auto limit = Clock::now() + std::chrono::seconds(20);
    while (!done()) {
        if (Clock::now() > limit)
            giveUp("Waited in vain for " + std::string(what));
        serve();
    }
}

void Desktop::rest(double seconds)
{
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        int more = 1;
        while (more > 0) {
            more = sd_bus_process(m_bus, nullptr);
            must(more, "The bus has gone");
        }
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()).count();
        if (left > 0)
            must(sd_bus_wait(m_bus, static_cast<std::uint64_t>(left)), "The bus has gone");
    }
}

} // namespace zemrak::bench
