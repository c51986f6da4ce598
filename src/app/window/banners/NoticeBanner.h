// A passing word to the user, with a button that sends it away.
#pragma once

#include "app/window/banners/Banner.h"

namespace quillmark {

class NoticeBanner : public Banner {
    Q_OBJECT

public:
    NoticeBanner(std::function<void()> onClose, QWidget* parent)
        : Banner({.symbol = "info.circle"}, parent)
    {
        addCloseButton(std::move(onClose));
    }
};

} // namespace quillmark
