#pragma once

#include "model/agentstate.h"
#include "model/alertitem.h"

namespace zemrak::fuzz {

/// Has everything that shows a state read all of it, and checks what is said.
void showState(const AgentState &state);
void showAlerts(const QList<AlertItem> &alerts);

} // namespace zemrak::fuzz
