// The row of tabs; arrow keys walk along it. It scrolls sideways when there are more than fit, and keeps the
// active one in view. While tabs are closed with the mouse it holds still: the next tab comes under the
// mouse, with its close button where that was clicked, so that several can be closed in one place.
#pragma once

#include "app/window/tabs/TabItemView.h"

namespace quillmark {

class TabStrip : public QWidget {
    Q_OBJECT

public:
    TabStrip(AppState& app, QWidget* parent);

    const std::vector<TabItemView*>& items() const { return m_items; }
    bool isWalking() const { return m_isWalking; } ///< while an arrow key goes to another tab
    int offset() const { return m_offset; } ///< pixels of the row that are scrolled out at the left
    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    class EdgeFade;
    enum class Reveal { no, active };

    void tabsChanged();
    TabItemView* takeItem(const Uuid& tabID);
    TabItemView* makeItem(const std::shared_ptr<EditorTab>& tab);
    enum class Under { tab, closeButton }; ///< what was clicked, and what of the next tab comes there
    void closeByMouse(const TabItemView& item, Under under);
    void place(Reveal reveal);
    int widthOf(const TabItemView& item) const;
    int leftOf(const TabItemView& item) const; ///< in the whole row
    TabItemView* activeItem() const; ///< null when there is none
    int fadeWidth() const;
    int offsetShowingActive(int offset) const;
    int contentWidth() const;
    void walk(int offset);

    AppState& m_app;
    std::vector<TabItemView*> m_items; ///< in the order of the tabs; children of this
    EdgeFade* m_leftFade;
    EdgeFade* m_rightFade;
    int m_offset = 0;
    bool m_isClosingByMouse = false;
    int m_heldOffset = 0; ///< the row may be scrolled this far beyond its end, until the mouse leaves
    bool m_revealsWhenLeft = false; ///< another tab became active under a held row
    bool m_isWalking = false;
    std::vector<Connection> m_connections;
};

} // namespace quillmark
