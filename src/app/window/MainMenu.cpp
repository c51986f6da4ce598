#include "app/window/MainMenu.h"

#include "app/window/CommandKeys.h"

#include <optional>

namespace quillmark {

QString toolTipOf(std::string_view commandID)
{
    const Command& shown = command(commandID);
    return QStringLiteral("%1 (%2)").arg(
        QString::fromUtf8(shown.menuTitle), QString::fromUtf8(shown.keySigns));
}

MainMenu::MainMenu(AppState& app, Shell& shell, QWidget* window)
    : QMenuBar(window)
    , m_app(app)
    , m_shell(shell)
{
    addMenu(Menu::file, QStringLiteral("&Файл"));
    addMenu(Menu::edit, QStringLiteral("&Правка"));
    addMenu(Menu::view, QStringLiteral("&Вид"));
}

void MainMenu::addMenu(Menu menu, const QString& title)
{
    QMenu* shown = QMenuBar::addMenu(title);
    QMenu* submenu = nullptr;
    std::optional<int> group;
    for (const Command& command : commands()) {
        if (command.menu != menu)
            continue;
        if (group && *group != command.group)
            shown->addSeparator();
        group = command.group;
        const QString within = QString::fromUtf8(command.submenu);
        if (!within.isEmpty() && (!submenu || submenu->title() != within))
            submenu = shown->addMenu(within);
        (within.isEmpty() ? shown : submenu)->addAction(makeAction(command));
    }
    // Whether a command can run is only shown, never stored: a key must not depend on when a menu was last
    // open.
    connect(shown, &QMenu::aboutToShow, this, [this, menu] { showEnabled(menu); });
    connect(shown, &QMenu::aboutToHide, this, [this, menu] { enableAll(menu); });
}

QAction* MainMenu::makeAction(const Command& command)
{
    auto* action = new QAction(QString::fromUtf8(command.menuTitle), this);
    action->setShortcuts(keySequences(command));
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setMenuRole(QAction::NoRole);
    action->setObjectName(QString::fromUtf8(command.id));
    action->setCheckable(command.isChecked);
    connect(action, &QAction::triggered, this, [this, run = command.run] { run(m_app, m_shell); });
    m_rows.push_back({&command, action});
    return action;
}

QAction* MainMenu::menuFor(const QKeyEvent& key) const
{
    for (QAction* menu : actions()) {
        if (isMnemonic(key, QKeySequence::mnemonic(menu->text())))
            return menu;
    }
    return nullptr;
}

void MainMenu::open(QAction& menu)
{
    setActiveAction(&menu);
    if (!menu.menu()->isEmpty())
        menu.menu()->setActiveAction(menu.menu()->actions().front());
}

void MainMenu::openFirst()
{
    open(*actions().front());
}

void MainMenu::showEnabled(Menu menu)
{
    for (const Row& row : m_rows) {
        if (row.command->menu != menu)
            continue;
        if (row.command->isEnabled)
            row.action->setEnabled(row.command->isEnabled(m_app, m_shell));
        if (row.command->isChecked)
            row.action->setChecked(row.command->isChecked(m_app));
    }
}

void MainMenu::enableAll(Menu menu)
{
    for (const Row& row : m_rows)
        if (row.command->menu == menu)
            row.action->setEnabled(true);
}

} // namespace quillmark
