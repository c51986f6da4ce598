#include "desktop/QtClipboard.h"

#include "desktop/TextMimeData.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace quillmark {

namespace {

QClipboard::Mode modeOf(Clipboard::Buffer buffer)
{
    return buffer == Clipboard::Buffer::clipboard ? QClipboard::Clipboard : QClipboard::Selection;
}

bool isSupported(QClipboard::Mode mode)
{
    return mode == QClipboard::Clipboard || QGuiApplication::clipboard()->supportsSelection();
}

} // namespace

bool QtClipboard::hasText(Buffer buffer) const
{
    const QClipboard::Mode mode = modeOf(buffer);
    const QMimeData* data = isSupported(mode) ? QGuiApplication::clipboard()->mimeData(mode) : nullptr;
    return data && data->hasText();
}

std::u16string QtClipboard::text(Buffer buffer) const
{
    const QClipboard::Mode mode = modeOf(buffer);
    return isSupported(mode) ? QGuiApplication::clipboard()->text(mode).toStdU16String() : std::u16string();
}

void QtClipboard::setText(Rope text, Buffer buffer)
{
    const QClipboard::Mode mode = modeOf(buffer);
    if (isSupported(mode))
        QGuiApplication::clipboard()->setMimeData(new TextMimeData(std::move(text)), mode);
}

} // namespace quillmark
