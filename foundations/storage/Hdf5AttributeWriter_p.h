#pragma once

#include "foundations/storage/Hdf5Handle_p.h"

#include <QByteArray>
#include <QByteArrayList>

#include <map>

namespace Orrery {

/// Writes texts as attributes of HDF5 objects, UTF-8 of a fixed length.
class Hdf5AttributeWriter
{
public:
    Hdf5AttributeWriter();

    /// One text. Errors: throws StorageError. Edge: a text that no attribute can hold is left out.
    void Write(hid_t object, const QByteArray& name, const QByteArray& text);

    /// A list of texts, in one dimension. Errors, Edge: as above.
    void Write(hid_t object, const QByteArray& name, const QByteArrayList& texts);

private:
    void Write(hid_t object, const QByteArray& name, int length, const QByteArray& padded, hid_t space);
    hid_t TextType(int length);

    Hdf5Handle m_scalar;
    std::map<int, Hdf5Handle> m_types;
};

} // namespace Orrery
