#include "app/window/sidebar/SidebarView.h"

#include "app/look/Paint.h"
#include "app/look/SymbolButton.h"
#include "app/window/MainMenu.h"
#include "app/window/sidebar/SearchField.h"
#include "app/window/sidebar/SidebarList.h"

#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

namespace quillmark {

namespace {

constexpr double newNoteSymbolBox = 16;

} // namespace

SidebarView::SidebarView(AppState& app, Shell& shell, QWidget* parent)
    : QWidget(parent)
    , m_app(app)
    , m_shell(shell)
    , m_search(new SearchField(this))
    , m_model(new SidebarModel(app, this))
    , m_list(new SidebarList(*m_model, this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    auto* newNote = new SymbolButton("square.and.pencil", newNoteSymbolBox, toolTipOf("file.newNote"), this);
    newNote->setLabel(QStringLiteral("Новая заметка"));
    connect(newNote, &SymbolButton::clicked, this, [this] { m_app.newNote(); });
    m_list->onChoose = [this](const QModelIndex& index) { choose(index); };
    m_list->onWalk = [this](const QModelIndex& index) { open(index); };
    m_list->onContextMenu = [this](const QModelIndex& index, const QPoint& place) {
        QMenu* const menu = makeContextMenu(index);
        if (!menu)
            return;
        m_list->setMenuRow(index);
        connect(menu, &QMenu::aboutToHide, m_list, [this] { m_list->setMenuRow({}); });
        menu->popup(place);
    };
    m_activeTabConnection = app.activeTabID.onChange([this](const auto&) { m_list->followActive(); });
    wireSearch();

    auto* button = new QHBoxLayout;
    button->setContentsMargins(8, 5, 8, 1);
    button->addWidget(newNote, 1);
    auto* search = new QHBoxLayout;
    search->setContentsMargins(8, 5, 8, 3);
    search->addWidget(m_search);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(button);
    layout->addLayout(search);
    layout->addWidget(m_list, 1);
}

void SidebarView::wireSearch()
{
    const auto showQuery = [this](const std::string& query) { m_search->setQuery(query); };
    showQuery(m_app.store.searchQuery.get());
    m_queryConnection = m_app.store.searchQuery.onChange(showQuery);
    connect(m_search, &SearchField::textEdited, this,
        [this](const QString& text) { m_app.store.updateSearchQuery(text.toStdString()); });
    connect(m_search, &SearchField::left, this, &SidebarView::focusEditor);
    connect(m_search, &SearchField::wentDown, m_list, &SidebarList::enterFromAbove);
    connect(m_search, &SearchField::accepted, this, [this] {
        if (m_model->isSearching() && m_model->firstNote().isValid())
            choose(m_model->firstNote());
    });
    m_list->onLeaveUpwards = [this] { m_search->setFocus(Qt::BacktabFocusReason); };
    m_list->onEscape = [this] {
        if (m_model->isSearching())
            m_search->setFocus(Qt::BacktabFocusReason);
        else
            focusEditor();
    };
}

void SidebarView::focusEditor()
{
    if (PlainTextView* text = m_app.textView())
        text->becomeFirstResponder();
}

void SidebarView::choose(const QModelIndex& index)
{
    open(index);
    focusEditor();
}

void SidebarView::open(const QModelIndex& index)
{
    if (m_model->isActive(index))
        return;
    if (const Note* note = m_model->note(index))
        m_app.openNote(Uuid(note->id)); // the record may move meanwhile
    else if (const auto tab = m_model->fileTab(index))
        m_app.selectTab(tab->id);
}

QMenu* SidebarView::makeContextMenu(const QModelIndex& index)
{
    const auto tab = m_model->fileTab(index);
    const Note* note = m_model->note(index);
    if (!tab && !note)
        return nullptr;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (tab) {
        menu->addAction(QStringLiteral("Закрыть"), this, [this, id = tab->id] { m_app.closeTab(id); });
        return menu;
    }
    // The list may change while the menu is open: the note is looked up again when an item is chosen.
    const auto addNoteAction = [&](const QString& title, auto run) {
        menu->addAction(title, this, [this, id = note->id, run] {
            if (const Note* current = m_app.store.find(id))
                run(m_app, Note(*current));
        });
    };
    addNoteAction(QStringLiteral("Показать в Finder"),
        [&shell = m_shell](AppState&, const Note& chosen) { shell.reveal(chosen.url); });
    addNoteAction(QStringLiteral("Дублировать"),
        [](AppState& app, const Note& chosen) { app.store.duplicateNote(chosen); });
    menu->addSeparator();
    addNoteAction(
        QStringLiteral("Удалить"), [](AppState& app, const Note& chosen) { app.deleteNote(chosen); });
    return menu;
}

void SidebarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::panelBackground));
}

} // namespace quillmark
