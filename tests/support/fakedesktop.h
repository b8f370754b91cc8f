#pragma once

#include "host/desktop.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUrl>

namespace zemrak::test {

/// Keeps what it is asked for; a test answers the questions when it likes.
class FakeDesktop final : public Desktop
{
public:
    struct Asked
    {
        SaveQuestion question;
        QPointer<QObject> context;
        Chosen chosen;

        void choose(const std::optional<QString> &path) const
        {
            if (context)
                chosen(path);
        }
    };

    void chooseSaveFile(const SaveQuestion &question, QObject *context, Chosen chosen) override
    {
        asked.append({question, context, std::move(chosen)});
    }
    void reveal(const QString &path) override { revealed.append(path); }
    bool openUrl(const QUrl &url) override
    {
        urls.append(url);
        return canOpen;
    }
    bool openSettings(SettingsPane pane) override
    {
        panes.append(pane);
        return canOpen;
    }

    QList<Asked> asked;
    QStringList revealed;
    QList<QUrl> urls;
    QList<SettingsPane> panes;
    bool canOpen = true;
};

} // namespace zemrak::test
