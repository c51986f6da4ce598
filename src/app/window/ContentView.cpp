#include "app/window/ContentView.h"

#include "app/LatinKeys.h"
#include "app/editor/EditorView.h"
#include "app/look/Paint.h"
#include "app/recovered/RecoveredWindow.h"
#include "app/window/AccessibleWidgets.h"
#include "app/window/DroppedFiles.h"
#include "app/window/EditorArea.h"
#include "app/window/MainMenu.h"
#include "app/window/SplitView.h"
#include "app/window/banners/Banners.h"
#include "app/window/panels/FilePanels.h"
#include "app/window/panels/GoToLineView.h"
#include "app/window/sidebar/SearchField.h"
#include "app/window/sidebar/SidebarView.h"
#include "app/window/status/StatusBarView.h"
#include "app/window/tabs/TabBarView.h"

#include <QApplication>
#include <QDropEvent>
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
    column->setMenuBar(m_menu);
    column->addWidget(split, 1);
    resize(defaultSize.boundedTo(screen()->availableSize()));
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
    column->addWidget(new StatusBarView(m_app, detail));
    return detail;
}

void ContentView::watch()
{
    m_connections.push_back(m_app.activeTabID.onChange([this](const auto&) { watchActiveTab(); }));
    m_connections.push_back(m_app.tabs.onChange([this](const auto&) { watchActiveTab(); }));
    m_connections.push_back(m_app.goToLineVisible.onChange([this](bool isShown) { showGoToLine(isShown); }));
    new LatinShortcuts(*qApp, this);
    connect(qApp, &QApplication::focusChanged, this, &ContentView::focusMoved);
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

PlainTextView* ContentView::focusedTextView()
{
    // A menu that was opened by keys is about what had the keyboard before.
    const QWidget* const focused = focusWidget() == m_menu ? m_focusBeforeMenu.data() : focusWidget();
    return focused == &m_editorArea->editor() ? m_app.textView() : nullptr;
}

void ContentView::focusMoved(QWidget* from, QWidget* to)
{
    if (to == m_menu)
        m_focusBeforeMenu = from;
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
