// What the service's output costs the main thread.

#include "appends.h"
#include "burst.h"
#include "measure.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    using namespace zemrak::bench;

    const bool quick = isQuick(argc, argv);
    const QCoreApplication application(argc, argv);
    // First, while the process is as small as it was when it started.
    measureBurst(quick);
    measureAppends(quick);
    return 0;
}
