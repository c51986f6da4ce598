#include "app/CommandLine.h"

#include <algorithm>
#include <array>

namespace quillmark {

namespace {

constexpr std::string_view help = R"(Использование: quillmark [ФАЙЛ…]

Тихий и быстрый редактор простого текста с папкой заметок.
Каждый ФАЙЛ открывается в своей вкладке, последний становится активным.

Параметры:
  --help                       показать эту справку
  --version                    показать версию
  --recovered                  перечислить тексты, спасённые в папку восстановления
  --screenshot ФАЙЛ [ФАЙЛ…]    открыть окно, дождаться покоя, записать его снимок
                               в формате PNG и завершиться
  --                           всё, что дальше, — файлы
)";

/// Options of the toolkit that a session manager or a developer passes; each has a value.
constexpr std::array<std::string_view, 2> toolkitOptions{"-session", "-platform"};

Path absolutePath(std::string_view argument, const Path& currentFolder)
{
    return (currentFolder / Path(argument)).lexically_normal();
}

std::unexpected<Error> usageError(std::string message)
{
    return std::unexpected(Error{.message = std::move(message)});
}

class Parser {
public:
    Parser(std::span<const char* const> arguments, const Path& currentFolder)
        : m_rest(arguments)
        , m_currentFolder(currentFolder)
    {
    }

    Result<CommandLine> parse()
    {
        while (!m_rest.empty()) {
            const std::string_view argument = next();
            if (m_onlyFiles || argument == "-" || !argument.starts_with('-'))
                addFile(argument);
            else if (const Status status = takeOption(argument); !status)
                return std::unexpected(status.error());
        }
        return std::move(m_line);
    }

private:
    std::string_view next()
    {
        const std::string_view argument = m_rest.front();
        m_rest = m_rest.subspan(1);
        return argument;
    }

    void addFile(std::string_view argument)
    {
        if (!argument.empty())
            m_line.files.push_back(absolutePath(argument, m_currentFolder));
    }

    Status takeOption(std::string_view option)
    {
        using Action = CommandLine::Action;
        if (option == "--")
            m_onlyFiles = true;
        else if (option == "--help" || option == "-h")
            m_line.action = Action::help;
        else if (option == "--version")
            m_line.action = Action::version;
        else if (option == "--recovered")
            m_line.action = Action::recovered;
        else if (option == "--screenshot")
            return takeScreenshot(option);
        else if (std::ranges::find(toolkitOptions, option) != toolkitOptions.end())
            return takeToolkitOption(option);
        else
            return usageError("Неизвестный параметр " + std::string(option));
        return {};
    }

    Status takeScreenshot(std::string_view option)
    {
        if (m_rest.empty())
            return usageError("После " + std::string(option) + " нужно имя файла");
        m_line.screenshot = absolutePath(next(), m_currentFolder);
        return {};
    }

    Status takeToolkitOption(std::string_view option)
    {
        if (m_rest.empty())
            return usageError("После " + std::string(option) + " нужно значение");
        m_line.toolkitArguments.emplace_back(option);
        m_line.toolkitArguments.emplace_back(next());
        return {};
    }

    std::span<const char* const> m_rest;
    const Path& m_currentFolder;
    CommandLine m_line;
    bool m_onlyFiles = false;
};

} // namespace

Result<CommandLine> parseCommandLine(std::span<const char* const> arguments, const Path& currentFolder)
{
    return Parser(arguments, currentFolder).parse();
}

std::string_view helpText()
{
    return help;
}

} // namespace quillmark
