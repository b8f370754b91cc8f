#include "platform/linux/posixsignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace zemrak::linux_ {

namespace {

constexpr std::array requests{SIGTERM, SIGINT, SIGHUP};

// A signal handler may touch nothing but this pipe: its byte wakes the event loop.
std::array<int, 2> wakePipe{-1, -1};

extern "C" void wakeEventLoop(int)
{
    const int interrupted = errno;
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(wakePipe[1], &byte, 1);
    errno = interrupted;
}

void handleWith(void (*handler)(int), int flags)
{
    struct sigaction action
    {
    };
    action.sa_handler = handler;
    action.sa_flags = flags;
    for (const int signal : requests) {
        // Whoever started us may have had a signal ignored, as nohup does; that is to stay so.
        struct sigaction present
        {
        };
        if (sigaction(signal, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

} // namespace

PosixSignals::~PosixSignals()
{
    handleWith(SIG_DFL, 0);
    m_notifier.reset();
    for (int &end : wakePipe) {
        if (end >= 0)
            close(end);
        end = -1;
    }
}

void PosixSignals::onRequested(std::function<void()> quit)
{
    if (pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(wakePipe[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this, quit = std::move(quit)] {
        m_notifier->setEnabled(false);
        handleWith(SIG_DFL, 0);
        quit();
    });
    handleWith(wakeEventLoop, SA_RESTART);
}

} // namespace zemrak::linux_
