#pragma once

#include "platform/Appearance.h"

#include <vector>

namespace quillmark::test {

class RecordingAppearance final : public Appearance {
public:
    void apply(AppearanceMode mode) override { m_applied.push_back(mode); }

    const std::vector<AppearanceMode>& applied() const { return m_applied; }

private:
    std::vector<AppearanceMode> m_applied;
};

} // namespace quillmark::test
