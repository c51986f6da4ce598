// A damaged session is none or a session: never a crash, and what is read is written alike.
#include "core/SessionData.h"

#include <cstdlib>

using namespace quillmark;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto session = decodeSession({reinterpret_cast<const char*>(data), size});
    if (session && decodeSession(encodeSession(*session)) != session)
        std::abort();
    return 0;
}
