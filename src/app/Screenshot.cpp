#include "app/Screenshot.h"

#include "app/window/ContentView.h"

#include <QCoreApplication>
#include <QFile>
#include <QPixmap>

#include <cstdio>

namespace quillmark {

namespace {

using namespace std::chrono_literals;

constexpr Duration lookInterval = 60ms;
constexpr int enoughQuietLooks = 3; ///< in a row: what was posted and laid out meanwhile is on the picture

} // namespace

Screenshot::Screenshot(AppState& app, ContentView& window, Scheduler& scheduler, Path file)
    : m_app(app)
    , m_window(window)
    , m_scheduler(scheduler)
    , m_file(std::move(file))
{
    look();
}

void Screenshot::look()
{
    m_quietLooks = isSettled() ? m_quietLooks + 1 : 0;
    if (m_quietLooks >= enoughQuietLooks)
        return write();
    m_nextLook = m_scheduler.after(lookInterval, [this] { look(); });
}

bool Screenshot::isSettled() const
{
    return m_window.wasPainted() && !m_app.isLoading.get();
}

void Screenshot::write()
{
    const QString name = QFile::decodeName(QByteArray::fromStdString(m_file.native()));
    const bool isWritten = m_window.grab().save(name, "PNG");
    if (!isWritten)
        std::fprintf(stderr, "Не удалось записать снимок окна: %s\n", m_file.c_str());
    QCoreApplication::exit(isWritten ? 0 : 1);
}

} // namespace quillmark
