#include "io/TextDecoder.h"

#include "io/CodePages.h"
#include "io/Utf8.h"
#include "text/Units.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <span>

namespace quillmark {
namespace {

/// Bytes are taken in pieces of this size, which stay in the cache while they are folded, converted and
/// stored.
constexpr size_t pieceSize = TextDecoder::mostLeft;

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16LittleMark = "\xFF\xFE";
constexpr std::string_view utf16BigMark = "\xFE\xFF";
constexpr size_t longestMark = 3;

using Behind = TextDecoder::Behind;

/// The bytes of a window in order, in pieces that split no UTF-8 sequence, with each line break as one line
/// feed. Where more comes behind the window, a last piece that is not a whole one is left for the next
/// window: so the pieces of a file are the same whatever its windows are.
class Pieces {
public:
    Pieces(std::string_view window, Behind behind)
        : m_rest(window)
        , m_behind(behind)
    {
    }

    /// Empty at the end; valid until the next call.
    std::string_view next()
    {
        const std::string_view piece = m_rest.substr(0, cut());
        m_rest.remove_prefix(piece.size());
        return piece.find('\r') == std::string_view::npos ? piece : folded(piece);
    }

    size_t left() const { return m_rest.size(); } ///< in bytes
    bool hasCrLf() const { return m_hasCrLf; }

private:
    size_t cut() const
    {
        if (m_rest.size() <= pieceSize)
            return m_behind == Behind::nothing ? m_rest.size() : 0;
        size_t end = pieceSize;
        for (int steps = 0; steps < 3 && isContinuation(m_rest[end]); ++steps)
            --end;
        if (isContinuation(m_rest[end]))
            end = pieceSize; // a fourth one in a row belongs to no sequence
        assert(end > 0 && end < m_rest.size());
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
    const Behind m_behind;
    std::array<char, pieceSize + 1> m_buffer;
    bool m_hasCrLf = false;
};

std::span<const uint8_t> latin1(std::string_view bytes)
{
    return {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()};
}

} // namespace

/// A file read in one encoding.
class TextDecoder::Attempt {
public:
    virtual ~Attempt() = default;
    /// As TextDecoder::take, for this encoding alone.
    virtual std::optional<size_t> take(std::string_view window, Behind behind) = 0;

    Rope finish() { return m_builder.finish(); }
    bool hasCrLf() const { return m_hasCrLf; }

protected:
    Rope::Builder m_builder;
    bool m_hasCrLf = false;
};

/// Of an encoding whose line breaks are ASCII.
class TextDecoder::ByteAttempt : public Attempt {
public:
    std::optional<size_t> take(std::string_view window, Behind behind) final
    {
        Pieces pieces(window, behind);
        for (std::string_view piece = pieces.next(); !piece.empty(); piece = pieces.next()) {
            if (isAscii(piece))
                m_builder.appendLatin1(latin1(piece));
            else if (!append(piece))
                return std::nullopt;
        }
        m_hasCrLf |= pieces.hasCrLf();
        return window.size() - pieces.left();
    }

private:
    /// A piece that is not all ASCII; false where it is ill-formed.
    virtual bool append(std::string_view piece) = 0;
};

class TextDecoder::Utf8 final : public ByteAttempt {
public:
    enum class IllFormed { fails, isReplaced };

    explicit Utf8(IllFormed policy)
        : m_policy(policy)
    {
    }

private:
    bool append(std::string_view piece) override
    {
        std::array<char16_t, pieceSize + 1> units;
        const char* const end = piece.data() + piece.size();
        Utf8Progress done{.source = piece.data(), .target = units.data()};
        while ((done = utf8ToUtf16({done.source, end}, done.target)).source != end) {
            if (m_policy == IllFormed::fails)
                return false;
            *done.target++ = u'\uFFFD';
            done.source += illFormedLength({done.source, end});
        }
        m_builder.append({units.data(), done.target});
        return true;
    }

    const IllFormed m_policy;
};

class TextDecoder::EightBit final : public ByteAttempt {
public:
    explicit EightBit(const CodePage& page)
        : m_unitOf(page)
    {
    }

private:
    bool append(std::string_view piece) override
    {
        std::array<char16_t, pieceSize + 1> units;
        bool isAssigned = true;
        for (size_t i = 0; i < piece.size(); ++i) {
            units[i] = m_unitOf[static_cast<uint8_t>(piece[i])];
            isAssigned &= units[i] != unassigned;
        }
        m_builder.append({units.data(), piece.size()});
        return isAssigned;
    }

