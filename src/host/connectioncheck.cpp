#include "host/connectioncheck.h"

#include "model/wire.h"

namespace zemrak {

using namespace std::chrono_literals;

ConnectionCheck::ConnectionCheck(PrintService &service, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_clock(clock)
{
}

void ConnectionCheck::runScan()
{
    if (m_scanning)
        return;
    m_scanning = true;
    m_answer.reset();
    const bool hadResult = m_result.has_value();
    m_result.reset();
    m_progress = 0.03; // before scanningChanged(), or its listeners would read the last check's 1.0
    m_step = QStringLiteral("فحص خدمة الطباعة");
    Q_EMIT scanningChanged();
    if (hadResult)
        Q_EMIT scanResultChanged();
    Q_EMIT scanProgressChanged();
    Q_EMIT scanStepChanged();
    searchPrinters();
}

void ConnectionCheck::searchPrinters()
{
    after(600ms, 0.22, QStringLiteral("البحث عن الطابعات المتاحة"), &ConnectionCheck::testPrinters);
}

void ConnectionCheck::testPrinters()
{
    after(700ms, 0.4, QStringLiteral("اختبار اتصال كل طابعة"), &ConnectionCheck::askService);
}

void ConnectionCheck::askService()
{
    m_service.post(QStringLiteral("/admin/scan"), QJsonObject{}, 25s, this, [this](const PrintService::Answer &answer) {
        if (answer)
            m_answer = decodeBody<ScanResult>(*answer);
        checkPermissions();
    });
}

void ConnectionCheck::checkPermissions()
{
    after(300ms, 0.85, QStringLiteral("التحقق من الأذونات والمنافذ"), &ConnectionCheck::complete);
}

void ConnectionCheck::complete()
{
    after(600ms, 1.0, QStringLiteral("اكتمل الفحص"), &ConnectionCheck::publish);
}

void ConnectionCheck::publish()
{
    m_result = std::exchange(m_answer, std::nullopt);
    m_scanning = false;
    if (m_result)
        Q_EMIT scanResultChanged();
    Q_EMIT scanningChanged();
    Q_EMIT finished();
}

void ConnectionCheck::after(std::chrono::milliseconds delay, double progress, const QString &step, Next next)
{
    m_clock.after(delay, this, [this, progress, step, next] {
        show(progress, step);
        (this->*next)();
    });
}

void ConnectionCheck::show(double progress, const QString &step)
{
    m_progress = progress;
    m_step = step;
    Q_EMIT scanProgressChanged();
    Q_EMIT scanStepChanged();
}

} // namespace zemrak
