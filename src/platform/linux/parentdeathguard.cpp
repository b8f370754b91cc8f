#include "platform/linux/parentdeathguard.h"

#include <QProcess>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace zemrak::linux_ {

void ParentDeathGuard::guard(QProcess &child)
{
    const pid_t parent = getpid();
    // Runs in the child between fork and exec: only async-signal-safe calls.
    child.setChildProcessModifier([parent] {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        // The parent may have died before the request was made; then nobody would send the signal.
        if (getppid() != parent)
            _exit(127);
    });
}

} // namespace zemrak::linux_
