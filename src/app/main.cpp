#include "app/CommandLine.h"
#include "app/LedgerlyApp.h"
#include "app/RecoveredList.h"
#include "app/TerminationSignals.h"
#include "desktop/Fonts.h"

#include <QApplication>

#include <cstdio>

namespace quillmark {

namespace {

int print(std::string_view text)
{
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return isWritten && std::fflush(stdout) == 0 ? 0 : 1;
}

int printRecovered()
{
    PosixFileSystem files;
    SystemLog log;
    QtScheduler clock;
    RecoveryStore store(files, clock, log, StandardPaths::find(files).recovered());
    const auto texts = store.list();
    if (texts)
        return print(recoveredList(*texts));
    std::fprintf(stderr, "%s: %s\n", store.folder().c_str(), texts.error().message.c_str());
    return 1;
}

int runProgram(char* programName, const CommandLine& commandLine)
{
    TerminationSignals signals;
    QtScheduler scheduler;
    readFontList(scheduler);
    // The toolkit sees its own arguments only: no file is taken for an option of it.
    std::vector<std::string> values = commandLine.toolkitArguments;
    std::vector<char*> arguments{programName};
    for (std::string& value : values)
        arguments.push_back(value.data());
    int count = int(arguments.size());
    arguments.push_back(nullptr);

    prepareToolkit();
    const QApplication application(count, arguments.data());
    LedgerlyApp ledgerly(commandLine, scheduler, signals);
    return ledgerly.run();
}

int runMain(int count, char** arguments)
{
    std::error_code noFolder;
    const Path currentFolder = std::filesystem::current_path(noFolder);
    const auto commandLine
        = parseCommandLine({arguments + 1, size_t(count > 0 ? count - 1 : 0)}, currentFolder);
    if (!commandLine) {
        std::fprintf(
            stderr, "quillmark: %s\nПодсказка: quillmark --help\n", commandLine.error().message.c_str());
        return 2;
    }
    switch (commandLine->action) {
    case CommandLine::Action::help:
        return print(helpText());
    case CommandLine::Action::version:
        return print("Quillmark " QUILLMARK_VERSION "\n");
    case CommandLine::Action::recovered:
        return printRecovered();
    case CommandLine::Action::run:
        break;
    }
    return runProgram(arguments[0], *commandLine);
}

} // namespace

} // namespace quillmark

int main(int count, char** arguments)
{
    return quillmark::runMain(count, arguments);
}
