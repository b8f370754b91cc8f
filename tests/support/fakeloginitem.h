#pragma once

#include "host/loginitem.h"

namespace zemrak::test {

/// A login item that is as it was last told to be, unless it does not work.
class FakeLoginItem final : public LoginItem
{
public:
    [[nodiscard]] LoginItemStatus status() const override { return current; }
    [[nodiscard]] std::optional<QString> registerItem() override { return become(u'r', LoginItemStatus::Enabled); }
    [[nodiscard]] std::optional<QString> unregisterItem() override
    {
        return become(u'u', LoginItemStatus::NotRegistered);
    }

    LoginItemStatus current = LoginItemStatus::NotFound;
    bool works = false;
    QString calls; ///< r for each registration that was asked for, u for each removal

private:
    std::optional<QString> become(QChar call, LoginItemStatus status)
    {
        calls += call;
        if (!works)
            return QStringLiteral("not on this platform");
        current = status;
        return std::nullopt;
    }
};

} // namespace zemrak::test
