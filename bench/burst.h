#pragma once

namespace zemrak::bench {

/// Prints how the supervisor copes with a service that prints 10 MB at once.
void measureBurst(bool quick);

} // namespace zemrak::bench
