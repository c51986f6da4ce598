#include "core/state/Impl.h"

namespace quillmark {

using namespace std::chrono_literals;

void AppState::showNotice(std::string text)
{
    m_notice.set(std::move(text));
    m_impl->noticeTask = m_impl->services.scheduler.after(8s, [this] { m_notice.set(std::nullopt); });
}

void AppState::dismissNotice()
{
    m_impl->noticeTask.cancel();
    m_notice.set(std::nullopt);
}

} // namespace quillmark
