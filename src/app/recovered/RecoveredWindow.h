// A window beside the main one, with the texts that were kept when they would have been lost. Not modal;
// Escape and Ctrl+W close it.
#pragma once

#include "core/Commands.h"

#include <QListView>

class QPushButton;

namespace quillmark {

class RecoveredModel;
class TextLabel;

class RecoveredWindow : public QWidget {
    Q_OBJECT

public:
    RecoveredWindow(AppState& app, Shell& shell, QWidget* mainWindow);

    void present(); ///< lists anew, shows and raises it

    QListView& list() { return *m_list; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void entriesChanged();
    void open();
    void reveal();
    QWidget* makeButtons();

    AppState& m_app;
    Shell& m_shell;
    RecoveredModel* m_model;
    QListView* m_list;
    TextLabel* m_nothing;
    QPushButton* m_reveal = nullptr;
    QPushButton* m_open = nullptr;
};

} // namespace quillmark
