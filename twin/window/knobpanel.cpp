#include "twin/window/knobpanel.h"

#include "twin/printer/dialogue.h"
#include "twin/window/switch.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace zemrak::twin {

namespace {

constexpr int panelWidth = 304;
constexpr int choiceHeight = 34;

struct State
{
    QString text;
    QColor color;
};

/// In words, the worst first.
State stateOf(const Knobs &knobs, const Look &look)
{
    if (knobs[Knob::Connections] == RefuseAll || knobs[Knob::Connections] == Unreachable)
        return {QStringLiteral("لا يمكن الوصول إليها"), look.red};
    if (knobs[Knob::Cover] == CoverOpen)
        return {QStringLiteral("متوقفة: الغطاء مفتوح"), look.red};
    if (knobs[Knob::Paper] == PaperOut)
        return {QStringLiteral("متوقفة: نفد الورق"), look.red};
    if (knobs[Knob::Error] != ErrorNone)
        return {QStringLiteral("متوقفة: عطل"), look.red};
    if (knobs[Knob::Button] == ButtonOffline)
        return {QStringLiteral("متوقفة بزرّها"), look.amber};
    if (knobs[Knob::Paper] == PaperLow)
        return {QStringLiteral("جاهزة، والورق قليل"), look.amber};
    return {QStringLiteral("جاهزة"), look.green};
}

} // namespace

KnobPanel::KnobPanel(Printer &printer, const QString &place, const Look &look, QWidget *parent)
    : QFrame(parent)
    , m_printer(printer)
    , m_look(look)
    , m_rows(new QVBoxLayout(this))
    , m_state(new QLabel(this))
{
    setObjectName(QStringLiteral("panel"));
    setFixedWidth(panelWidth);
    m_rows->setContentsMargins(24, 24, 24, 24);
    m_rows->setSpacing(8);
    auto *title = new QLabel(QStringLiteral("الطابعة التوأم"), this);
    title->setObjectName(QStringLiteral("title"));
    m_state->setObjectName(QStringLiteral("state"));
    auto *where = new QLabel(place, this);
    where->setObjectName(QStringLiteral("place"));
    where->setTextInteractionFlags(Qt::TextSelectableByMouse);
    where->setAlignment(Qt::AlignRight | Qt::AlignAbsolute); // it reads from left to right
    for (QLabel *label : {title, m_state, where})
        m_rows->addWidget(label);

    addSection("الورق");
    addSegments(Knob::Paper, {{PaperOk, "موجود"}, {PaperLow, "قليل"}, {PaperOut, "نفد"}});
    addSection("الجهاز");
    addSwitch(Knob::Cover, CoverOpen, "الغطاء مفتوح");
    addSwitch(Knob::Button, ButtonOffline, "متوقفة بزرّها");
    addSwitch(Knob::Error, ErrorCutter, "عطل في القاطع");
    addSwitch(Knob::Drawer, DrawerOpen, "درج النقود مفتوح");
    addSection("الاتصال");
    addChoice(Knob::Connections, "الاتصالات",
        {{ManyConnections, "تقبل كل اتصال"}, {OneWaits, "واحد، وغيره ينتظر"}, {OneRefuses, "واحد، وغيره يُرفض"},
            {RefuseAll, "ترفض كل اتصال"}, {HoldAll, "تقبل ولا تقرأ"}, {Unreachable, "لا تردّ"}});
    addChoice(Knob::Speed, "السرعة",
        {{0, "بلا تأخير"}, {50000, "سريعة: 50 كيلوبايت في الثانية"}, {10000, "متوسطة: 10 كيلوبايت في الثانية"},
            {1000, "بطيئة: 1 كيلوبايت في الثانية"}});
    addChoice(
        Knob::Reading, "القراءة", {{ReadingSteady, "متواصلة"}, {ReadingLumps, "على دفعات"}, {ReadingNever, "لا تقرأ"}});
    addChoice(Knob::Answers, "الأجوبة",
        {{AnswersTrue, "صادقة"}, {AnswersRealTimeOnly, "عن الحالة فقط"}, {AnswersSilent, "لا تجيب"},
            {AnswersAllWell, "تدّعي السلامة"}, {AnswersOutOfPaper, "تدّعي نفاد الورق"},
            {AnswersNonsense, "كلام بلا معنى"}});
    m_rows->addStretch();
    auto *power = new QPushButton(QStringLiteral("إطفاء ثم تشغيل"), this);
    auto *clear = new QPushButton(QStringLiteral("إزالة الورق المطبوع"), this);
    connect(power, &QPushButton::clicked, &printer, &Printer::powerCycle);
    connect(clear, &QPushButton::clicked, this, &KnobPanel::clearWanted);
    m_rows->addWidget(power);
    m_rows->addWidget(clear);

    connect(&printer, &Printer::knobsChanged, this, &KnobPanel::showState);
    showState();
}

