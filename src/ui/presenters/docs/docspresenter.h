#pragma once

#include "app/toast.h"
#include "host/desktop.h"
#include "ui/presenters/docs/docblockmodel.h"
#include "ui/presenters/docs/dochitmodel.h"

#include <QObject>
#include <QString>
#include <QVariantList>

namespace zemrak {

/// The page of the integration guide: the chosen tab, a search over all tabs, what is copied and the export. The guide
/// is not read before the page asks for it. Main thread only.
class DocsPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariantList tabs READ tabs CONSTANT)
    Q_PROPERTY(QString selected READ selected WRITE setSelected NOTIFY selectedChanged)
    Q_PROPERTY(zemrak::DocBlockModel *blocks READ blocks CONSTANT)
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    Q_PROPERTY(bool searching READ isSearching NOTIFY searchChanged)
    Q_PROPERTY(zemrak::DocHitModel *hits READ hits CONSTANT)
    Q_PROPERTY(bool moreHits READ hasMoreHits NOTIFY searchChanged)
    Q_PROPERTY(bool exporting READ isExporting NOTIFY exportingChanged)

public:
    /// Hits that are shown at most.
    static constexpr qsizetype maximumHits = 30;

    /// Both outlive this object.
    DocsPresenter(Desktop &desktop, Toast &toast, QObject *parent = nullptr);

    /// { value, label, icon } each.
    [[nodiscard]] QVariantList tabs() const;
    /// A tab's identifier; one that is no tab's is ignored.
    [[nodiscard]] QString selected() const { return m_selected; }
    void setSelected(const QString &id);
    [[nodiscard]] DocBlockModel *blocks();

    [[nodiscard]] QString search() const { return m_search; }
    void setSearch(const QString &search);
    [[nodiscard]] bool isSearching() const { return !m_search.trimmed().isEmpty(); }
    [[nodiscard]] DocHitModel *hits() { return &m_hits; }
    [[nodiscard]] bool hasMoreHits() const { return m_moreHits; }
    /// Goes to what was found there, and ends the search.
    Q_INVOKABLE void choose(int hit);

    /// Says that a sample was copied.
    Q_INVOKABLE void tellCodeCopied() { m_toast.flash(QStringLiteral("تم نسخ الكود")); }
    /// A table of the chosen tab as Markdown; says that it is copied. Empty for a block that is no table.
    Q_INVOKABLE QString takeTable(int block);

    /// From the question where to save to the end of writing.
    [[nodiscard]] bool isExporting() const { return m_exporting; }
    /// Does nothing while an export is under way.
    Q_INVOKABLE void exportMarkdown();

Q_SIGNALS:
    void selectedChanged();
    void searchChanged();
    void exportingChanged();
    /// After the tab was chosen: this block of it is to be shown.
    void blockWanted(int block);

private:
    void showBlocks();
    void setExporting(bool exporting);
    void write(const QString &path);
    void onWritten(const QString &fault);

    Desktop &m_desktop;
    Toast &m_toast;
    QString m_selected = QStringLiteral("start");
    QString m_search;
    DocBlockModel m_blocks;
    DocHitModel m_hits;
    bool m_moreHits = false;
    bool m_exporting = false;
};

} // namespace zemrak
