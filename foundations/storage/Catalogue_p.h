#pragma once

#include "foundations/storage/CatalogueFormat_p.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <cstdint>
#include <vector>

namespace Orrery {

/// What the catalogue keeps of one array.
struct ArrayRecord
{
    std::vector<std::uint64_t> dimensions;
    CatalogueFormat::Layout layout = CatalogueFormat::LayoutNone;
    std::uint64_t storedBytes = 0;        ///< length of the elements in the file, before any filter
    std::uint64_t poolOffset = 0;         ///< where a pooled array's elements begin in the pool
    std::vector<std::uint64_t> checksums; ///< one for each block of the stored bytes
};

/// What the catalogue keeps of one reference.
struct ReferenceRecord
{
    QString path;         ///< path of the target, as the reference tells it
    QString relativeFile; ///< path of the target's file, seen from this file's folder; empty inside one tree
    QString absoluteFile; ///< the same from the root of the file system
    QString fileUid;      ///< identity of the target's file; empty when it isn't known
    QString fileType;     ///< type of the target's file; empty inside one tree
};

/// The structure of a saved tree: a table of nodes and a heap of bytes that they point into.
///
/// The writing half appends; the reading half answers only after Check has found every row sound, and its
/// answers then need no further test.
/// Threads: after Check any number at once may ask; nothing is remembered then that Check hasn't met.
class Catalogue
{
public:
    std::vector<CatalogueFormat::Row> rows;
    QByteArray heap;

    /// Give a row its name and its type name; equal texts share their bytes.
    void SetNames(CatalogueFormat::Row* row, const QString& name, const QString& type);
    void SetText(CatalogueFormat::Row* row, const std::string& text);
    void SetArray(CatalogueFormat::Row* row, const ArrayRecord& record);
    void SetReference(CatalogueFormat::Row* row, const ReferenceRecord& record);

    /// Test everything that a file made by somebody else may have wrong, but for the arrays themselves.
    ///
    /// Errors: throws StorageError that names the row and what is wrong with it.
    void Check() const;

    QString Name(const CatalogueFormat::Row& row) const;
    QString Type(const CatalogueFormat::Row& row) const;
    std::string Text(const CatalogueFormat::Row& row) const;
    ArrayRecord Array(const CatalogueFormat::Row& row) const;
    ReferenceRecord Reference(const CatalogueFormat::Row& row) const;

    /// Path of a row's node, for messages.
    QString Path(std::size_t index) const;

    /// The bytes that all arrays together need at least in the file. Errors: throws StorageError when they don't fit 64 bits.
    std::uint64_t ArrayBytes() const;

    /// One number over all of it, seeded with the format's version and the file's uid.
    std::uint64_t Checksum(std::uint32_t version, const QByteArray& uid) const;

private:
    struct Piece
    {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
    };

    Piece Append(const QByteArray& bytes);
    Piece AppendShared(const QByteArray& bytes);
    // What a check remembers of the rows before.
    struct Walk
    {
        std::vector<std::uint16_t> depth;
        std::vector<std::uint32_t> lastChild; ///< the newest child of a folder; 0 for none
    };
    void CheckRow(std::size_t index, Walk* walk) const;
    void CheckValue(const CatalogueFormat::Row& row) const;
    QByteArray Bytes(std::uint64_t offset, std::uint64_t size) const;

    void Claim(std::uint64_t size) const;
    QByteArray ClaimedBytes(const CatalogueFormat::Row& row) const;
    QString Shared(std::uint64_t offset, std::uint64_t size) const;
    std::size_t CheckedIndex(const CatalogueFormat::Row& row) const;

    struct SharedText
    {
        std::uint64_t size = 0;
        QString text;
    };

    QHash<QByteArray, std::uint64_t> m_shared; ///< while writing: where a text stands
    /// Bytes of the heap that no row has named yet; only a check sets the limit.
    static constexpr std::uint64_t s_unlimited = UINT64_MAX;
    mutable std::uint64_t m_unclaimed = s_unlimited;
    mutable std::vector<QString> m_names;             ///< of each row that has been checked
    mutable std::vector<QString> m_types;             ///< the same
    mutable QHash<std::uint64_t, SharedText> m_texts; ///< while reading: one QString for equal names
};

} // namespace Orrery
