#include "editor/LineIndex.h"

#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace quillmark {
namespace {

using Starts = std::vector<int64_t>;

TEST(LineIndex, AgreesWithTheTextAfterRandomEdits)
{
    test::Random random;
    std::u16string model;
    Rope text;
    LineIndex index;
    for (int round = 0; round < 1000; ++round) {
        const auto length = static_cast<int64_t>(model.size());
        const int64_t start = random.upTo(length);
        std::u16string inserted;
        for (int64_t left = random.oneIn(40) ? 300 : random.upTo(8); left > 0; --left)
            inserted += u"\n\n\nab\r\u010A"[random.below(7)];
        const Range range{start, random.upTo(std::min<int64_t>(length - start, 8))};
        text.replace(range, inserted);
        model.replace(static_cast<size_t>(range.location), static_cast<size_t>(range.length), inserted);
        const auto added = static_cast<int64_t>(inserted.size());
        index.applyEdit({{range.location, added}, added - range.length}, text);

        Starts starts{0};
        for (size_t unit = 0; unit < model.size(); ++unit) {
            if (model[unit] == u'\n')
                starts.push_back(static_cast<int64_t>(unit) + 1);
        }
        ASSERT_EQ(index.starts(), starts) << "round " << round;
        ASSERT_EQ(index.lineCount(), static_cast<int64_t>(starts.size()));
        ASSERT_EQ(index.indexedLength(), static_cast<int64_t>(model.size()));
        const int64_t offset = random.upTo(index.indexedLength());
        ASSERT_EQ(index.lineNumber(offset),
            std::upper_bound(starts.begin(), starts.end(), offset) - starts.begin());
    }
}

} // namespace
} // namespace quillmark
