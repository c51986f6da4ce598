// Tests of widgets run without a screen, under a home of their own.
#include "support/TestEnvironment.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cstdio>

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    std::printf("QUILLMARK_SEED=%llu\n", static_cast<unsigned long long>(quillmark::test::seed()));
    const quillmark::test::TemporaryHome home;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    const QApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
