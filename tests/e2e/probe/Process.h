// Programs started, watched and killed by the tests.
#pragma once

#include "base/Clock.h"

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace quillmark::test {

struct SpawnOptions {
    std::string program; ///< looked for on the PATH when it has no slash
    std::vector<std::string> arguments{};
    std::map<std::string, std::string> environment{}; ///< on top of this process's
    std::string outputFile{}; ///< standard output and error go there; empty: inherited
    bool quiet = false; ///< … or nowhere
    int keepDescriptor = -1; ///< stays open in the program
};

pid_t spawn(const SpawnOptions& options); ///< throws when it cannot fork
bool isRunning(pid_t process);
/// Waits for the process to end; its exit code, or 128 + the signal that ended it. Nothing when the limit
/// passes.
std::optional<int> waitForExit(pid_t process, Duration limit);
void killAndWait(pid_t process); ///< SIGKILL

} // namespace quillmark::test
