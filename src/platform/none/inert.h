#pragma once

#include "host/childguard.h"
#include "host/singleinstance.h"
#include "host/terminationsignals.h"

#include <QLoggingCategory>

namespace zemrak::none {

/// Children live their own lives.
class Unguarded final : public ChildGuard
{
public:
    void guard(QProcess &) override { qInfo("No child guard on this platform"); }
};

/// Every copy believes it is the only one.
class AlwaysAlone final : public SingleInstance
{
public:
    [[nodiscard]] bool claim() override
    {
        qInfo("No single-instance guard on this platform");
        return true;
    }
    void onActivated(std::function<void()>) override { }
};

/// The process ends as the system's default is.
class DefaultSignals final : public TerminationSignals
{
public:
    void onRequested(std::function<void()>) override { qInfo("No termination signals on this platform"); }
};

} // namespace zemrak::none
