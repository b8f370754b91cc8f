#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QProcess;
QT_END_NAMESPACE

namespace zemrak {

/// Ties a child process to this one, so that no child outlives an application that was killed.
class ChildGuard
{
public:
    virtual ~ChildGuard() = default;

    /// Called once before the child is started, on the thread that starts it; that thread must live as long as the
    /// child may.
    virtual void guard(QProcess &child) = 0;
};

} // namespace zemrak
