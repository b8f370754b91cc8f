#pragma once

#include "host/desktop.h"
#include "platform/linux/portalrequest.h"

#include <QDBusConnection>
#include <QFileDialog>
#include <QObject>
#include <QPointer>

#include <memory>

namespace zemrak::linux_ {

/// Asks the person once where to save a file: with the desktop's own dialog by way of the portal, else with one of
/// ours. Ends itself once answered, or without an answer when the asker is gone.
class SaveDialog final : public QObject
{
    Q_OBJECT

public:
    SaveDialog(const QDBusConnection &bus, Desktop::SaveQuestion question, QObject *asker, Desktop::Chosen chosen,
        QObject *parent);

    /// `portalPatience`: when to give the portal up that does not say its dialog is on its way.
    void open(std::chrono::milliseconds portalPatience);

private:
    void openOwn();
    void finish(const std::optional<QString> &path);

    Desktop::SaveQuestion m_question;
    QPointer<QObject> m_asker;
    Desktop::Chosen m_chosen;
    PortalRequest m_portal;
    std::unique_ptr<QFileDialog> m_own;
};

} // namespace zemrak::linux_
