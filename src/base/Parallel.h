// Work on many items, shared among threads.
#pragma once

#include <cstddef>
#include <functional>

namespace quillmark {

/// Calls `work(first, end)` for the pieces of 0 … `count`, each once and in no order, on this thread and,
/// when there are many items, on a few others. Returns when all is done. `work` does not throw.
void inParallel(size_t count, const std::function<void(size_t first, size_t end)>& work);

} // namespace quillmark
