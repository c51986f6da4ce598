// The editor, and what covers it while a file loads.
#pragma once

#include "base/Observable.h"
#include "base/Scheduler.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace quillmark {

class AppState;
class Clipboard;
class Coordinator;
class EditorView;
class LoadingOverlay;

class EditorArea : public QWidget {
    Q_OBJECT

public:
    EditorArea(AppState& app, Scheduler& scheduler, Clipboard& clipboard, QWidget* parent);
    ~EditorArea() override;

    EditorView& editor() { return *m_editor; }
    /// While it says so, a text that is loaded does not take the keyboard.
    void setKeepsKeyboard(std::function<bool()> keepsKeyboard);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showLoading(bool isLoading);

    Scheduler& m_scheduler;
    EditorView* m_editor;
    std::unique_ptr<Coordinator> m_coordinator;
    LoadingOverlay* m_overlay = nullptr; ///< made when first needed
    Connection m_loadingConnection;
};

} // namespace quillmark
