#pragma once

#include <QByteArray>

namespace zemrak::bench {

struct StateSize
{
    int printers;
    int jobs;
};

/// The service's answer to "/admin/state" with its keys in the service's order. Both values of `lastJobDone` give the
/// same number of bytes; they differ in the last job, where a comparison of the two takes longest.
[[nodiscard]] QByteArray stateBody(StateSize size, quint16 port, bool lastJobDone);

} // namespace zemrak::bench
