#include "app/window/ItemToolTip.h"

#include "app/look/Paint.h"
#include "core/AppState.h"

#include <QDir>
#include <QTextBoundaryFinder>

namespace quillmark {

namespace {

constexpr qsizetype longestLine = 80; ///< units

/// The last place from which on a new line may begin, at most `longestLine` behind `start`.
qsizetype breakBehind(const QString& text, qsizetype start)
{
    for (const auto kind : {QTextBoundaryFinder::Line, QTextBoundaryFinder::Grapheme}) {
        QTextBoundaryFinder finder(kind, text);
        finder.setPosition(start + longestLine);
        const qsizetype place = finder.isAtBoundary() ? finder.position() : finder.toPreviousBoundary();
        if (place > start)
            return place;
    }
    return start + longestLine;
}

QString broken(const QString& text)
{
    QString lines;
    qsizetype start = 0;
    while (text.size() - start > longestLine) {
        const qsizetype next = breakBehind(text, start);
        lines += text.mid(start, next - start) + QLatin1Char('\n');
        start = next;
    }
    return lines + text.mid(start);
}

QString shownPath(const Path& file)
{
    const QString path = singleLine(file.native());
    const QString home = QDir::homePath();
    const bool isBelowHome = path.startsWith(home + QLatin1Char('/'));
    return isBelowHome ? QLatin1Char('~') + path.mid(home.size()) : path;
}

} // namespace

QString itemToolTip(std::string_view title, const Path& file)
{
    return broken(singleLine(title)) + QLatin1Char('\n') + broken(shownPath(file));
}

QString itemToolTip(const AppState& app, const EditorTab& tab)
{
    if (const FileSource* file = tab.file())
        return itemToolTip(tab.title.get(), file->url);
    const NoteSource* source = tab.note();
    const Note* note = source ? app.store.find(source->id) : nullptr;
    return note ? itemToolTip(note->title, note->url) : broken(singleLine(tab.title.get()));
}

} // namespace quillmark
