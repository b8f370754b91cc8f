#include "ui/presenters/docs/docspresenter.h"

#include "guide/docsmarkdown.h"
#include "guide/doctabs.h"
#include "guide/guidefile.h"
#include "host/backgroundwrite.h"

#include <QLoggingCategory>

#include <algorithm>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcDocs, "zemrak.ui.docs")

const DocTab *findTab(const QString &id)
{
    const auto found = std::ranges::find(docTabs(), id, &DocTab::id);
    return found == docTabs().end() ? nullptr : &*found;
}

} // namespace

DocsPresenter::DocsPresenter(Desktop &desktop, Toast &toast, QObject *parent)
    : QObject(parent)
    , m_desktop(desktop)
    , m_toast(toast)
{
}

QVariantList DocsPresenter::tabs() const
{
    QVariantList tabs;
    for (const DocTab &tab : docTabs())
        tabs.append(QVariantMap{{QStringLiteral("value"), tab.id}, {QStringLiteral("label"), tab.title},
            {QStringLiteral("icon"), tab.icon}});
    return tabs;
}

void DocsPresenter::setSelected(const QString &id)
{
    if (m_selected == id || findTab(id) == nullptr)
        return;
    m_selected = id;
    showBlocks();
    Q_EMIT selectedChanged();
}

DocBlockModel *DocsPresenter::blocks()
{
    if (m_blocks.count() == 0)
        showBlocks();
    return &m_blocks;
}

void DocsPresenter::showBlocks()
{
    QList<DocBlockRow> rows;
    if (const DocTab *tab = findTab(m_selected)) {
        for (const DocBlock &block : tab->blocks)
            rows.append({tab->id + QString::number(rows.size()), block});
    }
    m_blocks.setRows(rows);
}

void DocsPresenter::setSearch(const QString &search)
{
    if (m_search == search)
        return;
    m_search = search;
    QList<DocHit> hits = searchDocs(docTabs(), search);
    m_moreHits = hits.size() > maximumHits;
    hits.resize(std::min(hits.size(), maximumHits));
    m_hits.setRows(hits);
    Q_EMIT searchChanged();
}

void DocsPresenter::choose(int hit)
{
    if (hit < 0 || hit >= m_hits.count())
        return;
    const DocHit chosen = m_hits.rows().at(hit);
    setSearch(QString());
    setSelected(chosen.tabId);
    Q_EMIT blockWanted(chosen.block);
}

QString DocsPresenter::takeTable(int block)
{
    const QList<DocBlockRow> &rows = m_blocks.rows();
    if (block < 0 || block >= rows.size() || !std::holds_alternative<DocTable>(rows.at(block).block))
        return {};
    m_toast.flash(QStringLiteral("تم نسخ الجدول"));
    return blockMarkdown(rows.at(block).block).mid(1);
}

void DocsPresenter::setExporting(bool exporting)
{
    if (m_exporting == exporting)
        return;
    m_exporting = exporting;
    Q_EMIT exportingChanged();
}

void DocsPresenter::exportMarkdown()
{
    if (m_exporting)
        return;
    setExporting(true);
    m_desktop.chooseSaveFile({.title = QStringLiteral("حفظ توثيق الربط"),
                                 .fileName = QStringLiteral("Zemrak-Printer-integration.md"),
                                 .kind = Desktop::FileKind::Markdown},
        this, [this](const std::optional<QString> &path) {
            if (path && !path->isEmpty())
                write(*path);
            else
                setExporting(false);
        });
}

// On a worker thread: the file may be on a slow drive or a network share that hangs.
void DocsPresenter::write(const QString &path)
{
    writeInBackground(
        this, [path] { return writeGuide(path); }, [this](const QString &fault) { onWritten(fault); });
}

void DocsPresenter::onWritten(const QString &fault)
{
    setExporting(false);
    if (!fault.isEmpty())
        qCWarning(lcDocs) << "The guide was not written:" << fault;
    m_toast.flash(fault.isEmpty() ? QStringLiteral("تم حفظ التوثيق")
                                  : QStringLiteral("تعذر حفظ التوثيق، تحقق من المساحة أو اختر مجلدًا آخر"));
}

} // namespace zemrak
