#include "foundations/storage/Hdf5Handle_p.h"

#include "foundations/storage/StorageError_p.h"
#include "foundations/storage/StorageMutex_p.h"

#include <QRegularExpression>

namespace Orrery {

namespace {

// A property list of our own, by which a session sees whether the library is still that of the session before.
// All under the StorageMutex.
struct LibraryMark
{
    hid_t list = H5I_INVALID_HID;
    std::uint64_t generation = 0;
};

LibraryMark s_mark;

void CountGeneration()
{
    constexpr const char* property = "orrery-session";
    if (H5Iget_type(s_mark.list) == H5I_GENPROP_LST && H5Pexist(s_mark.list, property) > 0)
        return;
    s_mark.list = H5Pcreate(H5P_FILE_ACCESS);
    H5Pinsert2(s_mark.list, property, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    ++s_mark.generation;
}

// Called from the innermost failure outward: keeps the first text, and the reason of the operating system.
herr_t KeepReason(unsigned /*depth*/, const H5E_error2_t* error, void* data)
{
    auto* const text = static_cast<QString*>(data);
    const QString description = QString::fromUtf8(error->desc ? error->desc : "");
    static const QRegularExpression systemReason(QStringLiteral("error message = '([^']*)'"));
    const QRegularExpressionMatch match = systemReason.match(description);
    if (match.hasMatch())
        *text = match.captured(1);
    else if (text->isEmpty())
        *text = description;
    return 0;
}

} // namespace

std::uint64_t Hdf5Generation()
{
    return s_mark.generation;
}

Hdf5Handle Owned(hid_t id, Hdf5Handle::Closer closer, const char* what)
{
    if (id < 0)
        throw StorageError(QString::fromLatin1(what) + QStringLiteral(": ") + Hdf5Session::LastError());
    return Hdf5Handle(id, closer);
}

Hdf5Session::Hdf5Session()
    : m_lock(StorageMutex())
{
    H5open();
    H5Eget_auto2(H5E_DEFAULT, &m_print, &m_printData);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    H5PLget_loading_state(&m_plugins);
    H5PLset_loading_state(0);
    CountGeneration();
}

Hdf5Session::~Hdf5Session()
{
    H5PLset_loading_state(m_plugins);
    H5Eset_auto2(H5E_DEFAULT, m_print, m_printData);
}

QString Hdf5Session::LastError()
{
    QString text;
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, &KeepReason, &text);
    return text.isEmpty() ? QStringLiteral("the HDF5 library reports no reason") : text;
}

} // namespace Orrery
