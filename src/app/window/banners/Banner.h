// A line above the editor that tells the user something: a symbol, a text, and perhaps buttons. A screen
// reader hears of it when it comes and when its text changes.
#pragma once

#include "editor/Theme.h"

#include <QWidget>

#include <functional>
#include <string_view>

namespace quillmark {

class TextLabel;

struct BannerLook {
    std::string_view symbol; ///< lives as long as the program
    ThemeColor ground = ThemeColor::accentTint;
    ThemeColor symbolColor = ThemeColor::secondaryText;
    ThemeColor textColor = ThemeColor::secondaryText;
};

class Banner : public QWidget {
    Q_OBJECT

public:
    Banner(const BannerLook& look, QWidget* parent);

    /// On one line, cut at its end where there is no room; then the tool tip has all of it.
    void setText(const QString& text);
    void setWraps(); ///< the text takes as many lines as it needs instead
    void addButton(const QString& title, std::function<void()> onClick);
    void addCloseButton(std::function<void()> onClose);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void announce();

    const BannerLook m_look;
    TextLabel* m_text;
};

} // namespace quillmark
