#include "foundations/property/TextCodec_p.h"

#include <QStringView>

#include <cstddef>

namespace Orrery::Internal {

namespace {

bool isLoneSurrogate(const QString& text, int i)
{
    const QChar unit = text.at(i);
    if (unit.isHighSurrogate())
        return i + 1 == text.size() || !text.at(i + 1).isLowSurrogate();
    return unit.isLowSurrogate() && (i == 0 || !text.at(i - 1).isHighSurrogate());
}

void appendUtf8(const QString& text, int start, int end, std::string* bytes)
{
    const QByteArray part = QStringView(text).mid(start, end - start).toUtf8();
    bytes->append(part.constData(), static_cast<std::size_t>(part.size()));
}

void appendUnit(ushort unit, std::string* bytes)
{
    bytes->push_back(static_cast<char>(0xE0 | (unit >> 12)));
    bytes->push_back(static_cast<char>(0x80 | ((unit >> 6) & 0x3F)));
    bytes->push_back(static_cast<char>(0x80 | (unit & 0x3F)));
}

// The UTF-16 unit in three bytes, 0 when there is none; only such as Qt's decoder wouldn't give back are asked
// for: surrogates, and U+FEFF, which it takes for a byte order mark at the start.
ushort specialUnitAt(const std::string& bytes, std::size_t i)
{
    if (bytes.size() - i < 3)
        return 0;
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(bytes[i + k]); };
    const bool surrogate = byte(0) == 0xED && byte(1) >= 0xA0 && byte(1) <= 0xBF && (byte(2) & 0xC0) == 0x80;
    const bool mark = byte(0) == 0xEF && byte(1) == 0xBB && byte(2) == 0xBF;
    if (!surrogate && !mark)
        return 0;
    return static_cast<ushort>(((byte(0) & 0x0F) << 12) | ((byte(1) & 0x3F) << 6) | (byte(2) & 0x3F));
}

void appendText(const std::string& bytes, std::size_t start, std::size_t end, QString* text)
{
    if (end > start)
        text->append(QString::fromUtf8(bytes.data() + start, static_cast<int>(end - start)));
}

} // namespace

std::string toTextBytes(const QString& text)
{
    std::string bytes;
    int done = 0;
    for (int i = 0; i < text.size(); ++i) {
        if (!isLoneSurrogate(text, i))
            continue;
        appendUtf8(text, done, i, &bytes);
        appendUnit(text.at(i).unicode(), &bytes);
        done = i + 1;
    }
    appendUtf8(text, done, text.size(), &bytes);
    return bytes;
}

QString fromTextBytes(const std::string& bytes)
{
    QString text;
    std::size_t done = 0;
    std::size_t i = 0;
    while (i < bytes.size()) {
        const ushort unit = specialUnitAt(bytes, i);
        if (unit == 0) {
            ++i;
            continue;
        }
        appendText(bytes, done, i, &text);
        text.append(QChar(unit));
        i += 3;
        done = i;
    }
    appendText(bytes, done, bytes.size(), &text);
    return text;
}

} // namespace Orrery::Internal
