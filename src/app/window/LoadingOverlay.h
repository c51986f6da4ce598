// Covers the editor while a file loads: a blinking block caret, a word and growing dots.
#pragma once

#include "base/Scheduler.h"

#include <QWidget>

namespace quillmark {

/// What the overlay shows at a moment.
struct LoadingPhase {
    double caretOpacity = 1;
    int dots = 0; ///< 0 to 3
    bool operator==(const LoadingPhase&) const = default;
};

class LoadingOverlay : public QWidget {
    Q_OBJECT

public:
    LoadingOverlay(Scheduler& scheduler, QWidget* parent);

    static LoadingPhase phaseAt(WallTime time);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void tickLater();

    Scheduler& m_scheduler;
    Task m_tick; ///< only while it is shown
};

} // namespace quillmark
