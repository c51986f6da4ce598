// A session bus of its own, on request with a file manager on it, as the program sees it.
#pragma once

#include "EndToEnd.h"

#include <gio/gio.h>

#include <mutex>
#include <thread>

namespace quillmark::test {

class FileManagerStub {
public:
    enum class Behaviour { answers, neverAnswers, isMissing };

    FileManagerStub(const std::filesystem::path& runFolder, Behaviour behaviour);
    ~FileManagerStub();
    FileManagerStub(const FileManagerStub&) = delete;
    FileManagerStub& operator=(const FileManagerStub&) = delete;

    const std::string& address() const { return m_address; }
    std::vector<std::string> shown() const; ///< the URIs that it was asked to show so far
    void killBus();

private:
    void serve();
    static void called(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
        const char* method, GVariant* arguments, GDBusMethodInvocation* call, void* self);

    const Behaviour m_behaviour;
    std::string m_address;
    pid_t m_daemon = 0;
    GDBusConnection* m_bus = nullptr;
    GMainContext* m_context = g_main_context_new();
    GMainLoop* m_loop = g_main_loop_new(m_context, FALSE);
    mutable std::mutex m_mutex;
    std::vector<std::string> m_shown;
    std::thread m_thread; ///< serves
};

} // namespace quillmark::test
