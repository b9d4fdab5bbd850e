#include "foundations/storage/Hdf5AttributeWriter_p.h"

#include "foundations/storage/Hdf5Types_p.h"

#include <algorithm>

namespace Orrery {

namespace {

// An object's header takes pieces of less than 64 KiB.
constexpr int s_longest = 60'000;

} // namespace

Hdf5AttributeWriter::Hdf5AttributeWriter()
    : m_scalar(Owned(H5Screate(H5S_SCALAR), &H5Sclose, "HDF5 is out of order"))
{
}

void Hdf5AttributeWriter::Write(hid_t object, const QByteArray& name, const QByteArray& text)
{
    const int length = std::max(text.size(), 1);
    Write(object, name, length, text.leftJustified(length, '\0'), m_scalar.Id());
}

void Hdf5AttributeWriter::Write(hid_t object, const QByteArray& name, const QByteArrayList& texts)
{
    int length = 1;
    for (const QByteArray& text : texts)
        length = std::max(length, text.size());
    if (length > s_longest / std::max(texts.size(), 1))
        return;
    QByteArray padded;
    for (const QByteArray& text : texts)
        padded += text.leftJustified(length, '\0');
    const auto count = static_cast<hsize_t>(texts.size());
    const Hdf5Handle space =
        Owned(H5Screate_simple(1, &count, nullptr), &H5Sclose, "an attribute can't be written");
    Write(object, name, length, padded, space.Id());
}

void Hdf5AttributeWriter::Write(hid_t object, const QByteArray& name, int length, const QByteArray& padded,
                                hid_t space)
{
    if (padded.size() > s_longest)
        return;
    const hid_t type = TextType(length);
    const Hdf5Handle attribute =
        Owned(H5Acreate2(object, name.constData(), type, space, H5P_DEFAULT, H5P_DEFAULT), &H5Aclose,
              "an attribute can't be written");
    if (H5Awrite(attribute.Id(), type, padded.constData()) < 0)
        Owned(H5I_INVALID_HID, &H5Aclose, "an attribute can't be written");
}

hid_t Hdf5AttributeWriter::TextType(int length)
{
    auto found = m_types.find(length);
    if (found == m_types.end())
        found = m_types.emplace(length, Hdf5Types::ForPaddedText(static_cast<std::uint64_t>(length))).first;
    return found->second.Id();
}

} // namespace Orrery