void KnobPanel::addSection(const char *title)
{
    auto *label = new QLabel(QString::fromUtf8(title), this);
    label->setObjectName(QStringLiteral("section"));
    label->setContentsMargins(0, 12, 0, 0);
    m_rows->addWidget(label);
}

void KnobPanel::addSegments(Knob knob, const QList<Choice> &choices)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    auto *group = new QButtonGroup(this);
    for (const Choice &choice : choices) {
        auto *button = new QPushButton(QString::fromUtf8(choice.text), this);
        button->setCheckable(true);
        group->addButton(button, choice.value);
        row->addWidget(button, 1);
    }
    m_rows->addLayout(row);
    connect(group, &QButtonGroup::idClicked, this, [this, knob](int value) { turn(knob, value); });
    connect(this, &KnobPanel::knobsShown, group, [this, group, knob] {
        if (QAbstractButton *button = group->button(m_printer.knobs()[knob]))
            button->setChecked(true);
    });
}

void KnobPanel::addSwitch(Knob knob, int on, const char *text)
{
    auto *toggle = new Switch(QString::fromUtf8(text), m_look, this);
    m_rows->addWidget(toggle);
    connect(toggle, &Switch::clicked, this, [this, knob, on](bool checked) { turn(knob, checked ? on : 0); });
    connect(this, &KnobPanel::knobsShown, toggle,
        [this, toggle, knob] { toggle->setChecked(m_printer.knobs()[knob] != 0); });
}

void KnobPanel::addChoice(Knob knob, const char *title, const QList<Choice> &choices)
{
    auto *label = new QLabel(QString::fromUtf8(title), this);
    label->setMinimumWidth(64);
    auto *box = new QComboBox(this);
    box->setMinimumHeight(choiceHeight);
    box->setAccessibleName(label->text());
    label->setBuddy(box);
    for (const Choice &choice : choices)
        box->addItem(QString::fromUtf8(choice.text), choice.value);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(label);
    row->addWidget(box, 1);
    m_rows->addLayout(row);
    connect(
        box, &QComboBox::activated, this, [this, box, knob](int index) { turn(knob, box->itemData(index).toInt()); });
    connect(this, &KnobPanel::knobsShown, box, [this, box, knob] {
        // A number that is none of the choices, as HTTP may set, is shown as none of them.
        box->setCurrentIndex(box->findData(m_printer.knobs()[knob]));
    });
}

void KnobPanel::turn(Knob knob, int value)
{
    Knobs knobs = m_printer.knobs();
    knobs.set(knob, value);
    m_printer.setKnobs(knobs);
}

void KnobPanel::showState()
{
    const State state = stateOf(m_printer.knobs(), m_look);
    m_state->setText(QStringLiteral("<span style='color:%1'>●</span> %2").arg(state.color.name(), state.text));
    Q_EMIT knobsShown();
}

} // namespace zemrak::twin
