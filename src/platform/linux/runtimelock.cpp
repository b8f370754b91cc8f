#include "platform/linux/runtimelock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace zemrak::linux_ {

RuntimeLock::~RuntimeLock()
{
    if (m_file >= 0)
        close(m_file);
}

RuntimeLock::Outcome RuntimeLock::tryLock(const QString &fileName)
{
    const int file = open(QFile::encodeName(fileName).constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0)
        return Outcome::Unavailable;
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        const bool held = errno == EWOULDBLOCK;
        close(file);
        return held ? Outcome::HeldByAnother : Outcome::Unavailable;
    }
    m_file = file;
    return Outcome::Taken;
}

} // namespace zemrak::linux_
