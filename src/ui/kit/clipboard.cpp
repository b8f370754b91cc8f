#include "ui/kit/clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace zemrak {

void Clipboard::copy(const QString &text)
{
    QString plain = text;
    plain.removeIf([](QChar c) { return c == u'\u200e' || c == u'\u200f' || (c >= u'\u2066' && c <= u'\u2069'); });
    QGuiApplication::clipboard()->setText(plain);
}

} // namespace zemrak
