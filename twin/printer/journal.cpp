#include "twin/printer/journal.h"

#include <QDateTime>

namespace zemrak::twin {

namespace {

constexpr qsizetype loggedLines = 400;
constexpr qsizetype differentQuestions = 100;
constexpr qsizetype shownBytes = 64;

} // namespace

void Journal::ended(const QString &line, bool lost)
{
    ++(lost ? m_lost : m_ended);
    add(line, lost ? QStringLiteral("lost") : QStringLiteral("ended"), {});
}

void Journal::asked(const QString &line, const QString &question)
{
    if (m_questions.contains(question) || m_questions.size() < differentQuestions)
        ++m_questions[question];
    add(line, QStringLiteral("asked"), question);
}

void Journal::answered(const QString &line, const QByteArray &bytes)
{
    ++m_answers;
    add(line, QStringLiteral("answered"),
        QString::fromLatin1(bytes.first(std::min(bytes.size(), shownBytes)).toHex(' ')));
}

void Journal::add(const QString &line, const QString &what, const QString &detail)
{
    QJsonObject entry{{QStringLiteral("at"), QDateTime::currentMSecsSinceEpoch()}, {QStringLiteral("line"), line},
        {QStringLiteral("what"), what}};
    if (!detail.isEmpty())
        entry.insert(QStringLiteral("detail"), detail);
    m_log.append(entry);
    if (m_log.size() > loggedLines)
        m_log.removeFirst();
}

QJsonObject Journal::toJson() const
{
    QJsonObject questions;
    for (auto each = m_questions.begin(); each != m_questions.end(); ++each)
        questions.insert(each.key(), each.value());
    return {{QStringLiteral("received"), m_received}, {QStringLiteral("printed"), m_printed},
        {QStringLiteral("connections"), m_connections}, {QStringLiteral("refused"), m_refused},
        {QStringLiteral("ended"), m_ended}, {QStringLiteral("lost"), m_lost}, {QStringLiteral("answers"), m_answers},
        {QStringLiteral("questions"), questions}, {QStringLiteral("log"), m_log}};
}

} // namespace zemrak::twin
