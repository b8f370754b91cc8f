#include "ui/presenters/wizard/wizardstep.h"

#include "ui/presenters/text/palettename.h"

namespace zemrak {

const QList<WizardStep> &wizardSteps()
{
    static const QList<WizardStep> steps{
        {QStringLiteral("power"), {QStringLiteral("#4ade80"), QStringLiteral("#16a34a")},
            QStringLiteral("التشغيل مع بدء الجهاز"),
            QStringLiteral("ليكون Zemrak Printer جاهزًا دائمًا بعد تشغيل الماك، ويعيد تشغيل نفسه إن توقف."),
            QStringLiteral("يمكنك تغيير هذا لاحقًا من الإعدادات."), QStringLiteral("تفعيل"), QStringLiteral("تخطي")},
        {QStringLiteral("bell.badge.fill"), {QStringLiteral("#fb7185"), QStringLiteral("#e11d48")},
            QStringLiteral("الإشعارات"),
            QStringLiteral("لتحذيرك فورًا عندما تنقطع الطابعة أو تفشل طباعة أو تظهر مشكلة، حتى لو كانت نافذة البرنامج "
                           "مغلقة. سيسألك ماك «هل تسمح بالإشعارات؟»."),
            QStringLiteral(
                "كل التحذيرات تُحفظ أيضًا في صفحة «الإشعارات» داخل البرنامج. يمكنك تغيير هذا لاحقًا من إعدادات النظام."),
            QStringLiteral("السماح بالإشعارات"), QStringLiteral("تخطي")},
        {QStringLiteral("safari"), {QStringLiteral("#60a5fa"), QStringLiteral("#2563eb")},
            QStringLiteral("دعم متصفح Safari"),
            QStringLiteral("Safari وحده يحتاج شهادة HTTPS محلية للتحدث مع الطابعة. سيطلب منك ماك كلمة المرور أو Touch "
                           "ID مرة واحدة."),
            QStringLiteral("إن كنتَ تستخدم Chrome أو Edge أو Firefox فاضغط «تخطي»؛ لا يلزمك شيء. الشهادة تعمل لهذا "
                           "الجهاز فقط ولا تتكرر."),
            QStringLiteral("تفعيل"), QStringLiteral("تخطي، لا أستخدم Safari")},
        {QStringLiteral("wifi"), {QStringLiteral("#fbbf24"), QStringLiteral("#ea580c")},
            QStringLiteral("الشبكة المحلية"),
            QStringLiteral("للعثور على طابعات الواي فاي والشبكة والطباعة عليها. سيسألك ماك «هل تسمح لـ Zemrak Printer "
                           "بالبحث في الشبكة المحلية؟»."),
            QStringLiteral("إن كانت طابعتك USB فقط يمكنك التخطي."), QStringLiteral("السماح"), QStringLiteral("تخطي")},
    };
    return steps;
}

QString wizardChoiceText(WizardChoice choice)
{
    switch (choice) {
    case WizardChoice::Enabled:
        return QStringLiteral("مفعّل");
    case WizardChoice::Failed:
        return QStringLiteral("لم يكتمل");
    case WizardChoice::Skipped:
    case WizardChoice::None:
        break;
    }
    return QStringLiteral("تم التخطي");
}

QString wizardChoiceColor(WizardChoice choice)
{
    switch (choice) {
    case WizardChoice::Enabled:
        return paletteName(Tone::Green);
    case WizardChoice::Failed:
        return paletteName(Tone::Amber);
    case WizardChoice::Skipped:
    case WizardChoice::None:
        break;
    }
    return QStringLiteral("#80ffffff");
}

} // namespace zemrak
