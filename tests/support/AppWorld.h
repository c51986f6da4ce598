// A world that a model can be started in.
#pragma once

#include "support/Services.h"
#include "support/World.h"

namespace quillmark::test {

struct AppWorld : World {
    std::unique_ptr<AppState> makeApp()
    {
        return std::make_unique<AppState>(appServices(*this, notes, journal));
    }
};

} // namespace quillmark::test
