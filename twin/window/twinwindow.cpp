#include "twin/window/twinwindow.h"

#include "twin/window/knobpanel.h"
#include "twin/window/paperview.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QScrollBar>

namespace zemrak::twin {

namespace {

constexpr QSize usualSize(976, 760);
constexpr int endOfPaper = 8; // a bar this near to its end follows the paper

QString emptyText(const QString &place)
{
    return place.isEmpty()
        ? QStringLiteral("لم يُطبع شيء بعد.")
        : QStringLiteral("لم يُطبع شيء بعد.\nأضِف طابعة شبكة بالعنوان \u2066%1\u2069 ثم اطبع صفحة اختبار.").arg(place);
}

} // namespace

TwinWindow::TwinWindow(Printer &printer, const QString &place, const Look &look)
    : m_look(look)
{
    setObjectName(QStringLiteral("twin"));
    setWindowTitle(QStringLiteral("الطابعة التوأم"));
    setLayoutDirection(Qt::RightToLeft);
    setPalette(m_look.palette());
    setStyleSheet(m_look.sheet());
    resize(usualSize);
    auto *panel = new KnobPanel(printer, place, m_look, this);
    auto *knobs = new QScrollArea(this);
    knobs->setWidget(panel);
    knobs->setWidgetResizable(true);
    knobs->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    knobs->setFixedWidth(panel->width());
    knobs->setFrameShape(QFrame::NoFrame);
    auto *area = new QScrollArea(this);
    auto *paper = new PaperView(printer, m_look, emptyText(place), area);
    area->setWidget(paper);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(knobs);
    row->addWidget(area, 1);
    connect(panel, &KnobPanel::clearWanted, paper, &PaperView::clear);
    QScrollBar *bar = area->verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, bar, [bar, last = 0](int, int most) mutable {
        if (bar->value() >= last - endOfPaper) // whoever looks at an earlier receipt is left there
            bar->setValue(most);
        last = most;
    });
}

} // namespace zemrak::twin
