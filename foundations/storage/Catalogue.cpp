#include "foundations/storage/Catalogue_p.h"

#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyPath.h"
#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/NameCodec_p.h"
#include "foundations/storage/StorageError_p.h"

#include <QStringList>

#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace Orrery {

using namespace CatalogueFormat;

namespace {

// The deepest folder that a tree may have; see PropertyObject.
constexpr std::uint16_t s_deepest = 1000;

// More dimensions than any array library takes; a record may not ask for more memory than the heap has.
constexpr std::uint64_t s_mostDimensions = 1024;

// A QByteArray, and so a heap, can't be longer.
constexpr std::uint64_t s_longestHeap = static_cast<std::uint64_t>(std::numeric_limits<int>::max()) - 64;

class WordWriter
{
public:
    void Word(std::uint64_t word) { m_bytes.append(reinterpret_cast<const char*>(&word), sizeof word); }
    void Text(const QString& text)
    {
        const QByteArray bytes = EncodeText(text);
        Word(static_cast<std::uint64_t>(bytes.size()));
        m_bytes.append(bytes);
    }
    const QByteArray& Bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

// Reads a record from the heap; anything past its end is an error, not a crash.
class WordReader
{
public:
    explicit WordReader(const QByteArray& bytes)
        : m_bytes(bytes)
    {
    }

    std::uint64_t Word()
    {
        std::uint64_t word = 0;
        std::memcpy(&word, Take(sizeof word), sizeof word);
        return word;
    }

    std::vector<std::uint64_t> Words(std::uint64_t count)
    {
        if (count > Left() / sizeof(std::uint64_t))
            throw StorageError(QStringLiteral("a record is too short"));
        std::vector<std::uint64_t> words(count);
        for (std::uint64_t& word : words)
            word = Word();
        return words;
    }

    QString Text()
    {
        const std::uint64_t size = Word();
        QString text;
        const char* const start = Take(size);
        if (!DecodeText(QByteArray::fromRawData(start, static_cast<int>(size)), &text))
            throw StorageError(QStringLiteral("a record's text isn't UTF-8"));
        return text;
    }

    void ExpectEnd() const
    {
        if (Left() != 0)
            throw StorageError(QStringLiteral("a record is too long"));
    }

private:
    std::uint64_t Left() const { return static_cast<std::uint64_t>(m_bytes.size()) - m_at; }

    const char* Take(std::uint64_t size)
    {
        if (size > Left())
            throw StorageError(QStringLiteral("a record is too short"));
        const char* const start = m_bytes.constData() + m_at;
        m_at += size;
        return start;
    }

