#include "io/TextFileReader.h"

#include "io/Utf8.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <span>

namespace quillmark {
namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16LittleMark = "\xFF\xFE";
constexpr std::string_view utf16BigMark = "\xFE\xFF";

/// Bytes are taken in pieces of this size, which stay in the cache while they are folded, converted and
/// stored.
constexpr size_t pieceSize = 1024;

constexpr char16_t unassigned = 0xFFFF;

/// Windows-1251, from 0x80 on.
constexpr std::array<char16_t, 128> cp1251 = {
    0x0402,
    0x0403,
    0x201A,
    0x0453,
    0x201E,
    0x2026,
    0x2020,
    0x2021,
    0x20AC,
    0x2030,
    0x0409,
    0x2039,
    0x040A,
    0x040C,
    0x040B,
    0x040F,
    0x0452,
    0x2018,
    0x2019,
    0x201C,
    0x201D,
    0x2022,
    0x2013,
    0x2014,
    0xFFFF,
    0x2122,
    0x0459,
    0x203A,
    0x045A,
    0x045C,
    0x045B,
    0x045F,
    0x00A0,
    0x040E,
    0x045E,
    0x0408,
    0x00A4,
    0x0490,
    0x00A6,
    0x00A7,
    0x0401,
    0x00A9,
    0x0404,
    0x00AB,
    0x00AC,
    0x00AD,
    0x00AE,
    0x0407,
    0x00B0,
    0x00B1,
    0x0406,
    0x0456,
    0x0491,
    0x00B5,
    0x00B6,
    0x00B7,
    0x0451,
    0x2116,
    0x0454,
    0x00BB,
    0x0458,
    0x0405,
    0x0455,
    0x0457,
    0x0410,
    0x0411,
    0x0412,
    0x0413,
    0x0414,
    0x0415,
    0x0416,
    0x0417,
    0x0418,
    0x0419,
    0x041A,
    0x041B,
    0x041C,
    0x041D,
    0x041E,
    0x041F,
    0x0420,
    0x0421,
    0x0422,
    0x0423,
    0x0424,
    0x0425,
    0x0426,
    0x0427,
    0x0428,
    0x0429,
    0x042A,
    0x042B,
    0x042C,
    0x042D,
    0x042E,
    0x042F,
    0x0430,
    0x0431,
    0x0432,
    0x0433,
    0x0434,
    0x0435,
    0x0436,
    0x0437,
    0x0438,
    0x0439,
    0x043A,
    0x043B,
    0x043C,
    0x043D,
    0x043E,
    0x043F,
    0x0440,
    0x0441,
    0x0442,
    0x0443,
    0x0444,
    0x0445,
    0x0446,
    0x0447,
    0x0448,
    0x0449,
    0x044A,
    0x044B,
    0x044C,
    0x044D,
    0x044E,
    0x044F,
};

/// Windows-1252, 0x80 to 0x9F; the rest is Latin-1.
constexpr std::array<char16_t, 32> cp1252 = {
    0x20AC,
    0xFFFF,
    0x201A,
    0x0192,
    0x201E,
    0x2026,
    0x2020,
    0x2021,
    0x02C6,
    0x2030,
    0x0160,
    0x2039,
    0x0152,
    0xFFFF,
    0x017D,
    0xFFFF,
    0xFFFF,
    0x2018,
    0x2019,
    0x201C,
    0x201D,
    0x2022,
    0x2013,
    0x2014,
    0x02DC,
    0x2122,
    0x0161,
    0x203A,
    0x0153,
    0xFFFF,
    0x017E,
    0x0178,
};

struct Decoded {
    Rope text;
    bool hasCrLf = false;
};

/// The bytes in order, in pieces that split no UTF-8 sequence, with each line break as one line feed.
class Pieces {
public:
    explicit Pieces(std::string_view bytes)
        : m_rest(bytes)
    {
    }

    /// Empty at the end; valid until the next call.
    std::string_view next()
    {
        const std::string_view piece = m_rest.substr(0, cut());
        m_rest.remove_prefix(piece.size());
        return piece.find('\r') == std::string_view::npos ? piece : folded(piece);
    }

    bool hasCrLf() const { return m_hasCrLf; }

private:
    size_t cut() const
    {
        if (m_rest.size() <= pieceSize)
            return m_rest.size();
        size_t end = pieceSize;
        for (int steps = 0; steps < 3 && isContinuation(m_rest[end]); ++steps)
            --end;
        if (isContinuation(m_rest[end]))
            end = pieceSize; // a fourth one in a row belongs to no sequence
        return m_rest[end - 1] == '\r' && m_rest[end] == '\n' ? end + 1 : end;
    }

    static bool isContinuation(char byte) { return (byte & 0xC0) == 0x80; }

    std::string_view folded(std::string_view piece)
    {
        char* target = m_buffer.data();
        while (!piece.empty()) {
            const size_t length = std::min(piece.find('\r'), piece.size());
            std::memcpy(target, piece.data(), length);
            target += length;
            piece.remove_prefix(length);
            if (piece.empty())
                break;
            *target++ = '\n';
            const bool isPair = piece.starts_with("\r\n");
            m_hasCrLf |= isPair;
            piece.remove_prefix(isPair ? 2 : 1);
        }
        return {m_buffer.data(), static_cast<size_t>(target - m_buffer.data())};
    }

