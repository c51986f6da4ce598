#include "app/window/EditorArea.h"

#include "app/editor/Coordinator.h"
#include "app/editor/EditorView.h"
#include "app/window/LoadingOverlay.h"

namespace quillmark {

EditorArea::EditorArea(AppState& app, Scheduler& scheduler, Clipboard& clipboard, QWidget* parent)
    : QWidget(parent)
    , m_scheduler(scheduler)
    , m_editor(new EditorView(scheduler, clipboard, this))
    , m_coordinator(std::make_unique<Coordinator>(app, *m_editor))
{
    m_loadingConnection = app.isLoading.onChange([this](bool isLoading) { showLoading(isLoading); });
    showLoading(app.isLoading.get());
}

EditorArea::~EditorArea() = default;

void EditorArea::setKeepsKeyboard(std::function<bool()> keepsKeyboard)
{
    m_coordinator->keepsKeyboard = std::move(keepsKeyboard);
}

void EditorArea::showLoading(bool isLoading)
{
    if (isLoading && !m_overlay) {
        m_overlay = new LoadingOverlay(m_scheduler, this);
        m_overlay->setGeometry(rect());
    }
    if (m_overlay)
        m_overlay->setVisible(isLoading);
}

void EditorArea::resizeEvent(QResizeEvent*)
{
    m_editor->setGeometry(rect());
    if (m_overlay)
        m_overlay->setGeometry(rect());
}

} // namespace quillmark
