#include "ui/presenters/profile/profileform.h"

#include "ui/presenters/text/wholenumber.h"

namespace zemrak {

namespace {

// Spaces and tabs off both ends; a line end stays, for the service to judge.
QString withoutBlanks(const QString &typed)
{
    const auto isBlank
        = [](QChar letter) { return letter == QLatin1Char('\t') || letter.category() == QChar::Separator_Space; };
    QStringView text = typed;
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text.toString();
}

QJsonValue textOrNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonValue codepage(const QString &encoding, const QString &escT)
{
    if (encoding.isEmpty())
        return {};
    QJsonObject object{{QStringLiteral("encoding"), encoding}};
    if (const std::optional<qint64> number = wholeNumber(escT))
        object.insert(QStringLiteral("escT"), *number);
    return object;
}

} // namespace

ProfileForm ProfileForm::of(const std::optional<Profile> &profile)
{
    ProfileForm form;
    if (!profile)
        return form;
    form.proto = profile->protocolName.value_or(form.proto);
    form.dots = profile->dots.value_or(form.dots);
    form.cut = profile->cut.value_or(form.cut);
    form.pin = profile->drawerPin;
    form.dither = profile->dither.value_or(form.dither);
    form.role = profile->role.value_or(form.role);
    form.alias = profile->alias.value_or(form.alias);
    form.enc = profile->codepageEncoding.value_or(form.enc);
    if (profile->codepageEscT)
        form.escT = QString::number(*profile->codepageEscT);
    return form;
}

QJsonObject ProfileForm::fields() const
{
    return {
        {QStringLiteral("cut"), cut},
        {QStringLiteral("dither"), dither},
        {QStringLiteral("role"), role},
        {QStringLiteral("drawerPin"), pin},
        {QStringLiteral("protocol"), proto == QLatin1String("auto") ? QJsonValue() : QJsonValue(proto)},
        {QStringLiteral("dots"), dots == 0 ? QJsonValue() : QJsonValue(dots)},
        {QStringLiteral("alias"), textOrNull(withoutBlanks(alias))},
        {QStringLiteral("codepage"), codepage(withoutBlanks(enc), escT)},
    };
}

} // namespace zemrak
