// A fingerprint of a file's bytes, by which equal contents are told without keeping one. Not for security.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

namespace quillmark {

using ContentHash = std::array<uint64_t, 2>;

/// Takes bytes piece by piece.
class ContentHasher {
public:
    ContentHasher();
    ~ContentHasher();
    void add(std::string_view bytes);
    ContentHash value() const; ///< of all bytes so far

private:
    struct State;
    std::unique_ptr<State> m_state;
};

ContentHash contentHash(std::string_view bytes);

} // namespace quillmark
