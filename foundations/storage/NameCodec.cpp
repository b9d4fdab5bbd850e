#include "foundations/storage/NameCodec_p.h"

#include "foundations/property/TextCodec_p.h"
#include "foundations/storage/CatalogueFormat_p.h"

#include <xxhash.h>

namespace Orrery {

namespace {

// Links longer than this are shortened; HDF5 itself stops at 64 KiB for a whole link message.
constexpr int s_longestLink = 1024;

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Whether bytes i to i + 2 are a surrogate's code unit (U+D800 to U+DFFF) in three-byte form.
bool IsEncodedSurrogate(const QByteArray& bytes, int i)
{
    return i + 2 < bytes.size() && static_cast<unsigned char>(bytes[i]) == 0xEDU &&
           (static_cast<unsigned char>(bytes[i + 1]) & 0xE0U) == 0xA0U && IsContinuation(bytes[i + 2]);
}

void AppendPercent(QByteArray* out, char byte)
{
    static const char* const digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    out->append('%');
    out->append(digits[value >> 4U]);
    out->append(digits[value & 0xFU]);
}

// Shortens an encoded name at a character's border and makes up for the rest with a hash.
QByteArray Shorten(const QByteArray& encoded)
{
    int keep = s_longestLink - 64;
    while (keep > 0 && IsContinuation(encoded[keep]))
        --keep;
    const XXH128_hash_t hash = XXH3_128bits(encoded.constData(), static_cast<size_t>(encoded.size()));
    return encoded.left(keep) + "%#" +
           QByteArray::number(static_cast<qulonglong>(hash.high64), 16).rightJustified(16, '0') +
           QByteArray::number(static_cast<qulonglong>(hash.low64), 16).rightJustified(16, '0');
}

} // namespace

QByteArray EncodeText(const QString& text)
{
    return QByteArray::fromStdString(Internal::toTextBytes(text));
}

bool DecodeText(const QByteArray& bytes, QString* text)
{
    const QString decoded = Internal::fromTextBytes(bytes.toStdString());
    // Whatever isn't the one encoding of a text (overlong forms, stray bytes, pairs in two halves) is told by
    // not coming back.
    if (EncodeText(decoded) != bytes)
        return false;
    *text = decoded;
    return true;
}

QByteArray LinkName(const QString& name, bool besideCatalogue)
{
    const QByteArray bytes = EncodeText(name);
    if (bytes.isEmpty())
        return QByteArrayLiteral("%");

    QByteArray link;
    link.reserve(bytes.size());
    const bool taken =
        besideCatalogue && (bytes == CatalogueFormat::RowsName || bytes == CatalogueFormat::HeapName ||
                            bytes == CatalogueFormat::PoolName);
    for (int i = 0; i < bytes.size(); ++i) {
        const char byte = bytes[i];
        if (IsEncodedSurrogate(bytes, i)) {
            for (const int end = i + 3; i < end; ++i)
                AppendPercent(&link, bytes[i]);
            --i;
        } else if (byte == '%' || byte == '/' || byte == '\0' || (i == 0 && (byte == '.' || taken))) {
            AppendPercent(&link, byte);
        } else {
            link.append(byte);
        }
    }
    return link.size() > s_longestLink ? Shorten(link) : link;
}

} // namespace Orrery
