#include "base/Parallel.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace quillmark {
namespace {

constexpr size_t pieceSize = 128; ///< items; a thread that comes later or runs slower takes fewer pieces
constexpr size_t mostThreads = 4;

} // namespace

void inParallel(size_t count, const std::function<void(size_t first, size_t end)>& work)
{
    std::atomic<size_t> next = 0;
    const auto takePieces = [&] {
        for (size_t first = next.fetch_add(pieceSize); first < count; first = next.fetch_add(pieceSize))
            work(first, std::min(count, first + pieceSize));
    };
    const size_t cores = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, mostThreads);
    const size_t wanted = std::min(cores, count / pieceSize);
    std::vector<std::jthread> others;
    try {
        while (others.size() + 1 < wanted)
            others.emplace_back(takePieces);
    } catch (const std::system_error&) { // the system has no more threads: then with those that there are
    }
    takePieces();
}

} // namespace quillmark
