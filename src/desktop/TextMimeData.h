// A text on its way to the clipboard or to a place where it is dropped. Holds a Rope and makes characters of
// it only when somebody asks for them.
#pragma once

#include "text/Rope.h"

#include <QMimeData>

namespace quillmark {

class TextMimeData final : public QMimeData {
public:
    explicit TextMimeData(Rope text);

    QStringList formats() const override;
    bool hasFormat(const QString& format) const override;

protected:
    QVariant retrieveData(const QString& format, QMetaType type) const override;

private:
    const Rope m_text;
};

} // namespace quillmark
