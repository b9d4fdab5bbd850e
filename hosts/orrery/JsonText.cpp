#include "hosts/orrery/JsonText.h"

#include "hosts/orrery/Numbers.h"

#include <QByteArray>

#include <algorithm>
#include <cstdio>

namespace Orrery::Host {

namespace {

constexpr std::string_view s_replacement = "\xEF\xBF\xBD"; // U+FFFD

unsigned byteAt(std::string_view text, std::size_t at)
{
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

// Length of the UTF-8 sequence at the beginning; 0 if there is none. Longer forms of shorter sequences, surrogates and
// what lies above U+10FFFF are no UTF-8.
std::size_t sequenceLength(std::string_view text)
{
    const unsigned first = byteAt(text, 0);
    const auto isBetween = [&](std::size_t at, unsigned low, unsigned high) {
        return byteAt(text, at) >= low && byteAt(text, at) <= high;
    };
    if (first < 0x80)
        return text.empty() ? 0 : 1;
    if (first >= 0xC2 && first <= 0xDF)
        return isBetween(1, 0x80, 0xBF) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        const bool isSecond = isBetween(1, first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF);
        return isSecond && isBetween(2, 0x80, 0xBF) ? 3 : 0;
    }
    if (first < 0xF0 || first > 0xF4)
        return 0;
    const bool isSecond = isBetween(1, first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF);
    return isSecond && isBetween(2, 0x80, 0xBF) && isBetween(3, 0x80, 0xBF) ? 4 : 0;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

void appendUnicodeEscape(std::string* out, unsigned code)
{
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", code);
    *out += escape;
}

void appendAscii(std::string* out, char c)
{
    switch (c) {
    case '"':
        *out += "\\\"";
        return;
    case '\\':
        *out += "\\\\";
        return;
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
        break;
    }
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
        appendUnicodeEscape(out, static_cast<unsigned char>(c));
    else
        *out += c;
}

} // namespace

void appendJsonString(std::string* out, std::string_view text)
{
    *out += '"';
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0)
            *out += s_replacement;
        else if (length == 1)
            appendAscii(out, text.front());
        else if (length == 2 && byteAt(text, 0) == 0xC2 && byteAt(text, 1) < 0xA0)
            appendUnicodeEscape(out, byteAt(text, 1));
        else
            *out += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    *out += '"';
}

void appendJsonString(std::string* out, const QString& text)
{
    QString whole = text;
    for (int i = 0; i < whole.size(); ++i) {
        const bool isPair =
            whole.at(i).isHighSurrogate() && i + 1 < whole.size() && whole.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (whole.at(i).isSurrogate())
            whole[i] = QChar::ReplacementCharacter;
    }
    appendJsonString(out, std::string_view(whole.toStdString()));
}

void appendJsonBytes(std::string* out, std::string_view bytes)
{
    if (isUtf8(bytes)) {
        appendJsonString(out, bytes);
        return;
    }
    const QByteArray coded = QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size())).toBase64();
    *out += "{\"base64\": \"";
    out->append(coded.constData(), static_cast<std::size_t>(coded.size()));
    *out += "\"}";
}

void appendJsonNumber(std::string* out, std::string_view number)
{
    if (number.find('n') == std::string_view::npos) { // neither "nan" nor "inf"
        *out += number == "-0" ? "-0.0" : number;
        return;
    }
    if (number.find("nan") != std::string_view::npos)
        *out += "\"NaN\"";
    else
        *out += number.front() == '-' ? "\"-Infinity\"" : "\"Infinity\"";
}

void appendJsonNumber(std::string* out, double number)
{
    appendJsonNumber(out, std::string_view(shortestText(number)));
}

} // namespace Orrery::Host
