#pragma once

namespace zemrak::bench {

/// Prints what ServiceLog::append() costs when the log is full.
void measureAppends(bool quick);

} // namespace zemrak::bench
