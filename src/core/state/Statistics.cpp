// Counting the active text, for the status bar and the minimap.
#include "core/state/Impl.h"

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr Duration statsDelay = 300ms; ///< from the last edit

} // namespace

void AppState::scheduleStats(Immediate immediate)
{
    if (immediate == Immediate::yes)
        return m_impl->countNow();
    m_impl->statsTask = m_impl->services.scheduler.after(statsDelay, [this] { m_impl->countNow(); });
}

void AppState::Impl::countNow()
{
    statsTask = services.scheduler.background(
        Priority::userInitiated, // not behind a disk that is slow to take a text
        [text = app.editorText()](const CancelToken& cancel) { return countText(text, cancel); },
        [this](std::optional<TextStatistics> counted) {
            if (!counted)
                return;
            app.m_stats.set(counted->stats);
            app.m_minimapSamples.set(std::move(counted->minimapSamples));
        });
}

} // namespace quillmark
