#include "host/privatefile.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace zemrak {

// The temporary file is made with mode 0600, before it holds a byte, by QTemporaryFile. Setting the mode
// afterwards would leave a moment in which others can open it, and fails on file systems without modes, such as FAT.
QString writePrivateFile(const QString &path, const QByteArray &content)
{
    const QFileInfo target(path);
    if (target.isDir())
        return QStringLiteral("a folder has that name");
    QTemporaryFile file(target.absolutePath() + QStringLiteral("/.zemrak-XXXXXX"));
    if (!file.open())
        return file.errorString();
    const bool onDisk = file.write(content) == content.size() && file.flush() && fsync(file.handle()) == 0;
    if (!onDisk)
        return file.error() == QFileDevice::NoError ? qt_error_string() : file.errorString();
    // A name is needed to be renamed; on some file systems there is none before it is asked for.
    const QString temporary = file.fileName();
    std::error_code fault;
    std::filesystem::rename(std::filesystem::path(QFile::encodeName(temporary).toStdString()),
        std::filesystem::path(QFile::encodeName(target.absoluteFilePath()).toStdString()), fault);
    if (fault)
        return QString::fromStdString(fault.message());
    file.setAutoRemove(false);
    return {};
}

} // namespace zemrak
