// The editor widget on Qt's offscreen platform, 1600 × 1000, with a real font.
#pragma once

#include "app/editor/EditorView.h"
#include "desktop/Fonts.h"
#include "desktop/QtScheduler.h"
#include "support/FakeClipboard.h"

#include <QApplication>

#include <cstdlib>
#include <utility>

namespace quillmark::bench {

/// What Qt's offscreen platform says for every window that is shown is no news.
inline void keepOffscreenQuiet()
{
    static const QtMessageHandler others
        = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
              if (text != QLatin1String("This plugin does not support propagateSizeHints()"))
                  others(type, context, text);
          });
}

inline void startToolkit()
{
    static int count = 1;
    static char name[] = "quillmark-bench";
    static char* arguments[] = {name, nullptr};
    if (!QCoreApplication::instance()) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        keepOffscreenQuiet();
        new QApplication(count, arguments); // to the end of the process: the toolkit is started once
    }
}

struct Window {
    explicit Window(Rope text)
    {
        view.setFixedSize(1600, 1000); // also on a smaller screen
        view.textView().setText(std::move(text));
        view.show();
        view.activateWindow();
        view.setFocus();
        settle();
    }
    static void settle()
    {
        // a refresh, the painting that it asks for, and what that asks for
        for (int turn = 0; turn < 3; ++turn)
            QCoreApplication::processEvents();
    }

    QtScheduler scheduler;
    test::FakeClipboard clipboard;
    EditorView view{scheduler, clipboard};
};

} // namespace quillmark::bench
