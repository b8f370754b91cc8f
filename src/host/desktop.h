#pragma once

#include <QString>

#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QObject;
class QUrl;
QT_END_NAMESPACE

namespace zemrak {

/// What the application asks of the person's desktop. Main thread only; nothing here blocks or waits for an answer.
class Desktop
{
public:
    virtual ~Desktop() = default;

    enum class FileKind
    {
        Json,
        Markdown
    };
    struct SaveQuestion
    {
        QString title;
        QString fileName; ///< proposed; the person may change it, and chooses the folder
        FileKind kind = FileKind::Json;
    };
    /// Path of a local file, which may exist: the person has then agreed to replace it. None: cancelled.
    using Chosen = std::function<void(const std::optional<QString> &path)>;

    enum class SettingsPane
    {
        LoginItems, ///< what starts with the session
        Network, ///< the network, and who may use it
        Notifications
    };

    /// Asks where to save a file. `chosen` is called once, in a later turn of the event loop; not at all when `context`
    /// is gone by then, and the dialog with it.
    virtual void chooseSaveFile(const SaveQuestion &question, QObject *context, Chosen chosen) = 0;
    /// Shows an existing file in the file manager, selected where that can be done.
    virtual void reveal(const QString &path) = 0;
    /// Opens an address with the program the person prefers. False: there is none, and a line in the log says so.
    virtual bool openUrl(const QUrl &url) = 0;
    /// Opens the system's settings at `pane`. False: there is nothing to open, and a line in the log says so.
    virtual bool openSettings(SettingsPane pane) = 0;
};

} // namespace zemrak
