#pragma once

#include "app/agent.h"

#include <QtQml/qqml.h>

class QJSEngine;
class QQmlEngine;

namespace zemrak {

// What QML may see of the other rooms. They know nothing of QML, so it is said here. Types of this room say it for
// themselves.

struct AgentForQml
{
    Q_GADGET
    QML_FOREIGN(zemrak::Agent)
    QML_NAMED_ELEMENT(Agent)
    QML_SINGLETON

public:
    static Agent *create(QQmlEngine *engine, QJSEngine *);
};

} // namespace zemrak
