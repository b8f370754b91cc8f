#include "ui/presenters/profile/profileoptions.h"

#include <algorithm>

namespace zemrak {

namespace {

ProfileOption option(const char *value, const QString &label)
{
    return {QString::fromLatin1(value), label};
}

auto find(const QList<ProfileOption> &options, const QVariant &value)
{
    return std::find_if(
        options.cbegin(), options.cend(), [&value](const ProfileOption &choice) { return choice.value == value; });
}

QVariantMap forChooser(const QVariant &value, const QString &label)
{
    return {{QStringLiteral("value"), value}, {QStringLiteral("label"), label}};
}

} // namespace

const QList<ProfileOption> &protocolOptions()
{
    static const QList<ProfileOption> options{
        option("auto", QStringLiteral("تلقائي")),
        option("escpos", QStringLiteral("ESC/POS")),
        option("starline", QStringLiteral("Star Line / StarPRNT")),
        option("none", QStringLiteral("طابعة عادية (A4 / ملصقات)")),
    };
    return options;
}

const QList<ProfileOption> &dotsOptions()
{
    static const QList<ProfileOption> options{
        {qint64(0), QStringLiteral("تلقائي")},
        {qint64(384), QStringLiteral("58 مم — 384 نقطة")},
        {qint64(512), QStringLiteral("72 مم — 512 نقطة")},
        {qint64(576), QStringLiteral("80 مم — 576 نقطة")},
        {qint64(640), QStringLiteral("80 مم عريض — 640 نقطة")},
    };
    return options;
}

const QList<ProfileOption> &ditherOptions()
{
    static const QList<ProfileOption> options{
        option("threshold", QStringLiteral("حاد (أبيض/أسود)")),
        option("floyd", QStringLiteral("ناعم (Floyd-Steinberg)")),
    };
    return options;
}

const QList<ProfileOption> &cutOptions()
{
    static const QList<ProfileOption> options{
        option("partial", QStringLiteral("جزئي")),
        option("full", QStringLiteral("كامل")),
        option("gs-v-0", QStringLiteral("GS V 0")),
        option("esc-i", QStringLiteral("ESC i")),
        option("esc-m", QStringLiteral("ESC m")),
        option("none", QStringLiteral("بدون قص")),
    };
    return options;
}

const QList<ProfileOption> &pinOptions()
{
    static const QList<ProfileOption> options{
        option("2", QStringLiteral("Pin 2")),
        option("5", QStringLiteral("Pin 5")),
        option("both", QStringLiteral("الاثنان")),
        option("none", QStringLiteral("بدون")),
    };
    return options;
}

const QList<ProfileOption> &encodingOptions()
{
    static const QList<ProfileOption> options{
        {QString(), QStringLiteral("بدون")},
        option("windows-1256", QStringLiteral("Windows-1256 (عربي)")),
        option("iso-8859-6", QStringLiteral("ISO-8859-6")),
        option("windows-1252", QStringLiteral("windows-1252")),
    };
    return options;
}

const QList<ProfileOption> &roleOptions()
{
    static const QList<ProfileOption> options{
        option("receipt", QStringLiteral("إيصالات")),
        option("kitchen", QStringLiteral("مطبخ")),
        option("label", QStringLiteral("ملصقات")),
        option("a4", QStringLiteral("A4")),
        option("other", QStringLiteral("أخرى")),
    };
    return options;
}

QString labelOf(const QList<ProfileOption> &options, const QVariant &value)
{
    const auto found = find(options, value);
    return found == options.cend() ? value.toString() : found->label;
}

QVariantList chooserOptions(const QList<ProfileOption> &options, const QVariant &current)
{
    QVariantList list;
    for (const ProfileOption &choice : options)
        list.append(forChooser(choice.value, choice.label));
    if (find(options, current) == options.cend())
        list.append(forChooser(current, current.toString()));
    return list;
}

} // namespace zemrak
