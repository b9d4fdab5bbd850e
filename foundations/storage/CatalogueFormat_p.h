#pragma once

#include <cstddef>
#include <cstdint>

namespace Orrery {

/// The constants and the row of a data file's catalogue, as they stand in the file.
///
/// All numbers are little-endian. Texts are offsets into the byte heap beside the table.
namespace CatalogueFormat {

constexpr char RowsName[] = "catalogue";
constexpr char HeapName[] = "catalogue-heap";
constexpr char PoolName[] = "catalogue-pool"; ///< the bytes of all pooled arrays; only in a packed file

constexpr char FormatName[] = "Orrery data file";
constexpr std::uint32_t Version = 1;

/// The length that one checksum of an array covers.
constexpr std::uint64_t ChecksumBlock = std::uint64_t(4) * 1024 * 1024;

/// The longest chunk of a compressed array, before the filters. A chunk is a run of the row-major elements: sizes of 1,
/// then one of any size, then whole dimensions.
constexpr std::uint64_t LongestChunk = std::uint64_t(64) * 1024 * 1024;

/// The most bytes that one byte of a deflated chunk can stand for.
constexpr std::uint64_t MostDeflated = 1032;

constexpr std::uint32_t NoParent = 0xFFFFFFFFU;

enum Kind : std::uint8_t
{
    KindFolder = 0,
    KindSimple = 1,
    KindReference = 2
};

/// What the two value words of a row mean.
enum Form : std::uint8_t
{
    FormNone = 0,     ///< nothing: a folder, a null value, an unset reference
    FormInline = 1,   ///< a scalar of 16 bytes or less, in place
    FormText = 2,     ///< a scalar text: offset and size of its bytes in the heap
    FormArray = 3,    ///< offset and size of an array record in the heap
    FormReference = 4 ///< offset and size of a reference record in the heap
};

/// How an array's dataset holds its elements.
enum Layout : std::uint64_t
{
    LayoutNone = 0,       ///< no dataset: an array without dimensions
    LayoutPlain = 1,      ///< one element of the dataset for each element, in row-major order
    LayoutPaddedText = 2, ///< texts of fixed length, filled up with NUL; no text ends with NUL itself
    LayoutPackedText = 3, ///< bytes: the length of each text as 64 bits, then all texts end to end
    LayoutCompressed = 4, ///< as plain, in chunks that went through shuffle and deflate
    LayoutPooled = 5      ///< as plain, as a run of the bytes of the one dataset that small arrays share
};

/// One node. Rows stand in the order of a walk that meets a folder before its children, and the children of one
/// folder in the order of their names.
struct Row
{
    std::uint32_t parent = NoParent; ///< the row of the folder; NoParent for the first row only
    std::uint32_t flags = 0;         ///< property flags
    std::uint64_t name = 0;          ///< offset of the name
    std::uint64_t type = 0;          ///< offset of the type name
    std::uint32_t nameSize = 0;
    std::uint32_t typeSize = 0;
    std::uint8_t kind = KindFolder;
    std::uint8_t form = FormNone;
    std::uint16_t element = 0;  ///< element type code of the value
    std::uint8_t ordering = 0;  ///< 0 row-major, 1 column-major
    std::uint8_t cellArray = 0; ///< the flag kept beside a value
    std::uint16_t reserved = 0; ///< 0
    std::uint64_t value[2] = {0, 0};
};

static_assert(sizeof(Row) == 56 && offsetof(Row, value) == 40, "the row is stored as it lies in memory");

} // namespace CatalogueFormat

} // namespace Orrery
