#include "desktop/Fonts.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>

#include <cmath>
#include <fontconfig/fontconfig.h>

namespace quillmark {

namespace {

QString toQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QFont monospacedFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setWeight(QFont::Normal);
    font.setItalic(false);
    return font;
}

QString findEmojiFamily()
{
    FcPattern* wanted = FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, "emoji", FC_COLOR, FcTypeBool,
        FcTrue, static_cast<const char*>(nullptr));
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result = FcResultNoMatch;
    FcPattern* font = FcFontMatch(nullptr, wanted, &result);
    FcBool isColored = FcFalse;
    FcChar8* family = nullptr;
    QString found;
    if (font && FcPatternGetBool(font, FC_COLOR, 0, &isColored) == FcResultMatch && isColored
        && FcPatternGetString(font, FC_FAMILY, 0, &family) == FcResultMatch)
        found = QString::fromUtf8(reinterpret_cast<const char*>(family));
    if (font)
        FcPatternDestroy(font);
    FcPatternDestroy(wanted);
    return found;
}

} // namespace

const QString& emojiFamily()
{
    static const QString family = findEmojiFamily();
    return family;
}

bool isFontInstalled(std::string_view name)
{
    return QFontDatabase::hasFamily(toQString(name));
}

QFont editorFont(std::string_view name, double size)
{
    const bool named = !name.empty() && isFontInstalled(name);
    QFont font = named ? QFont(toQString(name)) : monospacedFont();
    font.setStyleHint(QFont::Monospace); // for the characters that the font lacks
    return withPixelSize(std::move(font), size);
}

void readFontList(Scheduler& scheduler)
{
    // Whoever initialises second waits for the first; Qt does so before its first text.
    scheduler.runInBackground(Priority::userInitiated, [] { FcInit(); });
}

QFont withPixelSize(QFont font, double size)
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (size == std::round(size) || !screen)
        font.setPixelSize(std::max(1, static_cast<int>(std::round(size))));
    else // only points may have fractions; Qt turns them into pixels by this very dpi
        font.setPointSizeF(size * 72 / screen->logicalDotsPerInchY());
    return font;
}

} // namespace quillmark
