// Says that the file is too large to be edited.
#pragma once

#include "app/window/banners/Banner.h"

namespace quillmark {

class ReadOnlyBanner : public Banner {
    Q_OBJECT

public:
    explicit ReadOnlyBanner(QWidget* parent)
        : Banner({.symbol = "lock.fill", .ground = ThemeColor::panelBackground}, parent)
    {
        setText(QStringLiteral("Файл больше 20 МБ — открыт только для чтения"));
    }
};

} // namespace quillmark
