#pragma once

namespace quillmark {

enum class AppearanceMode { system, light, dark };

/// The look of the whole program. Main thread only.
class Appearance {
public:
    virtual ~Appearance() = default;
    virtual void apply(AppearanceMode mode) = 0; ///< `system` follows the desktop from now on
};

} // namespace quillmark
