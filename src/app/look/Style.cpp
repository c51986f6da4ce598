#include "app/look/Style.h"

#include "app/look/StylePaint.h"
#include "app/look/SymbolIcon.h"

#include <QLabel>
#include <QMenu>
#include <QStyleFactory>
#include <QStyleOption>

namespace quillmark {

namespace {

constexpr int scrollBarExtent = 10;
constexpr int menuItemHeight = 26;
constexpr int menuSeparatorHeight = 9;
constexpr int menuBarItemPadding = 10;
constexpr int menuBarMargin = 8;
constexpr int buttonPadding = 6; ///< beside a button's title, more than the base style leaves
constexpr int toolTipPadding = 5;
constexpr int menuBarHeight = 28;
constexpr int smallestThumb = 32;

} // namespace

Style::Style()
    : QProxyStyle(QStringLiteral("Fusion"))
{
}

void Style::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (auto* label = qobject_cast<QLabel*>(widget); label && label->textFormat() == Qt::AutoText)
        label->setTextFormat(Qt::PlainText);
}

int Style::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return scrollBarExtent;
    case PM_ScrollBarSliderMin:
        return smallestThumb;
    case PM_MenuPanelWidth:
    case PM_MenuBarVMargin:
    case PM_MenuBarPanelWidth:
    case PM_MenuBarItemSpacing:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    case PM_MenuBarHMargin:
        return menuBarMargin;
    case PM_ToolTipLabelFrameWidth:
        return toolTipPadding;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return 5;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int Style::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* returnData) const
{
    switch (hint) {
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_UnderlineShortcut:
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_ScrollView_FrameOnlyAroundContents:
        return 0;
    case SH_ScrollBar_LeftClickAbsolutePosition:
    case SH_Menu_MouseTracking:
    case SH_MenuBar_MouseTracking:
        return 1;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

QIcon Style::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const
{
    switch (icon) {
    case SP_ArrowBack:
        return symbolIcon("chevron.left");
    case SP_ArrowForward:
        return symbolIcon("chevron.right");
    case SP_FileDialogToParent:
        return symbolIcon("arrow.up");
    case SP_FileDialogNewFolder:
        return symbolIcon("folder.badge.plus");
    case SP_FileDialogListView:
        return symbolIcon("square.grid.2x2");
    case SP_FileDialogDetailedView:
        return symbolIcon("list.bullet");
    case SP_DirIcon:
        return symbolIcon("folder");
    case SP_DirHomeIcon:
        return symbolIcon("house");
    case SP_FileIcon:
        return symbolIcon("doc");
    case SP_LineEditClearButton:
        return symbolIcon("xmark.circle.fill");
    case SP_ComputerIcon:
    case SP_DriveHDIcon:
        return symbolIcon("desktopcomputer");
    default:
        return QProxyStyle::standardIcon(icon, option, widget);
    }
}

QSize Style::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const
{
    if (type == CT_MenuBarItem)
        return {size.width() + 2 * menuBarItemPadding, menuBarHeight};
    if (type == CT_PushButton) {
        const QSize whole = QProxyStyle::sizeFromContents(type, option, size, widget);
        return {whole.width() + 2 * buttonPadding, whole.height()};
    }
    if (type == CT_MenuItem) {
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
            if (item->menuItemType == QStyleOptionMenuItem::Separator)
                return {size.width(), menuSeparatorHeight};
            return {menuItemWidth(*item), menuItemHeight};
        }
    }
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

QRect Style::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
    const QWidget* widget) const
{
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || !slider)
        return QProxyStyle::subControlRect(control, option, subControl, widget);
    return visualRect(slider->direction, slider->rect, scrollBarPart(*slider, subControl, smallestThumb));
}

void Style::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    switch (element) {
    case PE_PanelMenu:
    case PE_FrameMenu:
    case PE_PanelTipLabel:
        return paintPopUp(*painter, option->rect);
    case PE_PanelMenuBar:
    case PE_FrameFocusRect:
    case PE_FrameStatusBarItem:
        return;
    case PE_PanelButtonCommand:
    case PE_PanelButtonTool:
        return paintButton(*painter, *option);
    case PE_FrameLineEdit:
    case PE_PanelLineEdit:
    case PE_Frame:
        return paintField(*painter, *option);
    default:
        return QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void Style::drawControl(
    ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    const auto* menuItem = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    switch (element) {
    case CE_MenuBarEmptyArea:
        return paintMenuBarGround(*painter, option->rect);
    case CE_MenuBarItem:
        if (menuItem)
            return paintMenuBarItem(*painter, *menuItem);
        break;
    case CE_MenuItem:
        if (menuItem)
            return paintMenuItem(*painter, *menuItem);
        break;
    case CE_HeaderSection:
    case CE_HeaderEmptyArea:
        return paintHeader(*painter, option->rect);
    case CE_MenuEmptyArea:
    case CE_Splitter:
        return;
    default:
        break;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void Style::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const
{
    if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        slider && control == CC_ScrollBar)
        return paintScrollBar(*painter, *slider, scrollBarPart(*slider, SC_ScrollBarSlider, smallestThumb));
    if (const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
        box && control == CC_ComboBox)
        return paintComboBox(*painter, *box);
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

} // namespace quillmark
