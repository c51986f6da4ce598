// What stands on the command line. Files are bytes, relative ones made absolute against the current folder.
#pragma once

#include "base/Result.h"
#include "platform/FileSystem.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace quillmark {

struct CommandLine {
    enum class Action { run, help, version, recovered };

    Action action = Action::run;
    std::vector<Path> files; ///< in the order given, absolute and normalised
    std::optional<Path> screenshot; ///< write a picture of the settled window there and end
    std::vector<std::string> toolkitArguments; ///< for the desktop: session and platform, with their values
};

/// Reads the arguments behind the program's name. Fails with a Russian sentence for an unknown option or one
/// that lacks its value. What follows "--" is a file whatever it looks like.
Result<CommandLine> parseCommandLine(std::span<const char* const> arguments, const Path& currentFolder);

/// The text of --help, true to what parseCommandLine understands.
std::string_view helpText();

} // namespace quillmark
