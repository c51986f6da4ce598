// Shortcuts by a letter's place on the keyboard, for keyboards that write another script only: with a Latin
// layout beside it the toolkit finds the letter itself.
#pragma once

#include <QObject>

class QKeyEvent;

namespace quillmark {

/// The key, or, where it is a letter of another script, the Latin one in its place.
int latinKey(const QKeyEvent& event);

/// Filters the events of the application: a key with Ctrl that nothing has answered to goes to its widget and
/// then to the actions of its window once more as the Latin letter in its place.
class LatinShortcuts final : public QObject {
    Q_OBJECT

public:
    LatinShortcuts(QObject& application, QObject* parent);

    bool eventFilter(QObject* receiver, QEvent* event) override;
};

} // namespace quillmark