    const CodePage& m_unitOf;
};

class TextDecoder::Utf16 final : public Attempt {
public:
    explicit Utf16(bool isBigEndian)
        : m_isBigEndian(isBigEndian)
    {
    }

    std::optional<size_t> take(std::string_view window, Behind behind) override
    {
        const size_t size = window.size() - window.size() % 2;
        for (size_t i = 0; i < size; i += 2) {
            const auto high = static_cast<uint8_t>(window[i + !m_isBigEndian]);
            const auto low = static_cast<uint8_t>(window[i + m_isBigEndian]);
            if (!append(static_cast<char16_t>(high << 8 | low)))
                return std::nullopt;
        }
        if (behind == Behind::more)
            return size;
        const bool isWhole = size == window.size() && !isHighSurrogate(m_previous);
        flush();
        return isWhole ? std::optional(size) : std::nullopt;
    }

private:
    bool append(char16_t unit)
    {
        if (isHighSurrogate(m_previous) != isLowSurrogate(unit))
            return false; // half of a surrogate pair
        const bool endsPair = m_previous == u'\r' && unit == u'\n';
        m_previous = unit;
        m_hasCrLf |= endsPair;
        if (endsPair)
            return true; // its carriage return has become a line feed already
        m_units[m_used++] = unit == u'\r' ? u'\n' : unit;
        if (m_used == m_units.size())
            flush();
        return true;
    }

    void flush() { m_builder.append({m_units.data(), std::exchange(m_used, 0)}); }

    const bool m_isBigEndian;
    char16_t m_previous = 0;
    std::array<char16_t, pieceSize> m_units;
    size_t m_used = 0;
};

struct TextDecoder::Candidate {
    TextEncoding encoding;
    std::string_view mark; ///< bytes that the file must start with; they are no part of the text
    std::unique_ptr<Attempt> (*make)();
};

/// In the order in which they are tried; the last one never fails.
const std::array<TextDecoder::Candidate, 7> TextDecoder::candidates = {{
    {TextEncoding::utf8, utf8Mark, [] { return std::unique_ptr<Attempt>(new Utf8(Utf8::IllFormed::fails)); }},
    {TextEncoding::utf16, utf16LittleMark, [] { return std::unique_ptr<Attempt>(new Utf16(false)); }},
    {TextEncoding::utf16, utf16BigMark, [] { return std::unique_ptr<Attempt>(new Utf16(true)); }},
    {TextEncoding::utf8, "", [] { return std::unique_ptr<Attempt>(new Utf8(Utf8::IllFormed::fails)); }},
    {TextEncoding::cp1251, "", [] { return std::unique_ptr<Attempt>(new EightBit(cp1251)); }},
    {TextEncoding::cp1252, "", [] { return std::unique_ptr<Attempt>(new EightBit(cp1252)); }},
    {TextEncoding::repairedUtf8, "",
        [] { return std::unique_ptr<Attempt>(new Utf8(Utf8::IllFormed::isReplaced)); }},
}};

TextDecoder::TextDecoder() = default;
TextDecoder::~TextDecoder() = default;

std::optional<size_t> TextDecoder::take(std::string_view window, Behind behind)
{
    size_t taken = 0;
    if (!m_attempt) {
        if (window.size() < longestMark && behind == Behind::more)
            return 0;
        while (!window.starts_with(candidates[m_candidate].mark))
            ++m_candidate;
        m_attempt = candidates[m_candidate].make();
        taken = candidates[m_candidate].mark.size();
    }
    if (const auto more = m_attempt->take(window.substr(taken), behind))
        return taken + *more;
    m_attempt.reset();
    ++m_candidate;
    assert(m_candidate < candidates.size());
    return std::nullopt;
}

TextFileReader::Result TextDecoder::finish()
{
    assert(m_attempt);
    const TextEncoding encoding = candidates[m_candidate].encoding;
    return {
        .text = m_attempt->finish(),
        .encodingName = encoding,
        .lineEndings = m_attempt->hasCrLf() ? LineEnds::crlf : LineEnds::lf,
        .lossy = encoding == TextEncoding::repairedUtf8,
    };
}

} // namespace quillmark
