#include "SyncTool.h"

#include "EndToEnd.h"
#include "io/Descriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quillmark::test {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view massPrefix = "Выгрузка ";
constexpr std::string_view opening = "Начало";
constexpr std::string_view temporaryName = ".sync-tool.tmp";
constexpr int64_t longestBody = 1500; ///< letters: a version fits into one page, and is written in one piece
constexpr int64_t massSize = 400; ///< files

constexpr std::array<std::string_view, 10> digits = {"а", "б", "в", "г", "д", "е", "ж", "з", "и", "к"};
constexpr size_t digitCount = 6;
constexpr size_t letterSize = 2; ///< bytes

/// A number without ASCII.
std::string spelled(int number)
{
    std::string result;
    for (size_t i = 0; i < digitCount; ++i, number /= 10)
        result.insert(0, digits[static_cast<size_t>(number % 10)]);
    return result;
}

/// 0 when the letters are no number.
int numberFrom(std::string_view letters)
{
    int number = 0;
    for (size_t i = 0; i < digitCount; ++i) {
        const auto digit = std::ranges::find(digits, letters.substr(i * letterSize, letterSize));
        if (digit == digits.end())
            return 0;
        number = number * 10 + static_cast<int>(digit - digits.begin());
    }
    return number;
}

std::string withoutAscii(std::string_view text)
{
    std::string rest;
    std::ranges::copy_if(
        text, std::back_inserter(rest), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    return rest;
}

bool isNote(const fs::path& file)
{
    return file.extension() == ".txt" && !file.filename().native().starts_with('.');
}

bool writeWhole(int descriptor, std::string_view bytes)
{
    return ::write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

bool move(const fs::path& from, const fs::path& to, unsigned flags)
{
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

} // namespace

SyncTool::SyncTool(Path notes, std::vector<Path> files, Path away, uint64_t seed)
    : m_notes(std::move(notes))
    , m_files(std::move(files))
    , m_away(std::move(away))
    , m_random(seed)
{
    fs::create_directories(m_notes);
    fs::create_directories(m_away);
}

void SyncTool::putFirstVersions()
{
    for (const Path& file : m_files)
        add(file, m_versions[makeVersion()]);
    for (const char* stem : {"План", "Й", "И\u0306", "plan", "Plan"}) // twins in composition and in case
        add(freshName(stem), m_versions[makeVersion()]);
}

void SyncTool::step()
{
    for (size_t i = m_taken.size(); i-- > 0;) {
        if (--m_taken[i].stepsLeft <= 0)
            bringBack(i);
    }
    using Operation = void (SyncTool::*)();
    static constexpr std::array operations
        = {&SyncTool::renameOver, &SyncTool::renameOver, &SyncTool::renameOver, &SyncTool::renameOver,
            &SyncTool::writeInPlace, &SyncTool::writeInPlace, &SyncTool::writeInPlace,
            &SyncTool::rewriteSameBytes, &SyncTool::takeAway, &SyncTool::giveOtherName, &SyncTool::addOne};
    Operation operation = operations[static_cast<size_t>(below(operations.size()))];
    if (below(30) == 0)
        operation = m_mass.empty() ? &SyncTool::addMany
            : below(2) == 0        ? &SyncTool::changeMany
                                   : &SyncTool::removeMany;
    (this->*operation)();
}

// ---- What is there

std::vector<fs::path> SyncTool::noteFiles()
{
    std::vector<Path> found;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(m_notes, error)) {
        const Path& path = entry.path();
        if (path.filename().native().find("(conflict ") != std::string::npos)
            m_conflictCopies.insert(path);
        if (isNote(path) && !path.filename().native().starts_with(massPrefix))
            found.push_back(path);
    }
    std::ranges::sort(found);
    return found;
}

/// Most often the note that was changed last, which is the one that somebody is typing into.
fs::path SyncTool::pickFile()
{
    const auto notes = noteFiles();
    const int64_t choice = below(10);
    if (choice < 3 || notes.empty())
        return m_files[static_cast<size_t>(below(static_cast<int64_t>(m_files.size())))];
    if (choice < 6)
        return notes[static_cast<size_t>(below(static_cast<int64_t>(notes.size())))];
    return std::ranges::max(notes, {}, [](const Path& note) {
        std::error_code error;
        return fs::last_write_time(note, error);
    });
}

int SyncTool::makeVersion()
{
    constexpr std::array<std::string_view, 8> letters = {"л", "м", "н", "о", "п", "р", "с", "т"};
    const int number = ++m_serial;
    std::string text = std::string(opening) + " " + spelled(number) + "\n";
    for (int64_t length = below(longestBody); length > 0; --length) {
        text += letters[static_cast<size_t>(below(letters.size()))];
        if (below(8) == 0)
            text += below(6) == 0 ? "\n" : " ";
    }
    text += "\nКонец " + spelled(number) + "\n";
    m_versions[number] = text;
    return number;
}

fs::path SyncTool::freshName(const std::string& stem)
{
    Path path = m_notes / (stem + ".txt");
    for (int number = 2; fs::exists(path); ++number)
        path = m_notes / (stem + " " + std::to_string(number) + ".txt");
    return path;
}

int SyncTool::versionIn(const std::string& text) const
{
    const std::string rest = withoutAscii(text);
    if (rest.empty())
        return 0;
    if (!rest.starts_with(opening) || rest.size() < opening.size() + digitCount * letterSize)
        return -1;
    const int number = numberFrom(std::string_view(rest).substr(opening.size(), digitCount * letterSize));
    const auto version = m_versions.find(number);
    return version != m_versions.end() && withoutAscii(version->second) == rest ? number : -1;
}

void SyncTool::lookAtRecovered(const Path& folder)
{
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        const bool isWhole = !entry.path().filename().native().starts_with('.');
        if (isWhole && m_recovered.insert(entry.path()).second)
            m_seen.push_back(contents(entry.path()));
    }
}

