#include "desktop/TextMimeData.h"

namespace quillmark {

namespace {

const auto plainText = QStringLiteral("text/plain"); // the platform knows its other names

} // namespace

TextMimeData::TextMimeData(Rope text)
    : m_text(std::move(text))
{
}

QStringList TextMimeData::formats() const
{
    return {plainText};
}

bool TextMimeData::hasFormat(const QString& format) const
{
    return format == plainText;
}

QVariant TextMimeData::retrieveData(const QString& format, QMetaType) const
{
    return format == plainText ? QVariant(QString::fromStdU16String(m_text.text())) : QVariant();
}

} // namespace quillmark
