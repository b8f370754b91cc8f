#pragma once

#include "app/commands.h"
#include "support/answeringservice.h"
#include "support/manualclock.h"

namespace zemrak::test {

/// The application's commands, with a service that answers them in this program.
struct AnsweredCommands
{
    ManualClock clock;
    AnsweringService service;
    StatePoll poll{service, clock};
    Toast toast{clock};
    Commands commands{service, poll, toast, clock};
};

} // namespace zemrak::test
