#include "app/LedgerlyApp.h"

#include "app/Screenshot.h"
#include "app/TerminationSignals.h"
#include "app/look/Style.h"
#include "desktop/Fonts.h"

#include <QApplication>
#include <QLibraryInfo>

namespace quillmark {

namespace {

constexpr double menuTextSize = 13;

} // namespace

void prepareToolkit()
{
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeMenuBar); // asking the desktop for one waits for D-Bus
    QCoreApplication::setApplicationName(QStringLiteral("quillmark"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quillmark.Quillmark"));
    QLocale::setDefault(QLocale(QLocale::Russian, QLocale::Russia));
}

LedgerlyApp::LedgerlyApp(const CommandLine& commandLine, QtScheduler& scheduler, TerminationSignals& signals)
    : m_scheduler(scheduler)
    , m_paths(StandardPaths::find(m_files))
    , m_recovery(m_files, m_scheduler, m_log, m_paths.recovered())
    , m_writer(m_files, m_recovery, m_scheduler)
    , m_defaults(m_files, m_writer, m_scheduler, m_log, m_paths.settings())
    , m_trash(m_scheduler, m_files, m_log)
    , m_fileManager(m_scheduler, m_log)
    , m_appearance(m_scheduler)
    , m_watching(m_scheduler, m_files, m_log)
{
    QApplication::setStyle(new Style);
    QApplication::setFont(withPixelSize(QApplication::font(), menuTextSize));
    if (m_toolkitTexts.load(QStringLiteral("qtbase_ru"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_toolkitTexts);

    m_app = std::make_unique<AppState>(AppServices{
        .scheduler = m_scheduler,
        .files = m_files,
        .log = m_log,
        .defaults = m_defaults,
        .trash = m_trash,
        .appearance = m_appearance,
        .writer = m_writer,
        .recovery = m_recovery,
        .watching = m_watching,
        .defaultNotesFolder = m_paths.documents / "Notes",
        .journalFolders = m_paths.journal(),
    });
    m_delegate.applicationDidFinishLaunching();
    m_window = std::make_unique<ContentView>(*m_app, m_scheduler, m_clipboard, m_fileManager);
    m_delegate.applicationOpenFiles(commandLine.files);
    m_window->show();
    m_signalWatch = signals.listen(m_scheduler, [] { QCoreApplication::quit(); });
    if (commandLine.screenshot)
        m_screenshot = std::make_unique<Screenshot>(*m_app, *m_window, m_scheduler, *commandLine.screenshot);
}

LedgerlyApp::~LedgerlyApp()
{
    m_screenshot.reset();
    m_window.reset();
    m_app.reset();
    m_fileManager.giveUp(); // its answer may never come
    m_scheduler.drain(); // what still runs in the background uses the disk and the log
}

int LedgerlyApp::run()
{
    return QApplication::exec();
}

} // namespace quillmark
