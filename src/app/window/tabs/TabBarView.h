// The bar above the editor: the tabs and the button that makes a new one.
#pragma once

#include "app/window/tabs/TabStrip.h"

namespace quillmark {

class TabBarView : public QWidget {
    Q_OBJECT

public:
    TabBarView(AppState& app, QWidget* parent);

    TabStrip& strip() { return *m_strip; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    TabStrip* m_strip;
};

} // namespace quillmark
