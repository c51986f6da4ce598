#include "app/window/SidebarModel.h"

#include "app/Paint.h"

#include <algorithm>

namespace quillmark {

using Kind = SidebarLayout::Kind;

SidebarModel::SidebarModel(AppState& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    m_connections.push_back(m_app.store.notes.onChange([this](const auto&) { rowsChanged(); }));
    m_connections.push_back(m_app.tabs.onChange([this](const auto&) { rowsChanged(); }));
    rowsChanged();
}

void SidebarModel::rowsChanged()
{
    beginResetModel();
    m_layout = SidebarLayout(int(m_app.fileTabs().size()), int(m_app.store.notes->size()));
    watchTitles();
    endResetModel();
}

void SidebarModel::watchTitles()
{
    m_titleConnections.clear();
    for (const auto& tab : m_app.fileTabs())
        m_titleConnections.push_back(
            tab->title.onChange([this, id = tab->id](const auto&) { titleChanged(id); }));
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
    const auto& notes = m_app.store.notes.get();
    return kind == Kind::note && size_t(position) < notes.size() ? &notes[size_t(position)] : nullptr;
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
    if (const auto id = m_app.activeNoteID()) {
        const auto& notes = m_app.store.notes.get();
        const auto found = std::ranges::find(notes, *id, &Note::id);
        return found == notes.end() ? QModelIndex() : index(m_layout.rowOfNote(int(found - notes.begin())));
    }
    const AppState::Tabs files = m_app.fileTabs();
    const auto found = std::ranges::find(files, m_app.activeTab());
    return found == files.end() ? QModelIndex() : index(m_layout.rowOfFile(int(found - files.begin())));
}

int SidebarModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_layout.rowCount();
}

QVariant SidebarModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid())
        return {};
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
