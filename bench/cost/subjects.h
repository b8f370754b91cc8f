#pragma once

#include "child.h"
#include "desktop.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace zemrak::bench {

/// What the stand-in for the service answers with.
struct StateKind
{
    const char *name;
    std::size_t bytes; ///< at least
    bool changes; ///< with every answer
};

/// The application and its floors, all in one home of the bench's own.
class Subjects
{
public:
    /// `bundle` is the application's, `tools` where the floors' programs are, `folder` an empty one to work in.
    Subjects(std::filesystem::path bundle, std::filesystem::path tools, std::filesystem::path folder,
        const Desktop &desktop);

    /// As at login: in the tray, without a window, with the first-run wizard behind it.
    [[nodiscard]] std::unique_ptr<Child> application() const { return applicationOf(m_bundle, {}); }
    /// The same, but its service is one that answers with such a state.
    [[nodiscard]] std::unique_ptr<Child> applicationWith(const StateKind &state);
    /// A Qt program with a tray icon that makes the same two requests at the same pace.
    [[nodiscard]] std::unique_ptr<Child> trayFloor() const;
    /// A program of nothing but these requests.
    [[nodiscard]] std::unique_ptr<Child> loopFloor() const;
    /// The print service alone, for the floors to ask.
    [[nodiscard]] std::unique_ptr<Child> service() const;

    [[nodiscard]] static bool portIsFree();
    /// The service, or its stand-in, can be asked.
    [[nodiscard]] static bool serviceAnswers() { return !portIsFree(); }

private:
    [[nodiscard]] std::unique_ptr<Child> applicationOf(
        const std::filesystem::path &bundle, const std::vector<std::string> &more) const;
    [[nodiscard]] std::string tokenFile() const;

    std::filesystem::path m_bundle;
    std::filesystem::path m_tools;
    std::filesystem::path m_folder;
    std::vector<std::string> m_environment;
};

} // namespace zemrak::bench
