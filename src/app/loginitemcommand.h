#pragma once

#include <QString>

namespace zemrak {

class Agent;
class LoginItem;

/// The command-line switch of launch at login: carries out `value`, "on" or "off", nothing for any other, and returns
/// the line that tells the status afterwards.
[[nodiscard]] QString setLoginItem(const QString &value, Agent &agent, const LoginItem &item);

} // namespace zemrak
