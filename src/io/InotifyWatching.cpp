#include "io/InotifyWatching.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>

#include <sys/inotify.h>

namespace quillmark {
namespace {

constexpr uint32_t entryEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr uint32_t contentEvents = IN_MODIFY | IN_CLOSE_WRITE;
constexpr uint32_t endEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;
constexpr size_t bufferSize = 64 * 1024; // bytes

/// What a look tells one state of a path from another by.
std::string fingerprint(FileSystem& files, const Path& path)
{
    const auto info = files.stat(path);
    if (!info)
        return "";
    return std::to_string(info->device) + ' ' + std::to_string(info->inode) + ' ' + std::to_string(info->size)
        + ' ' + std::to_string(info->modified.time_since_epoch().count());
}

} // namespace

class InotifyWatching::Watcher : public FSWatcher {
public:
    enum class Kind { file, folder };

    /// A folder through which the path is heard of.
    struct Place {
        int watch = -1; ///< −1: the kernel does not tell
        std::string name; ///< the entry that counts; empty: all do, but not what is written into them
    };

    Watcher(InotifyWatching& owner, Kind kind, Path watchedPath, std::function<void()> whenChanged)
        : id(++owner.m_lastID)
        , path(std::move(watchedPath))
        , handler(std::move(whenChanged))
        , m_owner(owner)
        , m_kind(kind)
    {
        assert(handler && path.is_absolute());
        arm();
        if (isBlind())
            lastLook = fingerprint(m_owner.m_files, path);
        m_owner.m_watchers.push_back(this);
        m_owner.lookLater();
    }
    ~Watcher() override
    {
        std::erase(m_owner.m_watchers, this);
        disarm(m_places);
    }

    bool isBlind() const
    {
        return std::ranges::any_of(m_places, [](const Place& place) { return place.watch < 0; });
    }

    bool hears(int watch, uint32_t mask, std::string_view name) const
    {
        return std::ranges::any_of(m_places, [&](const Place& place) {
            if (place.watch != watch)
                return false;
            if (mask & endEvents)
                return true;
            if (place.name.empty())
                return (mask & entryEvents) != 0;
            return place.name == name;
        });
    }

    /// Finds the folders anew: one may have gone, be back, or a link may lead elsewhere.
    void arm()
    {
        std::vector<Place> old;
        old.swap(m_places);
        if (m_kind == Kind::folder)
            add(path, "");
        add(path.parent_path(), path.filename().native());
        if (const auto target = m_owner.m_files.resolveLinks(path); target && *target != path)
            add(target->parent_path(), target->filename().native());
        disarm(old); // after the new ones, so that a folder which stays is watched without a gap
    }

    const uint64_t id;
    const Path path;
    const std::function<void()> handler;
    std::string lastLook;

private:
    void add(const Path& folder, std::string name)
    {
        m_places.push_back({m_owner.arm(folder), std::move(name)});
    }
    void disarm(const std::vector<Place>& places)
    {
        for (const Place& place : places)
            m_owner.disarm(place.watch);
    }

    InotifyWatching& m_owner;
    const Kind m_kind;
    std::vector<Place> m_places;
};

InotifyWatching::InotifyWatching(Scheduler& scheduler, FileSystem& files, Log& log)
    : m_scheduler(scheduler)
    , m_files(files)
    , m_log(log)
    , m_inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (m_inotify.isOpen())
        m_readable = m_scheduler.watchDescriptor(m_inotify.number(), [this] { read(); });
    else
        sayOnce(errno);
}

InotifyWatching::~InotifyWatching()
{
    m_readable.cancel(); // before the descriptor is closed
}

std::unique_ptr<FSWatcher> InotifyWatching::watchFile(const Path& path, std::function<void()> handler)
{
    return std::make_unique<Watcher>(*this, Watcher::Kind::file, path, std::move(handler));
}

std::unique_ptr<FSWatcher> InotifyWatching::watchFolder(const Path& path, std::function<void()> handler)
{
    return std::make_unique<Watcher>(*this, Watcher::Kind::folder, path, std::move(handler));
}

// The kernel's notices

