#include "app/window/ContentView.h"

#include "app/editor/EditorView.h"
#include "app/look/Paint.h"
#include "app/recovered/RecoveredWindow.h"
#include "app/window/AccessibleWidgets.h"
#include "app/window/DroppedFiles.h"
#include "app/window/EditorArea.h"
#include "app/window/FieldEditing.h"
#include "app/window/MainMenu.h"
#include "app/window/SplitView.h"
#include "app/window/WindowKeys.h"
#include "app/window/banners/Banners.h"
#include "app/window/panels/FilePanels.h"
#include "app/window/panels/GoToLineView.h"
#include "app/window/sidebar/SearchField.h"
#include "app/window/sidebar/SidebarList.h"
#include "app/window/sidebar/SidebarView.h"
#include "app/window/status/StatusBarView.h"
#include "app/window/tabs/TabBarView.h"

#include <QApplication>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

namespace quillmark {

namespace {

constexpr QSize defaultSize(960, 640);

QString uriList()
{
    return QStringLiteral("text/uri-list");
}

QVBoxLayout* makeColumn(QWidget* parent)
{
    auto* column = new QVBoxLayout(parent);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    return column;
}

} // namespace

ContentView::ContentView(AppState& app, Scheduler& scheduler, Clipboard& clipboard, FileManager& fileManager)
    : m_app(app)
    , m_fileManager(fileManager)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAcceptDrops(true);
    installAccessibleWidgets();
    m_sidebar = new SidebarView(app, *this, this);
    auto* split = new SplitView(m_sidebar, makeDetail(scheduler, clipboard), this);
    QVBoxLayout* column = makeColumn(this);
    m_menu = new MainMenu(app, *this, this);
    m_keys = new WindowKeys(app, *this, *m_menu);
    column->setMenuBar(m_menu);
    column->addWidget(split, 1);
    resize(defaultSize.boundedTo(screen()->availableSize()));
    m_editorArea->setKeepsKeyboard(
        [this] { return m_sidebar->list().isWalking() || m_tabBar->strip().isWalking(); });
    orderParts();
    m_editorArea->editor().setFocus(Qt::OtherFocusReason); // it has lost it on its way into the window
    watch();
}

ContentView::~ContentView()
{
    disconnect(qApp, nullptr, this, nullptr); // the focus still leaves while the widget below is taken apart
}

QWidget* ContentView::makeDetail(Scheduler& scheduler, Clipboard& clipboard)
{
    auto* detail = new QWidget(this);
    m_tabBar = new TabBarView(m_app, detail);
    m_editorArea = new EditorArea(m_app, scheduler, clipboard, detail);
    QVBoxLayout* column = makeColumn(detail);
    column->addWidget(m_tabBar);
    column->addWidget(new Banners(m_app, detail));
    column->addWidget(m_editorArea, 1);
    m_statusBar = new StatusBarView(m_app, detail);
    column->addWidget(m_statusBar);
    return detail;
}

/// From the list the keyboard goes on to the text, and from there to what one needs less often.
void ContentView::orderParts()
{
    QWidget* last = &m_editorArea->editor();
    setTabOrder(&m_sidebar->list(), last);
    for (QWidget* button : m_statusBar->buttons()) {
        setTabOrder(last, button);
        last = button;
    }
    setTabOrder(last, &m_tabBar->strip());
}

void ContentView::watch()
{
    m_connections.push_back(m_app.activeTabID.onChange([this](const auto&) { watchActiveTab(); }));
    m_connections.push_back(m_app.tabs.onChange([this](const auto&) { watchActiveTab(); }));
    m_connections.push_back(m_app.goToLineVisible.onChange([this](bool isShown) { showGoToLine(isShown); }));
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* to) { focusMoved(to); });
    watchActiveTab();
}

void ContentView::watchActiveTab()
{
    m_titleConnection = {};
    if (const auto tab = m_app.activeTab())
        m_titleConnection = tab->title.onChange([this](const auto&) { showTitle(); });
    showTitle();
}

