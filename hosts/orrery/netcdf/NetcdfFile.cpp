#include "hosts/orrery/netcdf/NetcdfFile.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/netcdf/NetcdfExport.h"

#include <QString>
#include <hdf5_hl.h>

#include <algorithm>
#include <cerrno>
#include <complex>
#include <cstdio>
#include <cstring>

namespace Orrery::Host {

using namespace Brindle::Quay;

namespace {

constexpr std::size_t s_longestName = 200; // netCDF has room for 256 bytes

struct TypeRow
{
    WellKnownType type;
    hid_t memory;
};

[[noreturn]] void failWriting(const std::string& what)
{
    const int reason = errno;
    throw NotWritten(what + " can't be written" +
                     (reason != 0 ? std::string(": ") + std::strerror(reason) : std::string()));
}

Hdf5Object required(hid_t id, Hdf5Object::Close close, const std::string& what)
{
    if (id < 0)
        failWriting(what);
    return {id, close};
}

void require(herr_t status, const std::string& what)
{
    if (status < 0)
        failWriting(what);
}

// The HDF5 type of an element, or of a part of a complex one; invalid for what netCDF has no type for.
hid_t partType(WellKnownType type)
{
    const WellKnownType part(static_cast<std::uint16_t>(type.code() & ~WellKnownType::ComplexBit));
    const TypeRow rows[] = {
        {WellKnownType::of<double>(), H5T_NATIVE_DOUBLE},
        {WellKnownType::of<float>(), H5T_NATIVE_FLOAT},
        {WellKnownType::of<std::int8_t>(), H5T_NATIVE_INT8},
        {WellKnownType::of<std::int16_t>(), H5T_NATIVE_INT16},
        {WellKnownType::of<std::int32_t>(), H5T_NATIVE_INT32},
        {WellKnownType::of<std::int64_t>(), H5T_NATIVE_INT64},
        {WellKnownType::of<bool>(), H5T_NATIVE_INT8},
        {WellKnownType::of<std::uint8_t>(), H5T_NATIVE_UINT8},
        {WellKnownType::of<std::uint16_t>(), H5T_NATIVE_UINT16},
        {WellKnownType::of<std::uint32_t>(), H5T_NATIVE_UINT32},
        {WellKnownType::of<std::uint64_t>(), H5T_NATIVE_UINT64},
    };
    for (const TypeRow& row : rows) {
        if (row.type == part)
            return row.memory;
    }
    return H5I_INVALID_HID;
}

Hdf5Object textType(std::size_t size)
{
    Hdf5Object type(H5Tcopy(H5T_C_S1), H5Tclose);
    H5Tset_size(type.id(), size);
    H5Tset_cset(type.id(), H5T_CSET_UTF8);
    return type;
}

Hdf5Object memoryTypeOf(WellKnownType type)
{
    if (type == WellKnownType::of<std::string>())
        return textType(H5T_VARIABLE);
    const hid_t known = partType(type);
    if (known < 0)
        throw Failure("values of the type " + Host::elementTypeName(type) + " have no type in netCDF");
    return {H5Tcopy(known), H5Tclose};
}

// Cut between characters.
std::string shortened(const std::string& name)
{
    QString text = QString::fromStdString(name);
    while (static_cast<std::size_t>(text.toUtf8().size()) > s_longestName)
        text.chop(1);
    return text.toStdString();
}

// What netCDF takes for a name.
std::string allowedName(const std::string& wanted)
{
    std::string name;
    for (const char c : shortened(wanted)) {
        const auto byte = static_cast<unsigned char>(c);
        name += byte < 0x20 || byte == 0x7F || c == '/' ? '_' : c;
    }
    while (!name.empty() && name.back() == ' ')
        name.pop_back();
    const auto first = static_cast<unsigned char>(name.empty() ? ' ' : name.front());
    const bool isLetter = (first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z');
    const bool isAllowed = isLetter || (first >= '0' && first <= '9') || first == '_' || first >= 0x80;
    return isAllowed ? name : '_' + name;
}

std::uint64_t lanesOf(const std::vector<hsize_t>& shape)
{
    std::uint64_t lanes = 1;
    for (std::size_t i = 1; i < shape.size(); ++i)
        lanes *= shape[i];
    return lanes;
}

// One part of each complex number, the parts of which lie beside each other.
std::vector<char> partsOf(const BVariant& data, NumberPart part)
{
    const std::size_t width = elementSize(data.getWellKnownType()) / 2;
    const auto* from =
        static_cast<const char*>(data.constData()) + (part == NumberPart::Imaginary ? width : 0);
    std::vector<char> parts(static_cast<std::size_t>(data.elementCount()) * width);
    for (char* to = parts.data(); to != parts.data() + parts.size(); to += width, from += 2 * width)
        std::memcpy(to, from, width);
    return parts;
}

std::vector<const char*> textsOf(const BVariant& data)
{
    const auto* const texts = static_cast<const std::string*>(data.constData());
    std::vector<const char*> pointers;
    for (std::uint64_t i = 0; i < data.elementCount(); ++i)
        pointers.push_back(texts[i].c_str());
    return pointers;
}

} // namespace

void NetcdfFile::keepExitSafe()
{
    static_cast<void>(H5dont_atexit());
}

NetcdfFile::NetcdfFile(const std::string& path)
{
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    errno = 0;
    const Hdf5Object access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
    H5Pset_fclose_degree(access.id(), H5F_CLOSE_STRONG);
    const Hdf5Object creation(H5Pcreate(H5P_FILE_CREATE), H5Pclose);
    constexpr unsigned inOrder = H5P_CRT_ORDER_TRACKED | H5P_CRT_ORDER_INDEXED;
    H5Pset_link_creation_order(creation.id(), inOrder); // readers of netCDF list variables in this order
    H5Pset_attr_creation_order(creation.id(), inOrder);
    m_file =
        required(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, creation.id(), access.id()), H5Fclose, "the file");
}

void NetcdfFile::close()
{
    errno = 0;
    m_scales.clear();
    if (H5Fflush(m_file.id(), H5F_SCOPE_LOCAL) < 0 || !m_file.close())
        failWriting("the file");
}

std::string NetcdfFile::uniqueName(const std::string& wanted)
{
    const std::string name = allowedName(wanted);
    std::string unique = name;
    for (int number = 2; std::find(m_names.begin(), m_names.end(), unique) != m_names.end(); ++number)
        unique = name + '_' + std::to_string(number);
    m_names.push_back(unique);
    return unique;
}

void NetcdfFile::setText(hid_t object, const char* name, const std::string& text)
{
    const Hdf5Object type = textType(std::max<std::size_t>(text.size(), 1));
    const Hdf5Object space(H5Screate(H5S_SCALAR), H5Sclose);
    const Hdf5Object attribute = required(
        H5Acreate2(object, name, type.id(), space.id(), H5P_DEFAULT, H5P_DEFAULT), H5Aclose, "an attribute");
    require(H5Awrite(attribute.id(), type.id(), text.c_str()), "an attribute");
}

void NetcdfFile::setAttribute(const NetcdfVariable& variable, const char* name, const std::string& text)
{
    setText(variable.dataset.id(), name, text);
}

void NetcdfFile::setFileAttribute(const char* name, const std::string& text)
{
    setText(m_file.id(), name, text);
}

std::string NetcdfFile::nameOf(const NetcdfVariable& variable) const
{
    char name[2 * s_longestName] = {};
    H5Iget_name(variable.dataset.id(), name, sizeof name);
    return name + 1; // behind the "/" of the root
}

NetcdfVariable NetcdfFile::makeDataset(const std::string& name, std::vector<hsize_t> shape,
                                       WellKnownType type, NumberPart part)
{
    errno = 0;
    NetcdfVariable variable;
    variable.memoryType = memoryTypeOf(type);
    variable.shape = std::move(shape);
    const Hdf5Object space(
        H5Screate_simple(static_cast<int>(variable.shape.size()), variable.shape.data(), nullptr), H5Sclose);
    const Hdf5Object creation(H5Pcreate(H5P_DATASET_CREATE), H5Pclose);
    H5Pset_attr_creation_order(creation.id(), H5P_CRT_ORDER_TRACKED | H5P_CRT_ORDER_INDEXED);
    variable.dataset = required(H5Dcreate2(m_file.id(), name.c_str(), variable.memoryType.id(), space.id(),
                                           H5P_DEFAULT, creation.id(), H5P_DEFAULT),
                                H5Dclose, inQuotes(name));
    if (type == WellKnownType::of<bool>() && part == NumberPart::Whole)
        setText(variable.dataset.id(), "dtype", "bool"); // there is no such type; some readers know this word
    return variable;
}

void NetcdfFile::makeScale(hid_t dataset, const std::string& label, NetcdfDimension* dimension)
{
    dimension->number = static_cast<int>(m_scales.size());
    require(H5DSset_scale(dataset, label.c_str()), "a dimension");
    const Hdf5Object space(H5Screate(H5S_SCALAR), H5Sclose);
    const Hdf5Object number =
        required(H5Acreate2(dataset, "_Netcdf4Dimid", H5T_NATIVE_INT, space.id(), H5P_DEFAULT, H5P_DEFAULT),
                 H5Aclose, "a dimension");
    require(H5Awrite(number.id(), H5T_NATIVE_INT, &dimension->number), "a dimension");
    H5Iinc_ref(dataset);
    m_scales.emplace_back(dimension->number, Hdf5Object(dataset, H5Dclose));
}

// A dataset without values: a dimension that has only a length.
NetcdfDimension NetcdfFile::addDimension(const std::string& name, std::uint64_t length)
{
    NetcdfDimension dimension = {uniqueName(name), length, 0};
    const hsize_t size = length;
    const Hdf5Object space(H5Screate_simple(1, &size, nullptr), H5Sclose);
    const Hdf5Object creation(H5Pcreate(H5P_DATASET_CREATE), H5Pclose);
    H5Pset_attr_creation_order(creation.id(), H5P_CRT_ORDER_TRACKED | H5P_CRT_ORDER_INDEXED);
    errno = 0;
    const Hdf5Object dataset = required(H5Dcreate2(m_file.id(), dimension.name.c_str(), H5T_IEEE_F32BE,
                                                   space.id(), H5P_DEFAULT, creation.id(), H5P_DEFAULT),
                                        H5Dclose, "a dimension");
    char label[100]; // by these words readers tell it from a variable
    std::snprintf(label, sizeof label, "This is a netCDF dimension but not a netCDF variable.%10llu",
                  static_cast<unsigned long long>(length));
    makeScale(dataset.id(), label, &dimension);
    return dimension;
}

NetcdfDimension NetcdfFile::addCoordinate(const std::string& name, std::uint64_t length, WellKnownType type,
                                          NetcdfVariable* variable)
{
    NetcdfDimension dimension = {uniqueName(name), length, 0};
    *variable = makeDataset(dimension.name, {length}, type, NumberPart::Whole);
    makeScale(variable->dataset.id(), dimension.name, &dimension);
    return dimension;
}

NetcdfVariable NetcdfFile::addVariable(const std::string& name,
                                       const std::vector<NetcdfDimension>& dimensions, WellKnownType type,
                                       NumberPart part)
{
    std::vector<hsize_t> shape;
    shape.reserve(dimensions.size());
    for (const NetcdfDimension& dimension : dimensions)
        shape.push_back(dimension.length);
    NetcdfVariable variable = makeDataset(uniqueName(name), std::move(shape), type, part);
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
        const auto number = static_cast<std::size_t>(dimensions[i].number);
        require(
            H5DSattach_scale(variable.dataset.id(), m_scales[number].second.id(), static_cast<unsigned>(i)),
            "a dimension");
    }
    return variable;
}

