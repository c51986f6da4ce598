#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <cstdio>

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    std::printf("QUILLMARK_SEED=%llu\n", static_cast<unsigned long long>(quillmark::test::seed()));
    const quillmark::test::TemporaryHome home;
    return RUN_ALL_TESTS();
}