    std::string_view m_rest;
    std::array<char, pieceSize + 1> m_buffer;
    bool m_hasCrLf = false;
};

std::span<const uint8_t> latin1(std::string_view bytes)
{
    return {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()};
}

enum class IllFormed { fails, isReplaced };

std::optional<Decoded> decodeUtf8(std::string_view bytes, IllFormed policy)
{
    Rope::Builder builder;
    Pieces pieces(bytes);
    std::array<char16_t, pieceSize + 1> units;
    for (std::string_view piece = pieces.next(); !piece.empty(); piece = pieces.next()) {
        if (isAscii(piece)) {
            builder.appendLatin1(latin1(piece));
            continue;
        }
        const char* const end = piece.data() + piece.size();
        Utf8Progress done{.source = piece.data(), .target = units.data()};
        while ((done = utf8ToUtf16({done.source, end}, done.target)).source != end) {
            if (policy == IllFormed::fails)
                return std::nullopt;
            *done.target++ = u'\uFFFD';
            done.source += illFormedLength({done.source, end});
        }
        builder.append({units.data(), done.target});
    }
    return Decoded{.text = builder.finish(), .hasCrLf = pieces.hasCrLf()};
}

std::optional<Decoded> decodeUtf16(std::string_view bytes, bool isBigEndian)
{
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    Rope::Builder builder;
    std::array<char16_t, pieceSize> units;
    size_t used = 0;
    bool hasCrLf = false;
    char16_t previous = 0;
    for (size_t i = 0; i < bytes.size(); i += 2) {
        const auto high = static_cast<uint8_t>(bytes[i + !isBigEndian]);
        const auto low = static_cast<uint8_t>(bytes[i + isBigEndian]);
        const auto unit = static_cast<char16_t>(high << 8 | low);
        if (((previous & 0xFC00) == 0xD800) != ((unit & 0xFC00) == 0xDC00))
            return std::nullopt; // half of a surrogate pair
        const bool endsPair = previous == u'\r' && unit == u'\n';
        previous = unit;
        hasCrLf |= endsPair;
        if (endsPair)
            continue; // its carriage return has become a line feed already
        units[used++] = unit == u'\r' ? u'\n' : unit;
        if (used == units.size()) {
            builder.append({units.data(), used});
            used = 0;
        }
    }
    if ((previous & 0xFC00) == 0xD800)
        return std::nullopt;
    builder.append({units.data(), used});
    return Decoded{.text = builder.finish(), .hasCrLf = hasCrLf};
}

/// `table` holds the units of the bytes from 0x80 on; those behind its end are Latin-1.
std::optional<Decoded> decodeCodePage(std::string_view bytes, std::span<const char16_t> table)
{
    std::array<char16_t, 256> unitOf;
    for (size_t i = 0; i < unitOf.size(); ++i)
        unitOf[i] = i >= 0x80 && i - 0x80 < table.size() ? table[i - 0x80] : static_cast<char16_t>(i);

    Rope::Builder builder;
    Pieces pieces(bytes);
    std::array<char16_t, pieceSize + 1> units;
    for (std::string_view piece = pieces.next(); !piece.empty(); piece = pieces.next()) {
        if (isAscii(piece)) {
            builder.appendLatin1(latin1(piece));
            continue;
        }
        bool isAssigned = true;
        for (size_t i = 0; i < piece.size(); ++i) {
            units[i] = unitOf[static_cast<uint8_t>(piece[i])];
            isAssigned &= units[i] != unassigned;
        }
        if (!isAssigned)
            return std::nullopt;
        builder.append({units.data(), piece.size()});
    }
    return Decoded{.text = builder.finish(), .hasCrLf = pieces.hasCrLf()};
}

TextFileReader::Result result(Decoded decoded, std::string encodingName)
{
    const bool isLossy = encodingName == "UTF-8?";
    return {
        .text = std::move(decoded.text),
        .encodingName = std::move(encodingName),
        .lineEndings = decoded.hasCrLf ? "CRLF" : "LF",
        .lossy = isLossy,
    };
}

} // namespace

TextFileReader::Result TextFileReader::decode(std::string_view bytes)
{
    if (bytes.starts_with(utf8Mark)) {
        if (auto decoded = decodeUtf8(bytes.substr(utf8Mark.size()), IllFormed::fails))
            return result(std::move(*decoded), "UTF-8");
    }
    const bool isBigEndian = bytes.starts_with(utf16BigMark);
    if (isBigEndian || bytes.starts_with(utf16LittleMark)) {
        if (auto decoded = decodeUtf16(bytes.substr(2), isBigEndian))
            return result(std::move(*decoded), "UTF-16");
    }
    if (auto decoded = decodeUtf8(bytes, IllFormed::fails))
        return result(std::move(*decoded), "UTF-8");
    if (auto decoded = decodeCodePage(bytes, cp1251))
        return result(std::move(*decoded), "CP1251");
    if (auto decoded = decodeCodePage(bytes, cp1252))
        return result(std::move(*decoded), "CP1252");
    return result(*decodeUtf8(bytes, IllFormed::isReplaced), "UTF-8?");
}

} // namespace quillmark
