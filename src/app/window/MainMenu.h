// The menu bar, made of the command table. It shows the keys of the commands, and runs them while it has the
// keyboard itself; everywhere else they are for WindowKeys.
#pragma once

#include "core/Commands.h"

#include <QMenuBar>

#include <vector>

namespace quillmark {

/// What a button says that does what a command does: its title and its keys as the program shows them.
QString toolTipOf(std::string_view commandID);

class MainMenu : public QMenuBar {
    Q_OBJECT

public:
    MainMenu(AppState& app, Shell& shell, QWidget* window);

    QAction* menuFor(const QKeyEvent& key) const; ///< whose mnemonic it is; null when there is none
    void open(QAction& menu); ///< its first row is the current one
    void openFirst();

private:
    struct Row {
        const Command* command;
        QAction* action;
    };

    QAction* makeAction(const Command& command);
    void addMenu(Menu menu, const QString& title);
    void showEnabled(Menu menu);
    void enableAll(Menu menu);

    AppState& m_app;
    Shell& m_shell;
    std::vector<Row> m_rows;
};

} // namespace quillmark
