#pragma once

#include "app/commands.h"
#include "host/connectioncheck.h"
#include "model/agentstate.h"
#include "ui/presenters/printers/printerlistmodel.h"
#include "ui/presenters/text/searchmodel.h"

#include <QObject>

namespace zemrak {

/// The page of printers. Main thread only.
class PrintersPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::SearchModel *printers READ printers CONSTANT)

public:
    /// Both outlive this object.
    PrintersPresenter(Commands &commands, ConnectionCheck &check, QObject *parent = nullptr);

    /// `state` null: the service does not answer.
    void show(const AgentState *state);
    [[nodiscard]] SearchModel *printers() { return &m_found; }

    Q_INVOKABLE void testPrint(const QString &printerId) { m_commands.testPrint(printerId); }
    /// Checks the connection of every printer; the overview and this page tell how it goes.
    Q_INVOKABLE void runScan() { m_check.runScan(); }

private:
    Commands &m_commands;
    ConnectionCheck &m_check;
    PrinterListModel m_printers;
    SearchModel m_found;
};

} // namespace zemrak
