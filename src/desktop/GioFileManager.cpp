#include "desktop/GioFileManager.h"

#include "desktop/Owned.h"

#include <utility>

namespace quillmark {

namespace {

constexpr Duration patience = std::chrono::seconds(10); // the file manager may have to start

Owned<char> uriOf(const std::filesystem::path& path)
{
    return Owned<char>(g_filename_to_uri(path.c_str(), nullptr, nullptr));
}

/// Waits for the answer.
bool selectOverBus(const char* uri, GCancellable* question)
{
    const Owned<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, question, nullptr));
    if (!bus)
        return false;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE); // the editor outlives a bus that goes
    const char* const uris[] = {uri, nullptr};
    const Owned<GVariant> answer(g_dbus_connection_call_sync(bus.get(), "org.freedesktop.FileManager1",
        "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1", "ShowItems",
        g_variant_new("(^ass)", uris, ""), nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, question, nullptr));
    return answer != nullptr;
}

/// Empty when that went well, else what went wrong.
std::string show(const std::filesystem::path& file, GCancellable* question, const CancelToken& cancel)
{
    const Owned<char> uri = uriOf(file);
    const Owned<char> folder = uriOf(file.parent_path());
    if (!uri || !folder)
        return "no absolute path";
    if (selectOverBus(uri.get(), question) || cancel.isCancelled())
        return {};
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(folder.get(), nullptr, &error))
        return {};
    return takeMessage(error);
}

} // namespace

GioFileManager::GioFileManager(Scheduler& scheduler, Log& log)
    : m_scheduler(scheduler)
    , m_log(log)
{
}

void GioFileManager::giveUp()
{
    m_next.reset();
    m_asking.cancel();
    if (m_question)
        g_cancellable_cancel(m_question.get()); // the thread that waits for the answer is free at once
}

void GioFileManager::reveal(const std::filesystem::path& file)
{
    m_next = file;
    if (!m_asking.isPending())
        askNext();
}

void GioFileManager::askNext()
{
    const auto file = std::exchange(m_next, std::nullopt);
    if (!file)
        return;
    m_question = std::shared_ptr<GCancellable>(g_cancellable_new(), g_object_unref);
    m_deadline
        = m_scheduler.after(patience, [question = m_question] { g_cancellable_cancel(question.get()); });
    m_asking = m_scheduler.background(
        Priority::userInitiated,
        [question = m_question, file = *file](
            const CancelToken& cancel) { return show(file, question.get(), cancel); },
        [this](const std::string& failure) {
            m_deadline.cancel();
            if (!failure.empty())
                m_log.line("Quillmark: showing a file failed: " + failure);
            askNext();
        });
}

} // namespace quillmark
