// The field that floats over the window and takes the number of the line to go to.
#pragma once

#include "core/AppState.h"

#include <QWidget>

#include <optional>

class QLineEdit;

namespace quillmark {

/// The number that the digits of `text` make; nothing when that is no line's. Whatever is no number sign does
/// not count: "12:5" is 125.
std::optional<int64_t> typedLine(const QString& text);

/// Made anew each time it is shown.
class GoToLineView : public QWidget {
    Q_OBJECT

public:
    GoToLineView(AppState& app, QWidget* window);

    QLineEdit& field() { return *m_field; }
    void place(); ///< where it belongs in the window

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void submit();

    AppState& m_app;
    QLineEdit* m_field;
};

} // namespace quillmark
