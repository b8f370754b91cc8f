#include "guide/docsmarkdown.h"

#include "guide/doctabs.h"

namespace zemrak {

namespace {

QString row(const QStringList &cells)
{
    return QStringLiteral("| ") + cells.join(QStringLiteral(" | ")) + QStringLiteral(" |\n");
}

struct ToMarkdown
{
    QString operator()(const DocHeading &block) const { return QStringLiteral("\n### ") + block.text + u'\n'; }
    QString operator()(const DocText &block) const { return u'\n' + block.text + u'\n'; }
    // Only the first line carries the mark: those that follow continue the quotation all the same.
    QString operator()(const DocNote &block) const { return QStringLiteral("\n> ") + block.text + u'\n'; }
    QString operator()(const DocCode &block) const
    {
        return QStringLiteral("\n```") + block.lang + u'\n' + block.code + QStringLiteral("\n```\n");
    }
    QString operator()(const DocTable &block) const
    {
        if (block.rows.isEmpty())
            return {};
        const QStringList &header = block.rows.first();
        QString text = u'\n' + row(header) + u'|'
            + QStringList(header.size(), QStringLiteral("---")).join(QLatin1Char('|')) + QStringLiteral("|\n");
        for (QStringList cells : block.rows.mid(1))
            text += row(cells.replaceInStrings(QStringLiteral("|"), QStringLiteral("\\|")));
        return text;
    }
};

} // namespace

QString docBase()
{
    return QStringLiteral("http://127.0.0.1:17731");
}

QString blockMarkdown(const DocBlock &block)
{
    return std::visit(ToMarkdown(), block);
}

QString docsMarkdown(const QList<DocTab> &tabs)
{
    QString text = QStringLiteral("# Zemrak Printer — توثيق الربط\n\n> أُنشئ تلقائيًا من التطبيق. العنوان الأساسي: ")
        + docBase() + u'\n';
    for (const DocTab &tab : tabs) {
        text += QStringLiteral("\n## ") + tab.title + u'\n';
        for (const DocBlock &block : tab.blocks)
            text += blockMarkdown(block);
    }
    return text;
}

QString docsMarkdown()
{
    return docsMarkdown(docTabs());
}

} // namespace zemrak
