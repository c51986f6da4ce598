// The line below the editor: how much text there is, caret position, language, line endings, encoding and
// whether everything is saved. Where there is no room for all of it, the less important parts give way as a
// whole: half a number says something else.
#pragma once

#include "app/look/TextLabel.h"
#include "core/AppState.h"

class QMenu;

namespace quillmark {

class SaveStateLabel;
class TextButton;

class StatusBarView : public QWidget {
    Q_OBJECT

public:
    StatusBarView(AppState& app, QWidget* parent);

    /// All languages; choosing one colours the document as such. Deletes itself when it is closed.
    QMenu* makeLanguageMenu();
    std::vector<QWidget*> buttons() const; ///< from left to right

protected:
    QSize minimumSizeHint() const override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    TextLabel* addLabel();
    TextButton* addButton(const QString& toolTip);
    void watch();
    void showStatistics();
    void showPosition();
    void fit();
    void give(size_t step);
    int widthAt(size_t step) const;
    void convertLineEndings();

    AppState& m_app;
    std::vector<QString> m_statisticsTexts; ///< the longest first, the last one empty
    std::vector<int> m_statisticsWidths;
    TextLabel* m_statistics;
    TextLabel* m_position;
    TextButton* m_language;
    TextButton* m_lineEndings;
    TextLabel* m_encoding;
    SaveStateLabel* m_saveState;
    std::vector<Connection> m_connections;
};

} // namespace quillmark
