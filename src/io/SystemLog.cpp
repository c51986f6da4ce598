#include "io/SystemLog.h"

#include <algorithm>
#include <string>

#include <syslog.h>
#include <unistd.h>

namespace quillmark {

void SystemLog::line(std::string_view text)
{
    std::string oneLine(text);
    std::ranges::replace(oneLine, '\n', ' ');
    syslog(LOG_USER | LOG_NOTICE, "%s", oneLine.c_str());
    oneLine += '\n';
    [[maybe_unused]] const ssize_t count
        = write(STDERR_FILENO, oneLine.data(), oneLine.size()); // nobody to tell
}

} // namespace quillmark
