// One tab of the tab bar: dirty dot, symbol of a file, title and close button. The place of the dot is kept
// free while there is none. Too narrow, it cuts its title.
#pragma once

#include "core/AppState.h"

#include <QWidget>

namespace quillmark {

class SymbolButton;

class TabItemView : public QWidget {
    Q_OBJECT

public:
    TabItemView(AppState& app, std::shared_ptr<EditorTab> tab, QWidget* parent);

    const Uuid& tabID() const { return m_tab->id; }
    bool isActive() const;
    void activate();
    void openMenu(const QPoint& place); ///< on the screen
    SymbolButton& closeButton() { return *m_close; }

    QSize sizeHint() const override;

Q_SIGNALS:
    void sizeHintChanged();
    void closeClicked(); ///< with the left button, on the mark
    void closeMiddleClicked(); ///< anywhere

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void contentsChanged();
    void updateCloseOpacity();
    void paintContents(QPainter& painter, const QColor& textColor) const;

    AppState& m_app;
    const std::shared_ptr<EditorTab> m_tab;
    SymbolButton* m_close;
    bool m_hovering = false;
    std::vector<Connection> m_connections;
};

} // namespace quillmark
