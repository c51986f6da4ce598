#include "app/RecoveredList.h"

#include <cstdio>
#include <ctime>

namespace quillmark {

namespace {

std::string localTime(WallTime time)
{
    const std::time_t seconds
        = std::chrono::system_clock::to_time_t(std::chrono::time_point_cast<std::chrono::seconds>(time));
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%d.%m.%Y %H:%M:%S", &local)};
}

std::string paddedSize(int64_t bytes)
{
    char text[32];
    return {text, size_t(std::snprintf(text, sizeof text, "%12lld Б", static_cast<long long>(bytes)))};
}

} // namespace

std::string recoveredList(const std::vector<RecoveredText>& texts)
{
    if (texts.empty())
        return "Спасённых текстов нет.\n";
    std::string lines;
    for (const RecoveredText& text : texts)
        lines += localTime(text.modified) + paddedSize(text.size) + "  " + text.path.native() + "\n";
    return lines;
}

} // namespace quillmark
