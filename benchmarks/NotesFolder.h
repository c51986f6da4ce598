// A notes folder for measuring: Russian and English, 2 KB a note.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace quillmark::bench {

inline std::string makeNote(std::minstd_rand& random, int number)
{
    constexpr size_t size = 2'000; // bytes
    static const std::vector<std::string> words = {"список", "покупок", "молоко", "встреча", "завтра", "в",
        "и", "на", "План", "работы", "письмо", "идея", "книга", "the", "meeting", "notes", "about", "release",
        "TODO", "and", "with", "project", "draft", "—", "«цитата»"};
    std::string text = words[random() % words.size()] + " " + std::to_string(number) + "\n";
    while (text.size() < size)
        text += words[random() % words.size()] + (random() % 9 == 0 ? "\n" : " ");
    return text;
}

inline void fillWithNotes(const std::filesystem::path& folder, int count)
{
    std::filesystem::create_directories(folder);
    std::minstd_rand random(1);
    for (int i = 0; i < count; ++i)
        std::ofstream(folder / ("note " + std::to_string(i) + ".txt")) << makeNote(random, i);
}

} // namespace quillmark::bench
