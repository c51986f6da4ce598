#include "io/ContentHash.h"

#include <xxhash.h>

namespace quillmark {

struct ContentHasher::State {
    struct Free {
        void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
    };
    std::unique_ptr<XXH3_state_t, Free> hash{XXH3_createState()};
};

ContentHasher::ContentHasher()
    : m_state(std::make_unique<State>())
{
    XXH3_128bits_reset(m_state->hash.get());
}

ContentHasher::~ContentHasher() = default;

void ContentHasher::add(std::string_view bytes)
{
    XXH3_128bits_update(m_state->hash.get(), bytes.data(), bytes.size());
}

ContentHash ContentHasher::value() const
{
    const XXH128_hash_t hash = XXH3_128bits_digest(m_state->hash.get());
    return {hash.low64, hash.high64};
}

ContentHash contentHash(std::string_view bytes)
{
    const XXH128_hash_t hash = XXH3_128bits(bytes.data(), bytes.size());
    return {hash.low64, hash.high64};
}

} // namespace quillmark
