#include "soak/wait.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

namespace zemrak::soak {

namespace {

bool endAsked = false;

} // namespace

void askToEnd()
{
    endAsked = true;
}

bool waitUntil(const std::function<bool()> &holds, std::chrono::milliseconds patience)
{
    const QDeadlineTimer deadline(patience);
    while (true) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (endAsked)
            throw Ended{};
        if (holds())
            return true;
        if (deadline.hasExpired())
            return false;
        QThread::msleep(5);
    }
}

void pass(std::chrono::milliseconds time)
{
    waitUntil([] { return false; }, time);
}

} // namespace zemrak::soak
