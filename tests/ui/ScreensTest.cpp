// The editor on two screens of different scale. Runs in a test of its own, on a platform that has them.
#include "app/editor/EditorView.h"
#include "desktop/Fonts.h"
#include "support/FakeClipboard.h"
#include "support/ManualScheduler.h"

#include <QApplication>
#include <QScreen>

#include <gtest/gtest.h>

#include <cmath>

namespace quillmark {

namespace {

class Screens : public testing::Test {
protected:
    void SetUp() override
    {
        if (!screenOf(1.5))
            GTEST_SKIP() << "no such screens";
    }

    static QScreen* screenOf(double ratio)
    {
        for (QScreen* screen : QGuiApplication::screens())
            if (screen->devicePixelRatio() == ratio)
                return screen;
        return nullptr;
    }
    std::unique_ptr<EditorView> viewOn(QScreen* screen)
    {
        auto view = std::make_unique<EditorView>(scheduler, clipboard);
        view->setEditorFont(editorFont({}, 13));
        view->resize(500, 300);
        move(*view, screen);
        view->show();
        view->textView().setText(Rope(u"Съешь ещё этих мягких французских булок\nда выпей чаю 😀"));
        settle();
        return view;
    }
    static void move(EditorView& view, QScreen* screen)
    {
        view.move(screen->geometry().topLeft() + QPoint(40, 40));
        settle();
    }
    static void settle()
    {
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
    }
    static QImage paintedOn(EditorView& view)
    {
        QImage image(view.size() * view.devicePixelRatioF(), QImage::Format_RGB32);
        image.setDevicePixelRatio(view.devicePixelRatioF());
        view.render(&image);
        return image;
    }

    test::ManualScheduler scheduler;
    test::FakeClipboard clipboard;
};

} // namespace

TEST_F(Screens, AMoveShapesTheTextForTheOtherScreen)
{
    QScreen* const plain = screenOf(1);
    QScreen* const fine = screenOf(1.5);
    ASSERT_TRUE(plain);
    const QImage onPlain = paintedOn(*viewOn(plain));
    const QImage onFine = paintedOn(*viewOn(fine));
    ASSERT_EQ(onFine.devicePixelRatio(), 1.5);

    const auto moved = viewOn(plain);
    move(*moved, fine);
    const double height = moved->textView().layoutManager().metrics().height * 1.5;
    EXPECT_NEAR(height, std::round(height), 1e-9);
    EXPECT_EQ(paintedOn(*moved), onFine);
    move(*moved, plain);
    EXPECT_EQ(paintedOn(*moved), onPlain);
}

} // namespace quillmark
