#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

namespace zemrak {

/// What came of asking the running copy how things stand.
struct RunningCopyAnswer
{
    enum class Kind
    {
        NoCopy, ///< none runs for this user
        Silent, ///< one runs, or may run, and has not answered; `reason` says why
        Told, ///< `report` is what it said
    };
    Kind kind = Kind::NoCopy;
    QByteArray report;
    QString reason; ///< one English sentence
};

/// The copy of this application that runs already, as another process of the same user sees it.
class RunningCopy
{
public:
    virtual ~RunningCopy() = default;

    /// Asks for its report; starts nothing and shows nothing. Blocks for `patience` at most. Needs a QCoreApplication.
    /// After Silent a request may still be under way: the process is to end without waiting for it.
    [[nodiscard]] virtual RunningCopyAnswer ask(std::chrono::milliseconds patience) = 0;
};

} // namespace zemrak
