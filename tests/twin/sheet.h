#pragma once

#include "twin/paper/interpreter.h"

#include <QJsonArray>

namespace zemrak::test {

inline QByteArray hex(const char *bytes)
{
    return QByteArray::fromHex(bytes);
}

/// Prints bytes and keeps what comes of them.
class Sheet : public paper::Listener
{
public:
    explicit Sheet(paper::Language language = paper::Language::EscPos, int dots = 576)
        : m_interpreter(language, dots, *this)
    {
    }
    /// A whole job.
    explicit Sheet(const QByteArray &bytes, paper::Language language = paper::Language::EscPos, int dots = 576)
        : Sheet(language, dots)
    {
        print(bytes).end();
    }

    Sheet &print(const QByteArray &bytes)
    {
        m_interpreter.take(bytes);
        return *this;
    }
    Sheet &end()
    {
        m_interpreter.endJob();
        return *this;
    }
    [[nodiscard]] paper::Interpreter &interpreter() { return m_interpreter; }
    /// The first one; an empty one when nothing has come out.
    [[nodiscard]] paper::Receipt receipt() const { return receipts.value(0); }
    /// Every line of every receipt.
    [[nodiscard]] QStringList lines() const
    {
        QStringList all;
        for (const paper::Receipt &each : receipts)
            for (const paper::Printed &event : each.printed)
                if (event.kind == QLatin1String("text"))
                    all.append(event.facts.value(QLatin1String("text")).toString());
        return all;
    }
    /// The first event of a kind, with its place.
    [[nodiscard]] paper::Printed first(const char *kind) const
    {
        for (const paper::Printed &event : receipt().printed)
            if (event.kind == QLatin1String(kind))
                return event;
        return {};
    }

    QList<paper::Receipt> receipts;
    QList<QPair<paper::Request, QByteArray>> requests;

private:
    void finished(paper::Receipt done) override { receipts.append(done); }
    void asked(paper::Request request, QByteArrayView parameters) override
    {
        requests.append({request, parameters.toByteArray()});
    }

    paper::Interpreter m_interpreter;
};

/// What is black within an area: the box around it, and how many dots.
struct Ink
{
    QRect box;
    int dots = 0;
};

inline Ink inkOf(const paper::Dots &dots, const QRect &area)
{
    Ink ink;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (dots.at(x, y))
                ink = {ink.box | QRect(x, y, 1, 1), ink.dots + 1};
        }
    }
    return ink;
}

} // namespace zemrak::test
