// The line below the editor: caret position, language, line endings, encoding and whether everything is
// saved.
#pragma once

#include "app/window/TextLabel.h"
#include "core/AppState.h"

namespace quillmark {

class SaveStateLabel;

class StatusBarView : public QWidget {
    Q_OBJECT

public:
    StatusBarView(AppState& app, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    TextLabel* addLabel();
    void watch(AppState& app);
    void showPosition(const AppState& app);

    TextLabel* m_loading;
    TextLabel* m_position;
    TextLabel* m_language;
    TextLabel* m_lineEndings;
    TextLabel* m_encoding;
    SaveStateLabel* m_saveState;
    std::vector<Connection> m_connections;
};

} // namespace quillmark