void ContentView::showTitle()
{
    const auto tab = m_app.activeTab();
    QString title = tab ? singleLine(tab->title.get()) : QStringLiteral("Ledgerly");
    title.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")); // Qt's sign for a changed document
    setWindowTitle(title);
}

void ContentView::showGoToLine(bool isShown)
{
    if (isShown && !m_goToLine) {
        m_goToLine = new GoToLineView(m_app, this);
        m_goToLine->show();
        m_goToLine->setFocus(Qt::ShortcutFocusReason);
    } else if (!isShown && m_goToLine) {
        m_editorArea->editor().setFocus(Qt::OtherFocusReason);
        m_goToLine->hide();
        m_goToLine->deleteLater(); // it may be telling us so
        m_goToLine = nullptr;
    }
}

/// A menu that was opened by keys is about what had the keyboard before.
QWidget* ContentView::keyboardHolder() const
{
    return focusWidget() == m_menu ? m_lastFocused.data() : focusWidget();
}

PlainTextView* ContentView::focusedTextView()
{
    return keyboardHolder() == &m_editorArea->editor() ? m_app.textView() : nullptr;
}

bool ContentView::canEditField(EditAction action)
{
    const auto* field = qobject_cast<QLineEdit*>(keyboardHolder());
    return field && canEdit(*field, action);
}

void ContentView::editField(EditAction action)
{
    if (auto* field = qobject_cast<QLineEdit*>(keyboardHolder()))
        edit(*field, action);
}

/// The menu bar takes the keyboard in passing, too, from menu to menu, and nobody hears of it.
void ContentView::focusMoved(QWidget* to)
{
    if (to && to != m_menu && isAncestorOf(to))
        m_lastFocused = to;
}

std::vector<Path> ContentView::chooseFilesToOpen()
{
    return runOpenPanel(*this, m_app.panelFolder());
}

std::optional<Path> ContentView::chooseFileToSave(const AppState::SaveSuggestion& suggestion)
{
    return runSavePanel(*this, suggestion);
}

void ContentView::reveal(const Path& file)
{
    m_fileManager.reveal(file);
}

void ContentView::toggleSidebar()
{
    m_sidebar->setVisible(m_sidebar->isHidden());
}

void ContentView::searchNotes()
{
    m_sidebar->show();
    m_sidebar->searchField().setFocus(Qt::ShortcutFocusReason);
}

void ContentView::showRecovered()
{
    if (!m_recovered)
        m_recovered = new RecoveredWindow(m_app, *this, this);
    m_recovered->present();
}

void ContentView::enterGoToLine()
{
    if (m_goToLine)
        m_goToLine->setFocus(Qt::OtherFocusReason);
}

void ContentView::quit()
{
    QApplication::quit();
}

void ContentView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::background));
    m_wasPainted = true;
}

void ContentView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_goToLine)
        m_goToLine->place();
}

void ContentView::showEvent(QShowEvent*)
{
    m_keys->listenTo(*windowHandle());
}

/// What leads back to the text from wherever a key means nothing else.
void ContentView::keyPressEvent(QKeyEvent* event)
{
    const bool leads
        = event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!leads)
        return QWidget::keyPressEvent(event);
    m_editorArea->editor().setFocus(Qt::OtherFocusReason);
}

void ContentView::dragEnterEvent(QDragEnterEvent* event)
{
    if (filesInUriList(event->mimeData()->data(uriList())).empty())
        return event->ignore();
    event->setDropAction(Qt::CopyAction); // a file that is opened stays where it is
    event->accept();
}

void ContentView::dropEvent(QDropEvent* event)
{
    event->setDropAction(Qt::CopyAction);
    event->accept();
    for (const Path& file : filesInUriList(event->mimeData()->data(uriList()))) {
        std::error_code unreadable; // is for the opening to tell of
        if (!std::filesystem::is_directory(file, unreadable))
            m_app.openFile(file);
    }
}

} // namespace quillmark
