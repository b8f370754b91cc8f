#pragma once

#include "host/printservice.h"
#include "host/servicecommands.h"

#include <QList>
#include <QObject>
#include <QPointer>

namespace zemrak::test {

/// Keeps the requests it is given; a test answers them when it likes.
class RecordingService final : public PrintService
{
public:
    struct Request
    {
        QByteArray method;
        QString path;
        std::optional<QJsonObject> body;
        std::chrono::milliseconds timeout;
        QPointer<QObject> context;
        Answered done;

        void answer(const Answer &answer) const
        {
            if (context && done)
                done(answer);
        }
    };

    void get(const QString &path, std::chrono::milliseconds timeout, QObject *context, Answered done) override
    {
        requests.append({"GET", path, std::nullopt, timeout, context, std::move(done)});
    }
    void post(const QString &path, const std::optional<QJsonObject> &body, std::chrono::milliseconds timeout,
        QObject *context, Answered done) override
    {
        requests.append({"POST", path, body, timeout, context, std::move(done)});
    }

    QList<Request> requests;
};

/// Keeps the commands it is given; a test ends them when it likes.
class RecordingCommands final : public ServiceCommands
{
public:
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

    void runOnce(const QStringList &arguments, QObject *context, Ended done) override
    {
        commands.append({arguments, context, std::move(done)});
    }

    QList<Command> commands;
};

} // namespace zemrak::test
