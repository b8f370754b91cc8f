#include "platform/linux/savedialog.h"

#include "platform/linux/filetypes.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QWindow>

namespace zemrak::linux_ {

namespace {

QString usualFolder()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

std::unique_ptr<QFileDialog> makeDialog(const Desktop::SaveQuestion &question)
{
    const FileType type = fileType(question.kind);
    auto dialog = std::make_unique<QFileDialog>(
        nullptr, question.title, usualFolder(), QStringLiteral("%1 (*.%2)").arg(type.name, type.suffix));
    // The toolkit's native dialog would ask the very portal that did not answer.
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDefaultSuffix(type.suffix);
    dialog->setLabelText(QFileDialog::LookIn, QStringLiteral("المجلد:"));
    dialog->setLabelText(QFileDialog::FileName, QStringLiteral("اسم الملف:"));
    dialog->setLabelText(QFileDialog::FileType, QStringLiteral("نوع الملف:"));
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("حفظ"));
    dialog->setLabelText(QFileDialog::Reject, QStringLiteral("إلغاء"));
    dialog->setLayoutDirection(Qt::RightToLeft);
    // A path is read from its left, whatever the language.
    if (auto *folder = dialog->findChild<QComboBox *>(QStringLiteral("lookInCombo")))
        folder->setLayoutDirection(Qt::LeftToRight);
    dialog->selectFile(question.fileName);
    return dialog;
}

} // namespace

SaveDialog::SaveDialog(
    const QDBusConnection &bus, Desktop::SaveQuestion question, QObject *asker, Desktop::Chosen chosen, QObject *parent)
    : QObject(parent)
    , m_question(std::move(question))
    , m_asker(asker)
    , m_chosen(std::move(chosen))
    , m_portal(bus, nullptr)
{
    connect(asker, &QObject::destroyed, this, &QObject::deleteLater);
    connect(&m_portal, &PortalRequest::answered, this, &SaveDialog::finish);
    connect(&m_portal, &PortalRequest::failed, this, &SaveDialog::openOwn);
}

void SaveDialog::open(std::chrono::milliseconds portalPatience)
{
    m_portal.saveFile(m_question, portalPatience);
}

void SaveDialog::openOwn()
{
    QWindow *const above = QGuiApplication::focusWindow();
    m_own = makeDialog(m_question);
    connect(m_own.get(), &QFileDialog::finished, this, [this](int result) {
        finish(result == QDialog::Accepted ? std::optional(m_own->selectedFiles().value(0)) : std::nullopt);
    });
    m_own->winId(); // makes the window that is to lie over ours
    m_own->windowHandle()->setTransientParent(above);
    m_own->open();
}

void SaveDialog::finish(const std::optional<QString> &path)
{
    deleteLater();
    if (const Desktop::Chosen chosen = std::exchange(m_chosen, {}); chosen && m_asker)
        chosen(path);
}

} // namespace zemrak::linux_
