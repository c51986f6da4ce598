// The menu bar, made of the command table. All keys of a command work whether or not its menu was ever open.
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
    /// `window` gets the actions, so that their keys work wherever the focus is in it.
    MainMenu(AppState& app, Shell& shell, QWidget* window);

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
    QWidget* m_window;
    std::vector<Row> m_rows;
};

} // namespace quillmark
