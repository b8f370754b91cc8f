#pragma once

#include "app/page.h"

#include <QAbstractListModel>
#include <QColor>
#include <QUrl>

#include <optional>
#include <span>

namespace zemrak {

struct PageInfo
{
    Page page;
    QLatin1String id;
    QString title;
    QLatin1String icon;
    QLatin1String tintFrom; ///< six hexadecimal digits, as the next
    QLatin1String tintTo;
};

/// In the order of the sidebar.
[[nodiscard]] std::span<const PageInfo> pageTable();
[[nodiscard]] const PageInfo &pageInfo(Page page);
/// None for an identifier that is no page's.
[[nodiscard]] std::optional<Page> pageFromId(QStringView id);

/// The pages for QML, which knows them by their identifiers.
class Pages : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        PageIdRole = Qt::UserRole,
        TitleRole,
        SymbolRole,
        TintRole,
    };

    using QAbstractListModel::QAbstractListModel;

    /// Empty for an identifier that is no page's, as the next three.
    Q_INVOKABLE [[nodiscard]] QString title(const QString &pageId) const;
    /// The file the page is made from.
    Q_INVOKABLE [[nodiscard]] QUrl source(const QString &pageId) const;
    Q_INVOKABLE [[nodiscard]] QString icon(const QString &pageId) const;
    Q_INVOKABLE [[nodiscard]] QList<QColor> tint(const QString &pageId) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
};

} // namespace zemrak
