#include "app/window/sidebar/SidebarModel.h"

#include "app/look/Paint.h"
#include "app/window/ItemToolTip.h"
#include "app/window/sidebar/NoteRow.h"

#include <algorithm>
#include <functional>

namespace quillmark {

using Kind = SidebarLayout::Kind;

SidebarModel::SidebarModel(AppState& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    m_connections.push_back(m_app.store.notes.onChange([this](const auto&) { rowsChanged(); }));
    m_connections.push_back(m_app.tabs.onChange([this](const auto&) {
        watchTabs();
        rowsChanged();
    }));
    m_connections.push_back(m_app.store.searchQuery.onChange([this](const auto&) { rowsChanged(); }));
    m_connections.push_back(m_app.store.contentMatchIDs.onChange([this](const auto& ids) {
        if (!ids.empty()) // they are only forgotten when the query changes, which is heard of too
            rowsChanged();
    }));
    watchTabs();
    m_connections.push_back(m_app.store.isSearchingContents.onChange([this](bool isSearching) {
        if (!isSearching)
            Q_EMIT searchEnded();
    }));
    rowsChanged();
}

bool SidebarModel::hasFoundNothing() const
{
    return isSearching() && m_notes.empty() && !m_app.store.isSearchingContents.get();
}

void SidebarModel::rowsChanged()
{
    std::vector<Uuid> files;
    for (const auto& tab : m_app.fileTabs())
        files.push_back(tab->id);
    std::vector<ShownNote> notes = shownNotes();
    if (m_layout.rowCount() > 0 && files == m_files
        && std::ranges::equal(notes, m_notes, std::equal_to(), &ShownNote::id, &ShownNote::id)) {
        m_notes = std::move(notes);
        Q_EMIT dataChanged(index(0), index(m_layout.rowCount() - 1));
        return;
    }
    beginResetModel();
    m_files = std::move(files);
    m_notes = std::move(notes);
    m_layout = SidebarLayout(int(m_files.size()), int(m_notes.size()));
    endResetModel();
}

std::vector<SidebarModel::ShownNote> SidebarModel::shownNotes() const
{
    const NoteStore& store = m_app.store;
    const std::vector<const Note*> notes = store.filteredNotes();
    std::vector<ShownNote> shown;
    shown.reserve(notes.size());
    for (const Note* note : notes)
        shown.push_back({note->id, size_t(note - store.notes->data())});
    return shown;
}

/// A note's tab becomes a file's when it is saved under another name.
void SidebarModel::watchTabs()
{
    m_tabConnections.clear();
    for (const auto& tab : *m_app.tabs) {
        m_tabConnections.push_back(
            tab->title.onChange([this, id = tab->id](const auto&) { titleChanged(id); }));
        m_tabConnections.push_back(tab->source.onChange([this](const auto&) { rowsChanged(); }));
    }
}

void SidebarModel::titleChanged(const Uuid& tabID)
{
    const AppState::Tabs files = m_app.fileTabs();
    const auto tab = std::ranges::find(files, tabID, [](const auto& file) { return file->id; });
    const QModelIndex changed = index(m_layout.rowOfFile(int(tab - files.begin())));
    if (tab != files.end() && changed.isValid())
        Q_EMIT dataChanged(changed, changed);
}

const Note* SidebarModel::note(const QModelIndex& index) const
{
    const auto [kind, position] = item(index);
    if (kind != Kind::note || size_t(position) >= m_notes.size())
        return nullptr;
    const auto& notes = m_app.store.notes.get();
    const size_t place = m_notes[size_t(position)].place;
    return place < notes.size() ? &notes[place] : nullptr;
}

std::shared_ptr<EditorTab> SidebarModel::fileTab(const QModelIndex& index) const
{
    const auto [kind, position] = item(index);
    if (kind != Kind::file)
        return nullptr;
    const AppState::Tabs files = m_app.fileTabs();
    return size_t(position) < files.size() ? files[size_t(position)] : nullptr;
}

bool SidebarModel::isActive(const QModelIndex& index) const
{
    if (const Note* shown = note(index))
        return m_app.activeNoteID() == shown->id;
    const auto tab = fileTab(index);
    return tab && m_app.activeTabID.get() == tab->id;
}

QModelIndex SidebarModel::activeIndex() const
{
    if (const auto id = m_app.activeNoteID())
        return indexOf(*id);
    const auto tab = m_app.activeTab();
    return tab ? indexOf(tab->id) : QModelIndex();
}

QModelIndex SidebarModel::firstNote() const
{
    return m_notes.empty() ? QModelIndex() : index(m_layout.rowOfNote(0));
}

std::optional<Uuid> SidebarModel::identity(const QModelIndex& index) const
{
    if (!index.isValid())
        return std::nullopt;
    const auto [kind, position] = item(index);
    if (kind == Kind::file)
        return m_files.at(size_t(position));
    return kind == Kind::note ? std::optional(m_notes.at(size_t(position)).id) : std::nullopt;
}

QModelIndex SidebarModel::indexOf(const Uuid& identity) const
{
    if (const auto file = std::ranges::find(m_files, identity); file != m_files.end())
        return index(m_layout.rowOfFile(int(file - m_files.begin())));
    const auto note = std::ranges::find(m_notes, identity, &ShownNote::id);
    return note != m_notes.end() ? index(m_layout.rowOfNote(int(note - m_notes.begin()))) : QModelIndex();
}

int SidebarModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_layout.rowCount();
}

QVariant SidebarModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return rowText(index);
    case Qt::ToolTipRole:
        if (const Note* shown = note(index))
            return itemToolTip(shown->title, shown->url);
        if (const auto tab = fileTab(index))
            return itemToolTip(m_app, *tab);
        break;
    case Qt::AccessibleDescriptionRole:
        if (const Note* shown = note(index))
            return NoteRow::previewLine(*shown);
        break;
    default:
        break;
    }
    return {};
}

QString SidebarModel::rowText(const QModelIndex& index) const
{
    switch (item(index).kind) {
    case Kind::filesHeader:
        return QStringLiteral("Открытые файлы");
    case Kind::notesHeader:
        return QStringLiteral("Заметки");
    case Kind::file:
        if (const auto tab = fileTab(index))
            return singleLine(tab->title.get());
        break;
    case Kind::note:
        if (const Note* shown = note(index))
            return singleLine(shown->title);
        break;
    }
    return {};
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex& index) const
{
    const Kind kind = item(index).kind;
    const bool isRow = index.isValid() && (kind == Kind::file || kind == Kind::note);
    return isRow ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

} // namespace quillmark
