// What the program does when the desktop says that it started, went to the background, or must end.
#pragma once

#include "platform/FileSystem.h"

#include <QObject>

#include <span>

namespace quillmark {

/// Reaches the model through AppState::shared() and does nothing when there is none. Main thread only.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    /// Needs a QApplication, and from then on hears it.
    AppDelegate();

    void applicationDidFinishLaunching();
    void applicationOpenFiles(std::span<const Path> files); ///< the last one ends active
    void applicationWillResignActive();
    void applicationDidBecomeActive(); ///< again
    void applicationWillTerminate();

private:
    void sessionWillEnd();

    bool m_hasBeenAway = false; ///< in the background
};

} // namespace quillmark
