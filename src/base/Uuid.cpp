#include "base/Uuid.h"

#include <cstdlib>
#include <sys/random.h>

namespace quillmark {

Uuid Uuid::random()
{
    Uuid id;
    if (getentropy(id.bytes.data(), id.bytes.size()) != 0)
        std::abort(); // a kernel without a random source: identifiers could collide and overwrite files
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
