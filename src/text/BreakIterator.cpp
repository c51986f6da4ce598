#include "text/BreakIterator.h"

#include <array>
#include <cassert>
#include <limits>
#include <memory>

namespace quillmark {
namespace {

struct Close {
    void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
};
using Owned = std::unique_ptr<UBreakIterator, Close>;

Owned open(UBreakIteratorType type)
{
    UErrorCode status = U_ZERO_ERROR;
    Owned iterator(ubrk_open(type, "", nullptr, 0, &status));
    assert(U_SUCCESS(status)); // the rules are part of ICU's own library
    return iterator;
}

} // namespace

UBreakIterator* breakIterator(UBreakIteratorType type, std::u16string_view text)
{
    assert(type <= UBRK_WORD && text.size() <= std::numeric_limits<int32_t>::max());
    thread_local std::array<Owned, UBRK_WORD + 1> iterators;
    Owned& iterator = iterators[type];
    if (!iterator)
        iterator = open(type);
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(iterator.get(), text.data(), static_cast<int32_t>(text.size()), &status);
    assert(U_SUCCESS(status));
    return iterator.get();
}

} // namespace quillmark
