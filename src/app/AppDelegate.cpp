#include "app/AppDelegate.h"

#include "core/AppState.h"

#include <QApplication>
#include <QSessionManager>

namespace quillmark {

AppDelegate::AppDelegate()
{
    QApplication::setQuitOnLastWindowClosed(true);
    connect(qApp, &QApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        const bool isActive = state == Qt::ApplicationActive;
        if (!isActive)
            applicationWillResignActive();
        else if (m_hasBeenAway)
            applicationDidBecomeActive();
        m_hasBeenAway = !isActive;
    });
    connect(qApp, &QApplication::aboutToQuit, this, &AppDelegate::applicationWillTerminate);
    // Direct: the session waits for the answer.
    connect(qApp, &QApplication::commitDataRequest, this, [this] { sessionWillEnd(); }, Qt::DirectConnection);
}

void AppDelegate::applicationDidFinishLaunching()
{
    if (AppState* app = AppState::shared())
        app->applyAppearance();
}

void AppDelegate::applicationOpenFiles(std::span<const Path> files)
{
    AppState* app = AppState::shared();
    if (!app)
        return;
    for (const Path& file : files)
        app->openFile(file);
}

void AppDelegate::applicationWillResignActive()
{
    if (AppState* app = AppState::shared())
        app->willResignActive();
}

void AppDelegate::applicationDidBecomeActive()
{
    if (AppState* app = AppState::shared())
        app->didBecomeActive();
}

void AppDelegate::applicationWillTerminate()
{
    if (AppState* app = AppState::shared())
        app->willTerminate();
}

void AppDelegate::sessionWillEnd()
{
    AppState* app = AppState::shared();
    if (!app)
        return;
    app->willResignActive();
    app->saveSession(); // the user may still decide to stay: nothing is closed
}

} // namespace quillmark