    QByteArray m_bytes;
    std::uint64_t m_at = 0;
};

std::uint64_t BlockCount(std::uint64_t bytes)
{
    return bytes / ChecksumBlock + (bytes % ChecksumBlock != 0 ? 1 : 0);
}

// The number of elements of a shape; an error where it doesn't fit 64 bits.
std::uint64_t ElementCount(const std::vector<std::uint64_t>& dimensions)
{
    if (dimensions.empty() || std::find(dimensions.begin(), dimensions.end(), 0U) != dimensions.end())
        return 0;
    std::uint64_t count = 1;
    for (const std::uint64_t size : dimensions) {
        if (__builtin_mul_overflow(count, size, &count))
            throw StorageError(QStringLiteral("the dimensions are too large"));
    }
    return count;
}

void CheckArray(const ArrayRecord& array, std::uint16_t element)
{
    if (array.dimensions.size() > s_mostDimensions)
        throw StorageError(QStringLiteral("the array has too many dimensions"));
    if (array.checksums.size() != BlockCount(array.storedBytes))
        throw StorageError(QStringLiteral("the array's checksums don't fit its length"));

    const std::uint64_t count = ElementCount(array.dimensions);
    const bool text = element == ElementTypes::TextCode;
    if (array.layout == LayoutNone) {
        if (!array.dimensions.empty() || array.storedBytes != 0)
            throw StorageError(QStringLiteral("an array with dimensions has no dataset"));
        return;
    }
    if (array.dimensions.empty())
        throw StorageError(QStringLiteral("an array without dimensions has a dataset"));
    if (text != (array.layout == LayoutPaddedText || array.layout == LayoutPackedText))
        throw StorageError(QStringLiteral("the array's layout doesn't fit its element type"));

    std::uint64_t expected = 0;
    if (!text) {
        if (__builtin_mul_overflow(count, ElementTypes::Size(element), &expected) ||
            expected != array.storedBytes)
            throw StorageError(QStringLiteral("the array's length doesn't fit its dimensions"));
    } else if (array.layout == LayoutPaddedText) {
        if (count == 0 ? array.storedBytes != 0 : (array.storedBytes == 0 || array.storedBytes % count != 0))
            throw StorageError(QStringLiteral("the array's length doesn't fit its dimensions"));
    } else if (count > array.storedBytes / sizeof(std::uint64_t)) {
        throw StorageError(QStringLiteral("the array's length doesn't fit its dimensions"));
    }
}

ArrayRecord ReadArrayRecord(const QByteArray& bytes)
{
    WordReader reader(bytes);
    ArrayRecord array;
    array.dimensions = reader.Words(reader.Word());
    const std::uint64_t layout = reader.Word();
    if (layout > LayoutPooled)
        throw StorageError(QStringLiteral("the array's layout is unknown"));
    array.layout = static_cast<Layout>(layout);
    array.storedBytes = reader.Word();
    if (layout == LayoutPooled)
        array.poolOffset = reader.Word();
    array.checksums = reader.Words(reader.Word());
    reader.ExpectEnd();
    return array;
}

ReferenceRecord ReadReferenceRecord(const QByteArray& bytes)
{
    WordReader reader(bytes);
    ReferenceRecord reference;
    reference.path = reader.Text();
    reference.relativeFile = reader.Text();
    reference.absoluteFile = reader.Text();
    reference.fileUid = reader.Text();
    reference.fileType = reader.Text();
    reader.ExpectEnd();
    return reference;
}

} // namespace

Catalogue::Piece Catalogue::Append(const QByteArray& bytes)
{
    if (static_cast<std::uint64_t>(heap.size()) + static_cast<std::uint64_t>(bytes.size()) > s_longestHeap)
        throw StorageError(QStringLiteral("the names and texts of the tree take more than 2 GiB"));
    const Piece piece{static_cast<std::uint64_t>(heap.size()), static_cast<std::uint64_t>(bytes.size())};
    heap.append(bytes);
    return piece;
}

Catalogue::Piece Catalogue::AppendShared(const QByteArray& bytes)
{
    const auto found = m_shared.constFind(bytes);
    if (found != m_shared.constEnd())
        return {*found, static_cast<std::uint64_t>(bytes.size())};
    const Piece piece = Append(bytes);
    m_shared.insert(bytes, piece.offset);
    return piece;
}

void Catalogue::SetNames(Row* row, const QString& name, const QString& type)
{
    const Piece namePiece = AppendShared(EncodeText(name));
    row->name = namePiece.offset;
    row->nameSize = static_cast<std::uint32_t>(namePiece.size);
    const Piece typePiece = AppendShared(EncodeText(type));
    row->type = typePiece.offset;
    row->typeSize = static_cast<std::uint32_t>(typePiece.size);
}

void Catalogue::SetText(Row* row, const std::string& text)
{
    if (text.size() > s_longestHeap)
        throw StorageError(QStringLiteral("the text takes more than 2 GiB"));
    const Piece piece = Append(QByteArray::fromRawData(text.data(), static_cast<int>(text.size())));
    row->form = FormText;
    row->value[0] = piece.offset;
    row->value[1] = piece.size;
}

void Catalogue::SetArray(Row* row, const ArrayRecord& record)
{
    WordWriter writer;
    writer.Word(record.dimensions.size());
    for (const std::uint64_t size : record.dimensions)
        writer.Word(size);
    writer.Word(record.layout);
    writer.Word(record.storedBytes);
    if (record.layout == LayoutPooled)
        writer.Word(record.poolOffset);
    writer.Word(record.checksums.size());
    for (const std::uint64_t checksum : record.checksums)
        writer.Word(checksum);
    const Piece piece = Append(writer.Bytes());
    row->form = FormArray;
    row->value[0] = piece.offset;
    row->value[1] = piece.size;
}

void Catalogue::SetReference(Row* row, const ReferenceRecord& record)
{
    WordWriter writer;
    writer.Text(record.path);
    writer.Text(record.relativeFile);
    writer.Text(record.absoluteFile);
    writer.Text(record.fileUid);
    writer.Text(record.fileType);
    const Piece piece = Append(writer.Bytes());
    row->form = FormReference;
    row->value[0] = piece.offset;
    row->value[1] = piece.size;
}

void Catalogue::Check() const
{
    if (rows.empty())
        throw StorageError(QStringLiteral("the catalogue has no root"));
    Walk walk{std::vector<std::uint16_t>(rows.size(), 0), std::vector<std::uint32_t>(rows.size(), 0)};
    m_texts.clear();
    m_names.clear();
    m_types.clear();
    m_names.reserve(rows.size());
    m_types.reserve(rows.size());
    m_unclaimed = static_cast<std::uint64_t>(heap.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        try {
            CheckRow(i, &walk);
        } catch (const StorageError& error) {
            throw StorageError(QStringLiteral("catalogue row %1: ").arg(i) + error.Text(), error.Code());
        }
    }
    m_unclaimed = s_unlimited;
}

void Catalogue::CheckRow(std::size_t index, Walk* walk) const
{
    const Row& row = rows[index];
    m_types.push_back(Shared(row.type, row.typeSize));
    m_names.push_back(Shared(row.name, row.nameSize));
    if (row.kind > KindReference || row.ordering > 1 || row.cellArray > 1 || row.reserved != 0)
        throw StorageError(QStringLiteral("a field has a value that has no meaning"));

    if (index == 0) {
        if (row.parent != NoParent || row.kind != KindFolder)
            throw StorageError(QStringLiteral("the first row isn't a root folder"));
    } else {
        if (row.parent >= index || rows[row.parent].kind != KindFolder)
            throw StorageError(QStringLiteral("the parent isn't a folder before it"));
        // A walk that meets a folder before its children never comes back to a folder that it has left.
        std::size_t open = index - 1;
        while (open > row.parent)
            open = rows[open].parent;
        if (open != row.parent)
            throw StorageError(QStringLiteral("the rows aren't in the order of a walk"));
        walk->depth[index] = static_cast<std::uint16_t>(walk->depth[row.parent] + 1);
        if (walk->depth[index] > s_deepest)
            throw StorageError(QStringLiteral("the tree is too deep"));
        const std::uint32_t before =
            std::exchange(walk->lastChild[row.parent], static_cast<std::uint32_t>(index));
        if (before != 0 && !(m_names[before] < m_names[index]))
            throw StorageError(
                QStringLiteral("the names of a folder's children aren't distinct and in order"));
    }
    CheckValue(row);
}

void Catalogue::CheckValue(const Row& row) const
{
    const bool known = ElementTypes::IsKnown(row.element);
    switch (row.kind) {
    case KindFolder:
        if (row.form != FormNone || row.element != 0)
            throw StorageError(QStringLiteral("a folder has a value"));
        return;
    case KindReference:
        if (row.element != 0 || (row.form != FormNone && row.form != FormReference))
            throw StorageError(QStringLiteral("a reference has a value"));
        if (row.form == FormReference) {
            ReadReferenceRecord(ClaimedBytes(row));
        }
        return;
    default:
        break;
    }
    switch (row.form) {
    case FormNone:
        if (row.element != 0)
            throw StorageError(QStringLiteral("a value is missing"));
        return;
    case FormInline:
        if (!known || row.element == ElementTypes::TextCode)
            throw StorageError(QStringLiteral("the element type is unknown"));
        if (!ElementTypes::AreSound(row.element, row.value, 1))
            throw StorageError(QStringLiteral("a truth value is neither 0 nor 1"));
        return;
    case FormText:
        if (row.element != ElementTypes::TextCode)
            throw StorageError(QStringLiteral("the element type doesn't fit"));
        ClaimedBytes(row);
        return;
    case FormArray:
        if (!known)
            throw StorageError(QStringLiteral("the element type is unknown"));
        CheckArray(ReadArrayRecord(ClaimedBytes(row)), row.element);
        return;
    default:
        throw StorageError(QStringLiteral("a field has a value that has no meaning"));
    }
}

QByteArray Catalogue::Bytes(std::uint64_t offset, std::uint64_t size) const
{
    const auto length = static_cast<std::uint64_t>(heap.size());
    if (offset > length || size > length - offset)
        throw StorageError(QStringLiteral("a text or record lies outside the heap"));
    return QByteArray::fromRawData(heap.constData() + offset, static_cast<int>(size));
}

// Pieces of the heap don't overlap, so together they are no longer than it: a small file can't ask for much memory.
void Catalogue::Claim(std::uint64_t size) const
{
    if (m_unclaimed == s_unlimited)
        return;
    if (size > m_unclaimed)
        throw StorageError(QStringLiteral("texts or records of the heap overlap"));
    m_unclaimed -= size;
}

QByteArray Catalogue::ClaimedBytes(const Row& row) const
{
    QByteArray bytes = Bytes(row.value[0], row.value[1]);
    Claim(row.value[1]);
    return bytes;
}

QString Catalogue::Shared(std::uint64_t offset, std::uint64_t size) const
{
    if (size == 0)
        return QString(); // its offset is another text's too
    const auto found = m_texts.constFind(offset);
    const bool isMet = found != m_texts.constEnd();
    if (isMet && found->size == size)
        return found->text;
    SharedText shared{size, QString()};
    const QByteArray bytes = Bytes(offset, size);
    Claim(size);
    if (!DecodeText(bytes, &shared.text))
        throw StorageError(QStringLiteral("a name isn't UTF-8"));
    if (!isMet)
        m_texts.insert(offset, shared);
    return shared.text;
}

QString Catalogue::Name(const Row& row) const
{
    const std::size_t index = CheckedIndex(row);
    return index < m_names.size() ? m_names[index] : Shared(row.name, row.nameSize);
}

QString Catalogue::Type(const Row& row) const
{
    const std::size_t index = CheckedIndex(row);
    return index < m_types.size() ? m_types[index] : Shared(row.type, row.typeSize);
}

// The place of a row in the table; past it for one that stands elsewhere, or when nothing has been checked.
std::size_t Catalogue::CheckedIndex(const Row& row) const
{
    const auto first = reinterpret_cast<std::uintptr_t>(rows.data());
    const auto at = reinterpret_cast<std::uintptr_t>(&row);
    return at < first ? rows.size() : (at - first) / sizeof(Row);
}

std::string Catalogue::Text(const Row& row) const
{
    const QByteArray bytes = Bytes(row.value[0], row.value[1]);
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

ArrayRecord Catalogue::Array(const Row& row) const
{
    return ReadArrayRecord(Bytes(row.value[0], row.value[1]));
}

ReferenceRecord Catalogue::Reference(const Row& row) const
{
    return ReadReferenceRecord(Bytes(row.value[0], row.value[1]));
}

QString Catalogue::Path(std::size_t index) const
{
    QStringList names;
    for (; index != 0; index = rows[index].parent)
        names.prepend(Name(rows[index]));
    return Property::BuildPath(names);
}

std::uint64_t Catalogue::ArrayBytes() const
{
    std::uint64_t total = 0;
    for (const Row& row : rows) {
        if (row.form != FormArray)
            continue;
        const ArrayRecord array = Array(row);
        const std::uint64_t least =
            array.layout == LayoutCompressed ? array.storedBytes / MostDeflated : array.storedBytes;
        if (__builtin_add_overflow(total, least, &total))
            throw StorageError(QStringLiteral("the arrays are too long"));
    }
    return total;
}

std::uint64_t Catalogue::Checksum(std::uint32_t version, const QByteArray& uid) const
{
    XXH3_state_t* const state = XXH3_createState();
    if (!state)
        throw std::bad_alloc();
    XXH3_64bits_reset(state);
    XXH3_64bits_update(state, &version, sizeof version);
    XXH3_64bits_update(state, uid.constData(), static_cast<std::size_t>(uid.size()));
    XXH3_64bits_update(state, rows.data(), rows.size() * sizeof(Row));
    XXH3_64bits_update(state, heap.constData(), static_cast<std::size_t>(heap.size()));
    const std::uint64_t checksum = XXH3_64bits_digest(state);
    XXH3_freeState(state);
    return checksum;
}

} // namespace Orrery
