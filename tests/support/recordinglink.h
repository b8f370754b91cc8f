#pragma once

#include "host/servicelink.h"

#include <QList>
#include <QObject>
#include <QPointer>

namespace zemrak::test {

/// Keeps what it is asked for; a test gives the answers when it likes.
class RecordingLink final : public ServiceLink
{
public:
    struct Request
    {
        QByteArray method;
        QString path;
        std::chrono::milliseconds timeout;
        QPointer<QObject> context;
        Answered done;

        void answer(const Answer &answer) const
        {
            if (context)
                done(answer);
        }
    };
    struct Command
    {
        QStringList arguments;
        QPointer<QObject> context;
        Ended done;

        void end(int status) const
        {
            if (context)
                done(status);
        }
    };

    void get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) override
    {
        requests.append({"GET", path, timeout, context, std::move(done)});
    }
    void post(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) override
    {
        requests.append({"POST", path, timeout, context, std::move(done)});
    }
    void runOnce(const QStringList &arguments, QObject *context, Ended done) override
    {
        commands.append({arguments, context, std::move(done)});
    }
    void flash(const QString &text) override { flashed.append(text); }
    void appendToLog(const QString &text) override { log += text; }
    void refresh() override { ++refreshes; }

    QList<Request> requests;
    QList<Command> commands;
    QStringList flashed;
    QString log;
    int refreshes = 0;
};

} // namespace zemrak::test
