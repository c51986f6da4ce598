// How the toolkit's own controls look: flat, in theme colours, without bevels. Menus, scroll bars, tool tips
// and the few controls of the file panel; everything else is left to the base style. Tool tips and labels
// show what they are given letter by letter: it may be a name, and is never markup.
#pragma once

#include <QProxyStyle>

namespace quillmark {

class Style : public QProxyStyle {
    Q_OBJECT

public:
    Style();

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
        QStyleHintReturn* returnData) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
        const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
        const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget) const override;
};

} // namespace quillmark
