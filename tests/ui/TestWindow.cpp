#include "TestWindow.h"

#include "app/look/TextLabel.h"

#include <fstream>
#include <iterator>

namespace quillmark::test {

using namespace std::chrono_literals;

TestWindow::~TestWindow()
{
    m_view.reset();
    if (m_app)
        m_app->willTerminate();
}

void TestWindow::write(const Path& file, std::string_view text)
{
    std::ofstream(file, std::ios::binary) << text;
}

void TestWindow::addNote(const std::string& name, std::string_view text)
{
    const Path file = notesFolder() / (name + ".txt");
    write(file, text);
    // Well apart and in the past, so that the order of the list is certain.
    std::filesystem::last_write_time(
        file, std::filesystem::file_time_type::clock::now() - 24h + ++m_noteCount * 1min);
}

Path TestWindow::addFile(const std::string& name, std::string_view text)
{
    const Path file = m_world.home / name;
    write(file, text);
    return file;
}

void TestWindow::show()
{
    m_app = std::make_unique<AppState>(appServices(m_world, m_world.notes(), m_world.journal()));
    m_view = std::make_unique<ContentView>(*m_app, m_world.scheduler, m_world.clipboard, m_world.fileManager);
    m_view->show();
    m_view->activateWindow();
    settle();
}

void TestWindow::settle()
{
    m_world.scheduler.settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

void TestWindow::wait(Duration duration)
{
    m_world.scheduler.advance(duration);
    settle();
}

std::string TestWindow::contents(const Path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void TestWindow::type(const char* keys)
{
    for (; *keys; ++keys)
        QTest::keyClick(m_view->windowHandle(), *keys);
    settle();
}

void TestWindow::typeText(const QString& text)
{
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, m_view->windowHandle(), Qt::Key(character.toUpper().unicode()),
            QString(character), Qt::NoModifier);
    settle();
}

void TestWindow::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(m_view->windowHandle(), key, modifiers);
    settle();
}

bool TestWindow::shows(const QString& text)
{
    for (const TextLabel* label : m_view->findChildren<TextLabel*>())
        if (label->isVisible() && label->text() == text)
            return true;
    return false;
}

std::vector<std::string> TestWindow::tabTitles() const
{
    std::vector<std::string> titles;
    for (const auto& tab : m_app->tabs.get())
        titles.push_back(tab->title.get());
    return titles;
}

} // namespace quillmark::test
