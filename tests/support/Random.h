// Random choices for tests against a model, the same ones again for the same seed of the run.
#pragma once

#include "support/TestEnvironment.h"

#include <cstdint>
#include <iterator>
#include <random>

namespace quillmark::test {

class Random {
public:
    int64_t below(int64_t end) { return std::uniform_int_distribution<int64_t>(0, end - 1)(m_engine); }
    int64_t upTo(int64_t last) { return below(last + 1); }
    template <class Items> auto& pick(Items& items)
    {
        return items[static_cast<size_t>(below(static_cast<int64_t>(std::size(items))))];
    }
    bool oneIn(int64_t n) { return below(n) == 0; }

private:
    std::mt19937_64 m_engine{seed()};
};

} // namespace quillmark::test