void NetcdfFile::write(const NetcdfVariable& variable, const BVariant& data, NumberPart part,
                       std::uint64_t begin)
{
    const BVariant rows =
        data.getDataOrdering() == DataOrdering::RowMajor ? data : data.reordered(DataOrdering::RowMajor);
    std::vector<hsize_t> start(variable.shape.size(), 0);
    std::vector<hsize_t> count = variable.shape;
    start[0] = begin;
    count[0] = rows.elementCount() / std::max<std::uint64_t>(lanesOf(variable.shape), 1);
    const hsize_t elements = rows.elementCount();
    const Hdf5Object fileSpace(H5Dget_space(variable.dataset.id()), H5Sclose);
    const Hdf5Object memorySpace(H5Screate_simple(1, &elements, nullptr), H5Sclose);
    errno = 0;
    require(H5Sselect_hyperslab(fileSpace.id(), H5S_SELECT_SET, start.data(), nullptr, count.data(), nullptr),
            "the values");
    std::vector<char> parts;
    std::vector<const char*> texts;
    const void* from = nullptr;
    if (rows.getWellKnownType() == WellKnownType::of<std::string>()) {
        texts = textsOf(rows);
        from = texts.data();
    } else if (part != NumberPart::Whole) {
        parts = partsOf(rows, part);
        from = parts.data();
    } else {
        from = rows.constData();
    }
    require(H5Dwrite(variable.dataset.id(), variable.memoryType.id(), memorySpace.id(), fileSpace.id(),
                     H5P_DEFAULT, from),
            "the values");
}

} // namespace Orrery::Host