// ---- Operations

bool SyncTool::add(const Path& target, const std::string& bytes)
{
    const Path temporary = target.parent_path() / temporaryName;
    write(temporary, bytes);
    const bool isThere = move(temporary, target, RENAME_NOREPLACE);
    if (!isThere)
        fs::remove(temporary);
    if (const int version = versionIn(bytes); isThere && version > 0)
        m_written.insert(version);
    return isThere;
}

/// The two files change places, so that what is replaced can be read in any case.
bool SyncTool::replace(const Path& target, const std::string& bytes, bool keepTime)
{
    const Path temporary = target.parent_path() / temporaryName;
    write(temporary, bytes);
    std::error_code error;
    if (const auto time = fs::last_write_time(target, error); keepTime && !error)
        fs::last_write_time(temporary, time);
    const bool isThere = move(temporary, target, RENAME_EXCHANGE);
    if (isThere)
        m_seen.push_back(contents(temporary));
    fs::remove(temporary);
    if (const int version = versionIn(bytes); isThere && version > 0)
        m_written.insert(version);
    return isThere;
}

void SyncTool::renameOver()
{
    const bool keepTime = below(4) == 0;
    if (replace(pickFile(), m_versions[makeVersion()], keepTime))
        count(keepTime ? "renamed over, time kept" : "renamed over");
}

void SyncTool::writeInPlace()
{
    const Path target = pickFile();
    const Descriptor file(::open(target.c_str(), O_RDWR | O_CLOEXEC));
    struct stat before{};
    if (!file.isOpen() || fstat(file.number(), &before) != 0)
        return;
    std::string old(static_cast<size_t>(before.st_size), '\0');
    if (pread(file.number(), old.data(), old.size(), 0) != before.st_size)
        return;
    m_seen.push_back(old);
    const int version = makeVersion();
    if (ftruncate(file.number(), 0) != 0 || !writeWhole(file.number(), m_versions[version]))
        return;
    // A program that saves by renaming may have taken the name away while this was written into the old file:
    // then nobody can know of it.
    struct stat after{};
    if (stat(target.c_str(), &after) == 0 && after.st_ino == before.st_ino)
        m_written.insert(version);
    count("written in place");
}

void SyncTool::rewriteSameBytes()
{
    const Path target = pickFile();
    std::error_code error;
    if (fs::is_regular_file(target, error) && replace(target, contents(target), false))
        count("same bytes again");
}

void SyncTool::takeAway()
{
    const Path target = pickFile();
    const Path hidden = m_away / std::to_string(m_operations["taken away"]);
    if (!move(target, hidden, 0))
        return;
    count("taken away");
    const bool forGood = below(3) == 0 && std::ranges::find(m_files, target) == m_files.end();
    if (forGood)
        m_seen.push_back(contents(hidden));
    else
        m_taken.push_back({hidden, target, static_cast<int>(1 + below(12))});
}

void SyncTool::bringBack(size_t index)
{
    const Away away = m_taken[index];
    m_taken.erase(m_taken.begin() + static_cast<ptrdiff_t>(index));
    m_seen.push_back(contents(away.file));
    if (move(away.file, away.original, RENAME_NOREPLACE)
        || move(away.file, freshName("Возврат"), RENAME_NOREPLACE))
        count("brought back");
}

void SyncTool::giveOtherName()
{
    const auto notes = noteFiles();
    if (notes.empty())
        return;
    const Path from = pickFile();
    if (from.parent_path() == m_notes
        && move(from, freshName("Имя " + std::to_string(below(1000))), RENAME_NOREPLACE))
        count("given another name");
}

void SyncTool::addOne()
{
    if (add(freshName("Новая " + std::to_string(below(1000))), m_versions[makeVersion()]))
        count("added");
}

void SyncTool::addMany()
{
    for (int64_t i = 0; i < massSize; ++i) {
        const Path file = m_notes / (std::string(massPrefix) + std::to_string(i) + ".txt");
        const int version = makeVersion();
        if (add(file, m_versions[version]))
            m_mass[file] = version;
    }
    count("hundreds added");
}

void SyncTool::changeMany()
{
    for (auto& [file, version] : m_mass) {
        const int next = makeVersion();
        if (replace(file, m_versions[next], false))
            version = next;
    }
    count("hundreds changed");
}

void SyncTool::removeMany()
{
    for (const auto& [file, version] : std::exchange(m_mass, {})) {
        const std::string found = contents(file);
        m_seen.push_back(found);
        if (found != m_versions[version])
            m_disturbed.push_back(file);
        fs::remove(file);
    }
    count("hundreds removed");
}

} // namespace quillmark::test
