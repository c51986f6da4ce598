#include "probe/Process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quillmark::test {
namespace {

void redirectOutput(const SpawnOptions& options)
{
    if (options.outputFile.empty() && !options.quiet)
        return;
    const char* target = options.quiet ? "/dev/null" : options.outputFile.c_str();
    const int fd = open(target, O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(fd, STDOUT_FILENO);
    dup2(fd, STDERR_FILENO);
}

} // namespace

pid_t spawn(const SpawnOptions& options)
{
    const pid_t child = fork();
    if (child < 0)
        throw std::runtime_error(std::strerror(errno));
    if (child > 0)
        return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL); // nothing outlives the tests
    redirectOutput(options);
    for (const auto& [name, value] : options.environment)
        setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> arguments{const_cast<char*>(options.program.c_str())};
    for (const std::string& argument : options.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    for (int fd = 3; fd < 256; ++fd)
        if (fd != options.keepDescriptor)
            close(fd);
    execvp(options.program.c_str(), arguments.data());
    _exit(127);
}

bool isRunning(pid_t process)
{
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0
        && info.si_pid == 0;
}

std::optional<int> waitForExit(pid_t process, Duration limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    do {
        int status = 0;
        if (waitpid(process, &status, WNOHANG) == process)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    } while (std::chrono::steady_clock::now() < deadline);
    return std::nullopt;
}

void killAndWait(pid_t process)
{
    kill(process, SIGKILL);
    int status = 0;
    waitpid(process, &status, 0);
}

} // namespace quillmark::test
