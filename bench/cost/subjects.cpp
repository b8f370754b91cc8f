#include "subjects.h"

#include <fstream>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zemrak::bench {

namespace fs = std::filesystem;

namespace {

constexpr int servicePort = 17731;
const std::vector<std::string> paths{"/admin/alerts", "/admin/state"};

} // namespace

Subjects::Subjects(fs::path bundle, fs::path tools, fs::path folder, const Desktop &desktop)
    : m_bundle(std::move(bundle))
    , m_tools(std::move(tools))
    , m_folder(std::move(folder))
    , m_environment(desktop.environment())
{
    const fs::path config = m_folder / ".config";
    const fs::path runtime = m_folder / "run";
    fs::create_directories(config / "zemrak-printer");
    fs::create_directories(runtime);
    fs::permissions(runtime, fs::perms::owner_all);
    std::ofstream(config / "zemrak-printer/settings.ini") << "[General]\nonboardingDone=true\n";
    m_environment.insert(m_environment.end(),
        {"HOME=" + m_folder.string(), "XDG_CONFIG_HOME=" + config.string(), "XDG_RUNTIME_DIR=" + runtime.string(),
            "XDG_DATA_HOME=" + (m_folder / ".local/share").string(), "XDG_CACHE_HOME=" + (m_folder / ".cache").string(),
            "QT_LOGGING_RULES=zemrak.*.info=false"});
}

std::unique_ptr<Child> Subjects::applicationOf(const fs::path &bundle, const std::vector<std::string> &more) const
{
    std::vector<std::string> environment = m_environment;
    environment.insert(environment.end(), more.begin(), more.end());
    return std::make_unique<Child>(
        std::vector<std::string>{bundle / "bin/zemrak-printer", "--automatic-start"}, environment);
}

std::unique_ptr<Child> Subjects::applicationWith(const StateKind &state)
{
    const fs::path copy = m_folder / "bundle";
    if (!fs::exists(copy)) {
        fs::create_directories(copy);
        fs::copy(m_bundle / "bin", copy / "bin", fs::copy_options::recursive);
        fs::copy(m_bundle / "lib", copy / "lib", fs::copy_options::recursive);
        fs::copy(
            m_bundle / "resources", copy / "resources", fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        fs::copy_file(m_tools / "standin.mjs", copy / "resources/agent/bin/zemrak-local-print.mjs",
            fs::copy_options::overwrite_existing);
    }
    return applicationOf(copy,
        {"BENCH_STATE_BYTES=" + std::to_string(state.bytes),
            std::string("BENCH_STATE_CHANGES=") + (state.changes ? "1" : "0")});
}

std::unique_ptr<Child> Subjects::trayFloor() const
{
    std::vector<std::string> command{m_tools / "floor_tray", tokenFile()};
    for (const std::string &path : paths)
        command.push_back("http://127.0.0.1:" + std::to_string(servicePort) + path);
    return std::make_unique<Child>(command, m_environment);
}

std::unique_ptr<Child> Subjects::loopFloor() const
{
    std::vector<std::string> command{m_tools / "floor_loop", tokenFile(), std::to_string(servicePort)};
    command.insert(command.end(), paths.begin(), paths.end());
    return std::make_unique<Child>(command, m_environment);
}

std::unique_ptr<Child> Subjects::service() const
{
    return std::make_unique<Child>(std::vector<std::string>{m_bundle / "resources/node",
                                       m_bundle / "resources/agent/bin/zemrak-local-print.mjs", "run"},
        m_environment);
}

std::string Subjects::tokenFile() const
{
    return m_folder / "Library/Application Support/Zemrak Local Print/admin.token";
}

bool Subjects::portIsFree()
{
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(servicePort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool taken = ::connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    ::close(probe);
    return !taken;
}

} // namespace zemrak::bench
