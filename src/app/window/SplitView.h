// Two columns with a hairline between them that can be dragged; the left one can be hidden.
#pragma once

#include <QSplitter>

namespace quillmark {

class SplitView : public QSplitter {
    Q_OBJECT

public:
    SplitView(QWidget* sidebar, QWidget* detail, QWidget* parent);

protected:
    QSplitterHandle* createHandle() override;
};

} // namespace quillmark
