#pragma once

#include "app/commands.h"
#include "model/agentstate.h"
#include "ui/presenters/sites/askedlistmodel.h"
#include "ui/presenters/sites/originlistmodel.h"
#include "ui/presenters/text/searchmodel.h"

#include <QObject>

namespace zemrak {

/// The page of sites: who may print, and the field that adds one. Main thread only.
class SitesPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::SearchModel *origins READ origins CONSTANT)
    Q_PROPERTY(zemrak::AskedListModel *asked READ asked CONSTANT)
    Q_PROPERTY(bool adding READ isAdding NOTIFY addingChanged)
    Q_PROPERTY(QString refusedText READ refusedText NOTIFY addingChanged)
    Q_PROPERTY(QString refusal READ refusal NOTIFY addingChanged)

public:
    /// `commands` outlives this object; `now` is in milliseconds since 1970-01-01 UTC.
    SitesPresenter(Commands &commands, qint64 now, QObject *parent = nullptr);

    /// `state` null: the service does not answer.
    void show(const AgentState *state);
    void setNow(qint64 now);

    [[nodiscard]] SearchModel *origins() { return &m_found; }
    /// The sites that wanted to print and are not on the list.
    [[nodiscard]] AskedListModel *asked() { return &m_asked; }
    /// The service has not answered the last add() yet.
    [[nodiscard]] bool isAdding() const { return m_adding; }

    /// What add() sent last and the service did not take, and why, in a sentence; both empty: it took it.
    [[nodiscard]] QString refusedText() const { return m_refusedText; }
    [[nodiscard]] QString refusal() const { return m_refusal; }

    /// Sends the address as typed, for the service to judge. Nothing happens for an empty one or while adding.
    Q_INVOKABLE void add(const QString &typed);
    /// Puts a site that asked to print on the list; `origin` is that of a row of asked(). Its row tells if that is
    /// refused.
    Q_INVOKABLE void allow(const QString &origin);
    /// `origin` is that of a row which is removable.
    Q_INVOKABLE void remove(const QString &origin);
    /// Ends the pairing of that id.
    Q_INVOKABLE void revoke(const QString &siteId);

Q_SIGNALS:
    void addingChanged();
    /// The service took the address: the field may be cleared.
    void added();

private:
    void setAdding(bool adding);

    Commands &m_commands;
    AskedListModel m_asked;
    OriginListModel m_origins;
    SearchModel m_found;
    QString m_refusedText;
    QString m_refusal;
    bool m_adding = false;
};

} // namespace zemrak
