#include "app/window/AccessibleWidgets.h"

#include "app/look/SymbolButton.h"
#include "app/look/TextButton.h"
#include "app/look/TextLabel.h"
#include "app/window/ContentView.h"
#include "app/window/banners/Banner.h"
#include "app/window/status/SaveStateLabel.h"
#include "app/window/status/StatusBarView.h"
#include "app/window/tabs/TabStrip.h"

#include <QAccessibleWidget>

namespace quillmark {

namespace {

/// Something to press.
class Pressable : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override
    {
        if (name == pressAction() && object())
            press();
    }

protected:
    virtual void press() = 0;
};

class Button final : public Pressable {
public:
    explicit Button(QAbstractButton* button)
        : Pressable(button, QAccessible::PushButton)
    {
    }

    /// Without the keys that a tool tip shows behind it.
    QString text(QAccessible::Text kind) const override
    {
        const QString text = Pressable::text(kind);
        return kind == QAccessible::Name ? text.left(text.lastIndexOf(QStringLiteral(" ("))) : text;
    }

private:
    void press() override { static_cast<QAbstractButton*>(object())->click(); }
};

class Tab final : public Pressable {
public:
    explicit Tab(TabItemView* tab)
        : Pressable(tab, QAccessible::PageTab)
    {
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = Pressable::state();
        const auto* tab = dynamic_cast<TabItemView*>(object()); // null while it is being destroyed
        state.selectable = true;
        state.selected = tab && tab->isActive();
        return state;
    }

private:
    void press() override { static_cast<TabItemView*>(object())->activate(); }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    if (auto* tab = dynamic_cast<TabItemView*>(object))
        return new Tab(tab);
    if (dynamic_cast<SymbolButton*>(object) || dynamic_cast<TextButton*>(object))
        return new Button(static_cast<QAbstractButton*>(object));
    if (auto* strip = dynamic_cast<TabStrip*>(object))
        return new QAccessibleWidget(strip, QAccessible::PageTabList, QStringLiteral("Вкладки"));
    if (auto* banner = dynamic_cast<Banner*>(object))
        return new QAccessibleWidget(banner, QAccessible::Notification);
    if (auto* bar = dynamic_cast<StatusBarView*>(object))
        return new QAccessibleWidget(bar, QAccessible::StatusBar, QStringLiteral("Состояние"));
    if (auto* window = dynamic_cast<ContentView*>(object))
        return new QAccessibleWidget(window, QAccessible::Window);
    if (dynamic_cast<TextLabel*>(object) || dynamic_cast<SaveStateLabel*>(object))
        return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::StaticText);
    return nullptr;
}

} // namespace

void installAccessibleWidgets()
{
    QAccessible::removeFactory(makeAccessible);
    QAccessible::installFactory(makeAccessible);
}

} // namespace quillmark
