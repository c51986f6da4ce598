// The files that a drag from a file manager brings.
#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>

#include <vector>

namespace quillmark {

/// The local files of a text/uri-list, in its order, as bytes: a name need not be UTF-8. What lies on other
/// machines is left out.
std::vector<Path> filesInUriList(const QByteArray& list);

} // namespace quillmark
