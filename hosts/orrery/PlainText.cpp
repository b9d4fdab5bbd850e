#include "hosts/orrery/PlainText.h"

#include <QTextCodec>

#include <algorithm>

namespace Orrery::Host {

namespace {

constexpr std::size_t s_longestQuote = 40;

void appendEscape(std::string* out, unsigned char byte)
{
    static const char digits[] = "0123456789abcdef";
    switch (byte) {
    case '\n':
        *out += "\\n";
        return;
    case '\t':
        *out += "\\t";
        return;
    case '\r':
        *out += "\\r";
        return;
    default:
        *out += "\\x";
        *out += digits[byte >> 4U];
        *out += digits[byte & 15U];
    }
}

// The control characters U+0080 to U+009F, which terminals obey as well, are the bytes C2 80 to C2 9F.
bool isLateControl(std::string_view text, std::size_t at)
{
    return text[at] == '\xC2' && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

std::string printable(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7F) {
            appendEscape(&out, byte);
        } else if (isLateControl(text, i)) {
            appendEscape(&out, static_cast<unsigned char>(text[++i]));
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string inQuotes(std::string_view text)
{
    if (text.size() <= s_longestQuote)
        return "'" + printable(decoded(text).toStdString()) + "'";
    std::size_t end = s_longestQuote;
    while (end > s_longestQuote - 4 && isContinuation(text[end]))
        --end;
    return "'" + printable(decoded(text.substr(0, end)).toStdString()) + "...'";
}

QString decoded(std::string_view bytes)
{
    static QTextCodec* const utf8 = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QString text = utf8->toUnicode(bytes.data(), static_cast<int>(bytes.size()), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    return QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
}

std::size_t columnsOf(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
}

std::string padded(std::string_view text, std::size_t width)
{
    return std::string(text) + std::string(width - std::min(width, columnsOf(text)), ' ');
}

std::string_view trimmed(std::string_view text)
{
    const char* const blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace Orrery::Host
