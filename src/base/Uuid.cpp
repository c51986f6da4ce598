#include "base/Uuid.h"

#include <cassert>
#include <cstdlib>
#include <span>
#include <sys/random.h>

namespace quillmark {
namespace {

/// Random bytes of a thread, fetched from the kernel in the largest portion that it gives at once.
class RandomBytes {
public:
    void take(std::span<uint8_t> into)
    {
        assert(into.size() <= m_bytes.size());
        if (m_bytes.size() - m_used < into.size()) {
            if (getentropy(m_bytes.data(), m_bytes.size()) != 0)
                std::abort(); // a kernel without a random source: ids could collide and overwrite files
            m_used = 0;
        }
        std::memcpy(into.data(), m_bytes.data() + m_used, into.size());
        m_used += into.size();
    }

private:
    std::array<uint8_t, 256> m_bytes;
    size_t m_used = m_bytes.size();
};

} // namespace

Uuid Uuid::random()
{
    thread_local RandomBytes source;
    Uuid id;
    source.take(id.bytes);
    id.bytes[6] = static_cast<uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

std::string Uuid::toString() const
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0x0F];
    }
    return text;
}

} // namespace quillmark
