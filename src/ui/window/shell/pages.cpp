#include "ui/window/shell/pages.h"

#include "ui/kit/colors.h"

#include <algorithm>

namespace zemrak {

namespace {

const PageInfo *find(QStringView id)
{
    const std::span<const PageInfo> pages = pageTable();
    const auto found = std::ranges::find_if(pages, [id](const PageInfo &info) { return info.id == id; });
    return found == pages.end() ? nullptr : &*found;
}

QList<QColor> tintOf(const PageInfo &info)
{
    return {colorFromHex(QString(info.tintFrom)), colorFromHex(QString(info.tintTo))};
}

} // namespace

std::span<const PageInfo> pageTable()
{
    using L = QLatin1String;
    static const PageInfo table[] = {
        {Page::Overview, L("overview"), QStringLiteral("نظرة عامة"), L("sparkles"), L("c084fc"), L("7c3aed")},
        {Page::Printers, L("printers"), QStringLiteral("الطابعات"), L("printer.fill"), L("60a5fa"), L("2563eb")},
        {Page::Designer, L("designer"), QStringLiteral("اختبار الطباعة"), L("doc.richtext.fill"), L("f472b6"),
            L("db2777")},
        {Page::Sites, L("sites"), QStringLiteral("المواقع المصرّح لها"), L("checkmark.shield.fill"), L("4ade80"),
            L("16a34a")},
        {Page::Jobs, L("jobs"), QStringLiteral("سجل الطباعة"), L("clock.arrow.circlepath"), L("fbbf24"), L("ea580c")},
        {Page::Alerts, L("alerts"), QStringLiteral("الإشعارات"), L("bell.fill"), L("fb7185"), L("e11d48")},
        {Page::Docs, L("docs"), QStringLiteral("التوثيق"), L("book.fill"), L("5eead4"), L("0d9488")},
        {Page::Settings, L("settings"), QStringLiteral("الإعدادات"), L("gearshape.fill"), L("94a3b8"), L("475569")},
    };
    return table;
}

const PageInfo &pageInfo(Page page)
{
    return pageTable()[static_cast<std::size_t>(page)];
}

std::optional<Page> pageFromId(QStringView id)
{
    const PageInfo *info = find(id);
    return info ? std::optional(info->page) : std::nullopt;
}

QString Pages::title(const QString &pageId) const
{
    const PageInfo *info = find(pageId);
    return info ? info->title : QString();
}

QUrl Pages::source(const QString &pageId) const
{
    if (!find(pageId))
        return {};
    return QUrl(QStringLiteral("qrc:/qt/qml/Zemrak/Window/pages/%1/%2Page.qml")
                    .arg(pageId, pageId.left(1).toUpper() + pageId.mid(1)));
}

QString Pages::icon(const QString &pageId) const
{
    const PageInfo *info = find(pageId);
    return info ? QString(info->icon) : QString();
}

QList<QColor> Pages::tint(const QString &pageId) const
{
    const PageInfo *info = find(pageId);
    return info ? tintOf(*info) : QList<QColor>();
}

int Pages::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(pageTable().size());
}

QVariant Pages::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const PageInfo &info = pageTable()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case PageIdRole:
        return QString(info.id);
    case TitleRole:
        return info.title;
    case SymbolRole:
        return QString(info.icon);
    case TintRole:
        return QVariant::fromValue(tintOf(info));
    default:
        return {};
    }
}

QHash<int, QByteArray> Pages::roleNames() const
{
    return {{PageIdRole, "pageId"}, {TitleRole, "title"}, {SymbolRole, "symbol"}, {TintRole, "tint"}};
}

} // namespace zemrak
