#include "guide/guidefile.h"

#include "guide/docsmarkdown.h"

#include <QSaveFile>

namespace zemrak {

QString writeGuide(const QString &path)
{
    QSaveFile file(path);
    const QByteArray text = docsMarkdown().toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        return {};
    return file.errorString();
}

} // namespace zemrak
