#pragma once

#include "host/terminationsignals.h"

#include <QSocketNotifier>

#include <memory>

namespace zemrak::linux_ {

class PosixSignals final : public TerminationSignals
{
public:
    PosixSignals() = default;
    ~PosixSignals() override;
    PosixSignals(const PosixSignals &) = delete;
    PosixSignals &operator=(const PosixSignals &) = delete;

    void onRequested(std::function<void()> quit) override;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zemrak::linux_
