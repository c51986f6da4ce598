#include "core/state/Impl.h"

#include <algorithm>
#include <array>
#include <cassert>
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

std::string recoveredNotice(size_t count)
{
    return "После сбоя восстановлены тексты: " + std::to_string(count)
        + ". Они в меню «Файл», «Восстановленные тексты…»";
}

/// Takes the stored value over and stores every change.
Connection persist(Variable<bool>& toggle, UserDefaults& defaults, std::string_view key)
{
    if (const auto stored = defaults.boolean(key))
        toggle.set(*stored);
    return toggle.onChange([&defaults, key](bool value) { defaults.setBoolean(key, value); });
}

UnsavedWords::Services wordsServices(AppServices& services)
{
    return {.scheduler = services.scheduler,
        .files = services.files,
        .log = services.log,
        .writer = services.writer,
        .recovery = services.recovery,
        .journalFolders = services.journalFolders};
}

OpenDocument::Services documentServices(AppServices& services)
{
    return {.scheduler = services.scheduler,
        .files = services.files,
        .log = services.log,
        .writer = services.writer,
        .recovery = services.recovery};
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

AppState::Impl::Impl(AppState& owner, AppServices world)
    : app(owner)
    , services(std::move(world))
    , words(wordsServices(services),
          {.liveText = [this](const Uuid& id) -> std::optional<Rope> {
               const bool isLive = id == document.id() && document.isDirty.get();
               return isLive ? std::optional(document.text()) : std::nullopt;
           },
              .saved = [this](const auto& saved) { queuedTextSaved(saved); },
              .metOutsideVersion = [this](const Uuid& id, const DocumentFacts& facts,
                                       const Rope& text) { queuedNoteWasChanged(id, facts, text); },
              .changed = [this] { showSafety(); }})
    , document(documentServices(services), words,
          {.willShow = [this] { willShow(); },
              .didShow = [this] { didShow(); },
              .saveAgain = [this] { app.flushSave(AllowBackground::yes); },
              .lookAgain = [this](Duration delay) { scheduleFileCheck(delay); },
              .bytesKept =
                  [this](const Path& copy) {
                      app.showNotice(
                          "В файле не только текст — исходные байты сохранены: " + displayPath(copy));
                  }})
    , fileLook(services.files, services.writer.known(), services.scheduler)
{
}

AppState::AppState(AppServices services)
    : m_impl(std::make_unique<Impl>(*this, std::move(services)))
    , store(noteStoreServices(m_impl->services, m_impl->words.queue()))
    , settings(m_impl->services.defaults)
    , recovered(m_impl->services.scheduler, m_impl->services.files, m_impl->services.recovery)
    , tabs(m_impl->tabs.tabs)
    , activeTabID(m_impl->tabs.activeID)
    , encodingName(m_impl->document.encodingName)
    , lineEndings(m_impl->document.lineEndings)
    , isReadOnly(m_impl->document.isReadOnly)
    , isDirty(m_impl->document.isDirty)
    , loadGeneration(m_impl->document.loadGeneration)
    , isLoading(m_impl->document.isLoading)
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
            m_appearanceMode.set(mode);
    }
    connections.push_back(persist(m_showLineNumbers, defaults, lineNumbersKey));
    connections.push_back(persist(m_showMinimap, defaults, minimapKey));
    connections.push_back(isDirty.onChange([this](bool) { m_impl->showSafety(); }));
    connections.push_back(store.onRename([this](const Path& from, const Path& to) {
        m_impl->words.moved(from, to);
        m_impl->document.moved(from, to);
        saveSession();
    }));
    store.onExternalChanges = [this](const auto& changedIDs, const auto& removedIDs) {
        m_impl->handleExternalNoteChanges(changedIDs, removedIDs);
    };

    const size_t found = m_impl->words.recoverLeftovers();
    m_impl->restoreSession();
    m_impl->isSessionRestored = true;
    if (tabs->empty())
        m_impl->showFirstNote();
    m_impl->loadActiveDocument();
    if (found > 0)
        showNotice(recoveredNotice(found));
}

AppState::~AppState()
{
    m_impl->words.queue().finishAll(); // while what hears of its outcomes is still there
    theAppState = nullptr;
}

AppState* AppState::shared()
{
    return theAppState;
}

// ---- The active document

const Rope& AppState::currentText() const
{
    return m_impl->document.currentText();
}

Rope AppState::editorText() const
{
    return m_impl->document.text();
}

std::shared_ptr<EditorTab> AppState::activeTab() const
{
    return m_impl->tabs.active();
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
    m_impl->document.setTextView(view);
}

PlainTextView* AppState::textView() const
{
    return m_impl->document.textView();
}

// ---- What the views show

void AppState::setAppearanceMode(AppearanceMode mode)
{
    m_appearanceMode.set(mode);
}

void AppState::setShowLineNumbers(bool isShown)
{
    m_showLineNumbers.set(isShown);
}

void AppState::setShowMinimap(bool isShown)
{
    m_showMinimap.set(isShown);
}

void AppState::setShowInvisibles(bool isShown)
{
    m_showInvisibles.set(isShown);
}

void AppState::setGoToLineVisible(bool isShown)
{
    m_goToLineVisible.set(isShown);
}

void AppState::setCursor(int64_t line, int64_t column)
{
    assert(line >= 1 && column >= 1);
    m_cursorLine.set(line);
    m_cursorColumn.set(column);
}

void AppState::setViewport(double start, double fraction)
{
    m_viewportStart.set(start);
    m_viewportFraction.set(fraction);
}

// ---- Application

void AppState::applyAppearance()
{
    m_impl->services.appearance.apply(appearanceMode.get());
}

void AppState::willResignActive()
{
    m_impl->document.finishTyping();
    flushSave(AllowBackground::no);
}

void AppState::willTerminate()
{
    m_impl->document.finishTyping();
    flushSave(AllowBackground::no);
    static_cast<void>(m_impl->document.rescue(UnsavedWords::Retry::recoveryOnly));
    commitActiveNoteTitle();
    saveSession();
    m_impl->words.finish();
}

void AppState::checkInvariants() const
{
    m_impl->tabs.checkInvariants();
    m_impl->document.checkInvariants();
    m_impl->words.checkInvariants();
}

} // namespace quillmark
