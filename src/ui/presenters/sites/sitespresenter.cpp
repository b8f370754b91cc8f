#include "ui/presenters/sites/sitespresenter.h"

#include <QPointer>

#include <utility>

namespace zemrak {

SitesPresenter::SitesPresenter(Commands &commands, qint64 now, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
    , m_origins(now)
    , m_found(m_origins, {OriginListModel::OriginRole, OriginListModel::SiteNameRole})
{
}

void SitesPresenter::show(const AgentState *state)
{
    m_origins.setRows(state == nullptr ? QList<OriginRow>()
                                       : originRows(state->allowedOrigins, state->defaultOrigins, state->pairedSites));
}

void SitesPresenter::setNow(qint64 now)
{
    m_origins.setNow(now);
}

void SitesPresenter::add(const QString &typed)
{
    if (m_adding || typed.trimmed().isEmpty())
        return;
    setAdding(true);
    m_commands.addOrigin(typed, [self = QPointer(this)](bool ok) {
        if (!self)
            return;
        self->setAdding(false);
        if (ok)
            Q_EMIT self->added();
    });
}

void SitesPresenter::remove(const QString &origin)
{
    m_commands.removeOrigin(origin);
}

void SitesPresenter::revoke(const QString &siteId)
{
    m_commands.revoke(siteId);
}

void SitesPresenter::setAdding(bool adding)
{
    if (std::exchange(m_adding, adding) != adding)
        Q_EMIT addingChanged();
}

} // namespace zemrak
