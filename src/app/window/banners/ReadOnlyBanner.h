// Says that the file is too large to be edited.
#pragma once

#include <QWidget>

namespace quillmark {

class ReadOnlyBanner : public QWidget {
    Q_OBJECT

public:
    explicit ReadOnlyBanner(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quillmark
