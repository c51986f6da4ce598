#include "desktop/GioFileManager.h"

#include "desktop/Owned.h"

namespace quillmark {

namespace {

constexpr int answerTimeout = 10'000; // ms: the file manager may have to start

Owned<char> uriOf(const std::filesystem::path& path)
{
    return Owned<char>(g_filename_to_uri(path.c_str(), nullptr, nullptr));
}

bool selectOverBus(const char* uri)
{
    const Owned<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus)
        return false;
    const char* const uris[] = {uri, nullptr};
    const Owned<GVariant> answer(g_dbus_connection_call_sync(bus.get(), "org.freedesktop.FileManager1",
        "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1", "ShowItems",
        g_variant_new("(^ass)", uris, ""), nullptr, G_DBUS_CALL_FLAGS_NONE, answerTimeout, nullptr, nullptr));
    return answer != nullptr;
}

} // namespace

std::string showInFileManager(const std::filesystem::path& file)
{
    const Owned<char> uri = uriOf(file);
    const Owned<char> folder = uriOf(file.parent_path());
    if (!uri || !folder)
        return "no absolute path";
    if (selectOverBus(uri.get()))
        return {};
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(folder.get(), nullptr, &error))
        return {};
    return takeMessage(error);
}

GioFileManager::GioFileManager(Scheduler& scheduler, Log& log)
    : m_scheduler(scheduler)
    , m_log(log)
{
}

void GioFileManager::reveal(const std::filesystem::path& file)
{
    m_scheduler.runInBackground(Priority::userInitiated, [&log = m_log, file] {
        if (const std::string failure = showInFileManager(file); !failure.empty())
            log.line("Quillmark: showing a file failed: " + failure);
    });
}

} // namespace quillmark
