// The program: every object of which there is one, the model before any window, and the window.
#pragma once

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/window/ContentView.h"
#include "desktop/GioFileManager.h"
#include "desktop/GioTrash.h"
#include "desktop/QtAppearance.h"
#include "desktop/QtClipboard.h"
#include "desktop/QtScheduler.h"
#include "io/InotifyWatching.h"
#include "io/JsonUserDefaults.h"
#include "io/PosixFileSystem.h"
#include "io/StandardPaths.h"
#include "io/SystemLog.h"

#include <QTranslator>

#include <memory>

namespace quillmark {

class Screenshot;
class TerminationSignals;

/// Sets what must be set before the QApplication is made.
void prepareToolkit();

class LedgerlyApp {
public:
    /// Needs a QApplication. Restores the session and shows the window. What it is given outlives it.
    LedgerlyApp(const CommandLine& commandLine, QtScheduler& scheduler, TerminationSignals& signals);
    ~LedgerlyApp();
    LedgerlyApp(const LedgerlyApp&) = delete;
    LedgerlyApp& operator=(const LedgerlyApp&) = delete;

    int run(); ///< until the program ends; the exit code

private:
    QtScheduler& m_scheduler;
    // In the order in which they need each other.
    PosixFileSystem m_files;
    SystemLog m_log;
    StandardPaths m_paths;
    RecoveryStore m_recovery;
    DocumentWriter m_writer;
    JsonUserDefaults m_defaults;
    GioTrash m_trash;
    GioFileManager m_fileManager;
    QTranslator m_toolkitTexts;
    QtAppearance m_appearance;
    InotifyWatching m_watching;
    QtClipboard m_clipboard;
    AppDelegate m_delegate;
    std::unique_ptr<AppState> m_app;
    std::unique_ptr<ContentView> m_window;
    Task m_signalWatch;
    std::unique_ptr<Screenshot> m_screenshot; ///< when one was asked for
};

} // namespace quillmark