/// The number of the folder's watch, or −1.
int InotifyWatching::arm(const Path& folder)
{
    if (!m_inotify.isOpen())
        return -1;
    // All that anybody wants to hear: a folder has one watch, and a second call would change its mask.
    const uint32_t mask = entryEvents | contentEvents | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
    const int watch = inotify_add_watch(m_inotify.number(), folder.c_str(), mask);
    if (watch >= 0)
        ++m_uses[watch];
    else if (errno == ENOSPC || errno == ENOMEM)
        sayOnce(errno);
    return watch;
}

void InotifyWatching::disarm(int watch)
{
    const auto uses = m_uses.find(watch);
    assert(uses == m_uses.end() || uses->second > 0);
    if (uses == m_uses.end() || --uses->second > 0)
        return;
    m_uses.erase(uses);
    inotify_rm_watch(m_inotify.number(), watch); // fails where the folder is gone, which is as good
}

void InotifyWatching::read()
{
    alignas(inotify_event) std::array<char, bufferSize> buffer;
    std::vector<uint64_t> heard;
    const auto hear = [&](const auto& doesHear) {
        for (const Watcher* watcher : m_watchers) {
            if (doesHear(*watcher) && std::ranges::find(heard, watcher->id) == heard.end())
                heard.push_back(watcher->id);
        }
    };
    for (;;) {
        const ssize_t count
            = retried([&] { return ::read(m_inotify.number(), buffer.data(), buffer.size()); });
        if (count <= 0)
            break;
        for (size_t offset = 0; offset < static_cast<size_t>(count);) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            const char* const padded = buffer.data() + offset + sizeof event; // with zeros
            const auto name = event.len > 0 ? std::string_view(padded) : std::string_view();
            offset += sizeof event + event.len;
            hear([watch = event.wd, mask = event.mask, name](const Watcher& watcher) {
                return (mask & IN_Q_OVERFLOW) || watcher.hears(watch, mask, name);
            });
        }
    }
    tell(heard);
}

/// A handler may destroy watchers and make new ones.
void InotifyWatching::tell(const std::vector<uint64_t>& heard)
{
    for (const uint64_t id : heard) {
        if (Watcher* const watcher = find(id))
            watcher->arm();
    }
    for (const uint64_t id : heard) {
        if (const Watcher* const watcher = find(id)) {
            const auto handler = watcher->handler;
            handler();
        }
    }
    lookLater();
}

InotifyWatching::Watcher* InotifyWatching::find(uint64_t id) const
{
    const auto found = std::ranges::find(m_watchers, id, [](const Watcher* watcher) { return watcher->id; });
    return found != m_watchers.end() ? *found : nullptr;
}

// Looking

void InotifyWatching::lookLater()
{
    if (m_lookTask.isPending() || std::ranges::none_of(m_watchers, &Watcher::isBlind))
        return;
    m_lookTask = m_scheduler.after(lookInterval, [this] { look(); });
}

void InotifyWatching::look()
{
    std::vector<std::pair<uint64_t, Path>> paths;
    for (Watcher* const watcher : m_watchers) {
        if (!watcher->isBlind())
            continue;
        watcher->arm(); // what was missing may be there by now
        paths.emplace_back(watcher->id, watcher->path);
    }
    m_lookTask = m_scheduler.background(
        Priority::utility,
        [&files = m_files, paths](const CancelToken&) {
            Looks looks;
            for (const auto& [id, path] : paths)
                looks.emplace_back(id, fingerprint(files, path));
            return looks;
        },
        [this](const Looks& looks) { looked(looks); });
}

void InotifyWatching::looked(const Looks& looks)
{
    std::vector<uint64_t> changed;
    for (const auto& [id, seen] : looks) {
        if (Watcher* const watcher = find(id); watcher && std::exchange(watcher->lastLook, seen) != seen)
            changed.push_back(id);
    }
    tell(changed);
}

void InotifyWatching::sayOnce(int code)
{
    if (!std::exchange(m_hasSaidSo, true))
        m_log.line("Quillmark: cannot watch files, looking every two seconds: "
            + systemFailure(code).error().message);
}

} // namespace quillmark
