#include "text/TextStorage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmark {
namespace {

struct Heard {
    std::string observer;
    TextEdit edit;
    std::u16string oldText;
    std::u16string newText;
    bool operator==(const Heard&) const = default;
};

class TextStorageTest : public testing::Test {
protected:
    TextStorageTest() { storage.replace({0, 0}, u"один два"); }

    auto recorder(std::string name)
    {
        return [this, name](const TextEdit& edit, const Rope& oldText) {
            heard.push_back({name, edit, oldText.text(), storage.text().text()});
        };
    }

    TextStorage storage;
    std::vector<Heard> heard;
};

TEST_F(TextStorageTest, ObserversHearAnEditInTheOrderInWhichTheyConnected)
{
    const Connection first = storage.onEdit(recorder("first"));
    const Connection second = storage.onEdit(recorder("second"));
    storage.replace({5, 3}, u"двадцать");
    const TextEdit edit{.edited = {5, 8}, .changeInLength = 5};
    EXPECT_EQ(heard,
        (std::vector<Heard>{{"first", edit, u"один два", u"один двадцать"},
            {"second", edit, u"один два", u"один двадцать"}}));
    EXPECT_EQ(edit.replaced(), (Range{5, 3}));
}

TEST_F(TextStorageTest, TheRangeIsCutToTheTextBeforeObserversHearOfIt)
{
    const Connection connection = storage.onEdit(recorder("it"));
    storage.replace({4, 1000}, Rope(u"!"));
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].edit, (TextEdit{.edited = {4, 1}, .changeInLength = -3}));
    EXPECT_EQ(heard[0].newText, u"один!");
}

} // namespace
} // namespace quillmark
