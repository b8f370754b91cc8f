#include "ui/presenters/printers/printerspresenter.h"

namespace zemrak {

PrintersPresenter::PrintersPresenter(Commands &commands, ConnectionCheck &check, QObject *parent)
    : QObject(parent)
    , m_commands(commands)
    , m_check(check)
    , m_found(m_printers,
          {PrinterListModel::NameRole, PrinterListModel::DeviceNameRole, PrinterListModel::TypeTextRole,
              PrinterListModel::DetailRole, PrinterListModel::StateTextRole})
{
}

void PrintersPresenter::show(const AgentState *state)
{
    m_printers.setRows(state == nullptr ? QList<PrinterInfo>() : state->printers);
}

} // namespace zemrak
