#include "ui/presenters/sites/sitespresenter.h"

#include <QPointer>

#include <utility>

namespace zemrak {

SitesPresenter::SitesPresenter(Commands &commands, qint64 now, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
    , m_asked(now)
    , m_origins(now)
    , m_found(m_origins, {OriginListModel::OriginRole, OriginListModel::SiteNameRole})
{
}

void SitesPresenter::show(const AgentState *state)
{
    m_asked.show(state == nullptr ? QList<AskedOrigin>() : state->askedOrigins);
    m_origins.setRows(state == nullptr ? QList<OriginRow>()
                                       : originRows(state->allowedOrigins, state->defaultOrigins, state->pairedSites));
}

void SitesPresenter::setNow(qint64 now)
{
    m_asked.setNow(now);
    m_origins.setNow(now);
}

void SitesPresenter::add(const QString &typed)
{
    if (m_adding || typed.trimmed().isEmpty())
        return;
    setAdding(true);
    m_commands.addOrigin(typed, [self = QPointer(this), typed](bool ok, const QString &hint) {
        if (!self)
            return;
        self->m_refusedText = ok ? QString() : typed;
        self->m_refusal = ok ? QString() : hint;
        self->setAdding(false);
        if (ok)
            Q_EMIT self->added();
    });
}

void SitesPresenter::allow(const QString &origin)
{
    if (!m_asked.beginAllowing(origin))
        return;
    m_commands.addOrigin(origin, [self = QPointer(this), origin](bool ok, const QString &hint) {
        if (!self)
            return;
        const QString unsaid = QStringLiteral("لم يُسمح للموقع لأن خدمة الطباعة لم تقبله. أعد المحاولة بعد قليل.");
        self->m_asked.endAllowing(origin, ok ? QString() : hint.isEmpty() ? unsaid : hint);
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
