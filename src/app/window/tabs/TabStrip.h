// The row of tabs. It scrolls sideways when there are more than fit, and keeps the active one in view.
#pragma once

#include "app/window/tabs/TabItemView.h"

namespace quillmark {

class TabStrip : public QWidget {
    Q_OBJECT

public:
    TabStrip(AppState& app, QWidget* parent);

    const std::vector<TabItemView*>& items() const { return m_items; }
    int offset() const { return m_offset; } ///< pixels of the row that are scrolled out at the left
    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    class EdgeFade;
    enum class Reveal { no, active };

    void tabsChanged();
    TabItemView* takeItem(const Uuid& tabID);
    TabItemView* makeItem(const std::shared_ptr<EditorTab>& tab);
    void place(Reveal reveal);
    int offsetShowingActive(int offset) const;
    int contentWidth() const;

    AppState& m_app;
    std::vector<TabItemView*> m_items; ///< in the order of the tabs; children of this
    EdgeFade* m_leftFade;
    EdgeFade* m_rightFade;
    int m_offset = 0;
    std::vector<Connection> m_connections;
};

} // namespace quillmark
