// "Сохранено", or a dot while there are edits that are not yet written. As wide in both states, so that its
// neighbours stand still.
#pragma once

#include <QWidget>

namespace quillmark {

class SaveStateLabel : public QWidget {
    Q_OBJECT

public:
    SaveStateLabel(const QFont& font, QWidget* parent);

    void setDirty(bool isDirty);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_isDirty = false;
};

} // namespace quillmark
