#include "foundations/storage/Hdf5Types_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/StorageError_p.h"

#include <cstddef>

namespace Orrery {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "data files are written as they lie in memory");

namespace {

Hdf5Handle Owned(hid_t id)
{
    if (id < 0)
        throw StorageError(QStringLiteral("an HDF5 datatype can't be made: ") + Hdf5Session::LastError());
    return Hdf5Handle(id, &H5Tclose);
}

void Require(herr_t code)
{
    if (code < 0)
        throw StorageError(QStringLiteral("an HDF5 datatype can't be made: ") + Hdf5Session::LastError());
}

Hdf5Handle Truth()
{
    Hdf5Handle type = Owned(H5Tenum_create(H5T_STD_I8LE));
    const signed char no = 0;
    const signed char yes = 1;
    Require(H5Tenum_insert(type.Id(), "FALSE", &no));
    Require(H5Tenum_insert(type.Id(), "TRUE", &yes));
    return type;
}

// The storage class in the low four bits, 0x4000 for unsigned.
Hdf5Handle Real(std::uint16_t code)
{
    switch (code) {
    case 0x0001:
        return Owned(H5Tcopy(H5T_IEEE_F64LE));
    case 0x0002:
        return Owned(H5Tcopy(H5T_IEEE_F32LE));
    case 0x0004:
        return Owned(H5Tcopy(H5T_STD_I8LE));
    case 0x0005:
        return Owned(H5Tcopy(H5T_STD_I16LE));
    case 0x0006:
        return Owned(H5Tcopy(H5T_STD_I32LE));
    case 0x0007:
        return Owned(H5Tcopy(H5T_STD_I64LE));
    case 0x4003:
        return Truth();
    case 0x4004:
        return Owned(H5Tcopy(H5T_STD_U8LE));
    case 0x4005:
        return Owned(H5Tcopy(H5T_STD_U16LE));
    case 0x4006:
        return Owned(H5Tcopy(H5T_STD_U32LE));
    case 0x4007:
        return Owned(H5Tcopy(H5T_STD_U64LE));
    default:
        throw StorageError(QStringLiteral("the element type is unknown"));
    }
}

Hdf5Handle Pair(const Hdf5Handle& part, const char* first, const char* second)
{
    const std::size_t size = H5Tget_size(part.Id());
    Hdf5Handle type = Owned(H5Tcreate(H5T_COMPOUND, 2 * size));
    Require(H5Tinsert(type.Id(), first, 0, part.Id()));
    Require(H5Tinsert(type.Id(), second, size, part.Id()));
    return type;
}

} // namespace

Hdf5Handle Hdf5Types::ForElement(std::uint16_t code)
{
    constexpr std::uint16_t duration = 0x0030;
    constexpr std::uint16_t timePoint = 0x0040;
    constexpr std::uint16_t complexBit = 0x8000;
    if (code == duration || code == timePoint)
        return Pair(Real(0x4007), "word0", "word1");
    if ((code & complexBit) != 0) {
        const auto part = static_cast<std::uint16_t>(code & ~complexBit);
        return Pair(Real(part), "r", "i");
    }
    return Real(code);
}

Hdf5Handle Hdf5Types::ForPaddedText(std::uint64_t bytes)
{
    Hdf5Handle type = Owned(H5Tcopy(H5T_C_S1));
    Require(H5Tset_size(type.Id(), bytes));
    Require(H5Tset_strpad(type.Id(), H5T_STR_NULLPAD));
    Require(H5Tset_cset(type.Id(), H5T_CSET_UTF8));
    return type;
}

Hdf5Handle Hdf5Types::ForRow()
{
    using CatalogueFormat::Row;
    const hsize_t two = 2;
    const Hdf5Handle words = Owned(H5Tarray_create2(H5T_STD_U64LE, 1, &two));
    Hdf5Handle type = Owned(H5Tcreate(H5T_COMPOUND, sizeof(Row)));
    Require(H5Tinsert(type.Id(), "parent", offsetof(Row, parent), H5T_STD_U32LE));
    Require(H5Tinsert(type.Id(), "flags", offsetof(Row, flags), H5T_STD_U32LE));
    Require(H5Tinsert(type.Id(), "name", offsetof(Row, name), H5T_STD_U64LE));
    Require(H5Tinsert(type.Id(), "type", offsetof(Row, type), H5T_STD_U64LE));
    Require(H5Tinsert(type.Id(), "name_size", offsetof(Row, nameSize), H5T_STD_U32LE));
    Require(H5Tinsert(type.Id(), "type_size", offsetof(Row, typeSize), H5T_STD_U32LE));
    Require(H5Tinsert(type.Id(), "kind", offsetof(Row, kind), H5T_STD_U8LE));
    Require(H5Tinsert(type.Id(), "form", offsetof(Row, form), H5T_STD_U8LE));
    Require(H5Tinsert(type.Id(), "element", offsetof(Row, element), H5T_STD_U16LE));
    Require(H5Tinsert(type.Id(), "ordering", offsetof(Row, ordering), H5T_STD_U8LE));
    Require(H5Tinsert(type.Id(), "cell_array", offsetof(Row, cellArray), H5T_STD_U8LE));
    Require(H5Tinsert(type.Id(), "reserved", offsetof(Row, reserved), H5T_STD_U16LE));
    Require(H5Tinsert(type.Id(), "value", offsetof(Row, value), words.Id()));
    return type;
}

Hdf5Handle Hdf5Types::ForBytes()
{
    return Owned(H5Tcopy(H5T_STD_U8LE));
}

} // namespace Orrery
