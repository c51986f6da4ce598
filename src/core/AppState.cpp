#include "core/state/Impl.h"

#include <array>
#include <cerrno>
#include <utility>

namespace quillmark {
namespace {

constexpr std::string_view appearanceKey = "appearanceMode";
constexpr std::string_view lineNumbersKey = "showLineNumbers";
constexpr std::string_view minimapKey = "showMinimap";

constexpr std::array<std::pair<AppearanceMode, std::string_view>, 3> appearanceNames{{
    {AppearanceMode::system, "system"},
    {AppearanceMode::light, "light"},
    {AppearanceMode::dark, "dark"},
}};

AppState* theAppState = nullptr;

/// Takes the stored value over and stores every change.
Connection persist(Variable<bool>& toggle, UserDefaults& defaults, std::string_view key)
{
    if (const auto stored = defaults.boolean(key))
        toggle.set(*stored);
    return toggle.onChange([&defaults, key](bool value) { defaults.setBoolean(key, value); });
}

NoteStoreServices noteStoreServices(AppServices& services, WriteQueue& writeQueue)
{
    return {.scheduler = services.scheduler,
        .files = services.files,
        .log = services.log,
        .defaults = services.defaults,
        .trash = services.trash,
        .writeQueue = writeQueue,
        .recovery = services.recovery,
        .known = services.writer.known(),
        .watching = services.watching,
        .defaultFolder = services.defaultNotesFolder};
}

} // namespace

bool saysMissing(const Error& error)
{
    return error.code == ENOENT || error.code == ENOTDIR;
}

AppState::Impl::Impl(AppState& owner, AppServices world)
    : app(owner)
    , services(std::move(world))
    , writeQueue(services.scheduler, services.writer, services.log,
          [this](const WriteQueue::Outcome& outcome) { queuedWriteEnded(outcome); })
    , journal(services.files, services.scheduler, services.recovery, services.log, services.journalFolders,
          [this](const Uuid& id) { return journalSnapshot(id); })
{
}

AppState::AppState(AppServices services)
    : m_impl(std::make_unique<Impl>(*this, std::move(services)))
    , store(noteStoreServices(m_impl->services, m_impl->writeQueue))
    , settings(m_impl->services.defaults)
    , recovered(m_impl->services.scheduler, m_impl->services.files, m_impl->services.recovery)
{
    theAppState = this;
    UserDefaults& defaults = m_impl->services.defaults;
    auto& connections = m_impl->connections;
    connections.push_back(appearanceMode.onChange([this, &defaults](AppearanceMode mode) {
        const auto name
            = std::ranges::find(appearanceNames, mode, &decltype(appearanceNames)::value_type::first);
        defaults.setString(appearanceKey, name->second);
        applyAppearance();
    }));
    const auto storedName = defaults.string(appearanceKey);
    for (const auto& [mode, name] : appearanceNames) {
        if (storedName == name)
            appearanceMode.set(mode);
    }
    connections.push_back(persist(showLineNumbers, defaults, lineNumbersKey));
    connections.push_back(persist(showMinimap, defaults, minimapKey));
    connections.push_back(store.onRename([this] { saveSession(); }));
    store.onExternalChanges = [this](const auto& changedIDs, const auto& removedIDs) {
        m_impl->handleExternalNoteChanges(changedIDs, removedIDs);
    };

    m_impl->journal.recoverLeftovers();
    m_impl->restoreSession();
    m_impl->isSessionRestored = true;
    if (tabs->empty())
        m_impl->showFirstNote();
    m_impl->loadActiveDocument();
}

AppState::~AppState()
{
    m_impl->writeQueue.finishAll(); // while what hears of its outcomes is still there
    theAppState = nullptr;
}

AppState* AppState::shared()
{
    return theAppState;
}

// ---- The active document

const Rope& AppState::currentText() const
{
    return m_impl->currentText;
}

Rope AppState::editorText() const
{
    return m_impl->textView ? m_impl->textView->text() : m_impl->currentText;
}

std::shared_ptr<EditorTab> AppState::activeTab() const
{
    return activeTabID.get() ? m_impl->findTab(*activeTabID.get()) : nullptr;
}

std::optional<Uuid> AppState::activeNoteID() const
{
    const auto tab = activeTab();
    const NoteSource* note = tab ? tab->note() : nullptr;
    return note ? std::optional(note->id) : std::nullopt;
}

AppState::Tabs AppState::fileTabs() const
{
    Tabs files = tabs.get();
    std::erase_if(files, [](const auto& tab) { return !tab->file(); });
    return files;
}

void AppState::setTextView(PlainTextView* view)
{
    if (m_impl->textView && isDirty.get())
        m_impl->currentText = editorText(); // the words stay when the editor goes
    m_impl->textView = view;
}

PlainTextView* AppState::textView() const
{
    return m_impl->textView;
}

// ---- Application

void AppState::applyAppearance()
{
    m_impl->services.appearance.apply(appearanceMode.get());
}

void AppState::willResignActive()
{
    m_impl->finishTyping();
    flushSave(AllowBackground::no);
}

void AppState::willTerminate()
{
    m_impl->finishTyping();
    flushSave(AllowBackground::no);
    m_impl->rescueUnsavedText();
    commitActiveNoteTitle();
    saveSession();
    m_impl->keepWhatCouldNotBeWritten();
    m_impl->journal.finish();
}

} // namespace quillmark
