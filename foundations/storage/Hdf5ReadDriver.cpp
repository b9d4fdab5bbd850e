#include "foundations/storage/Hdf5ReadDriver_p.h"

#include "foundations/storage/Hdf5DriverParts_p.h"

#include <cerrno>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

namespace Orrery {

namespace {

// What HDF5 copies along with a file access list.
struct DriverInfo
{
    int descriptor;
};

// One opening of the file; `base` must come first.
struct OpenFile
{
    H5FD_t base = {};
    int descriptor = -1;
    haddr_t endOfAllocation = 0;
    haddr_t endOfFile = 0;
};

using Parts = Hdf5DriverParts<OpenFile>;

H5FD_t* Open(const char* /*name*/, unsigned flags, hid_t fileAccess, haddr_t /*maxAddress*/)
{
    const auto* const info = static_cast<const DriverInfo*>(H5Pget_driver_info(fileAccess));
    struct stat status = {};
    if (!info || (flags & H5F_ACC_RDWR) != 0 || ::fstat(info->descriptor, &status) != 0)
        return nullptr;
    auto* const file = new (std::nothrow) OpenFile;
    if (!file)
        return nullptr;
    file->descriptor = info->descriptor;
    file->endOfFile = static_cast<haddr_t>(status.st_size);
    return &file->base;
}

herr_t Query(const H5FD_t* /*file*/, unsigned long* flags)
{
    if (flags)
        *flags = H5FD_FEAT_DATA_SIEVE | H5FD_FEAT_DEFAULT_VFD_COMPATIBLE;
    return 0;
}

haddr_t EndOfFile(const H5FD_t* file, H5FD_mem_t /*type*/)
{
    return Parts::Cast(file)->endOfFile;
}

herr_t Handle(H5FD_t* file, hid_t /*fileAccess*/, void** handle)
{
    *handle = &Parts::Cast(file)->descriptor;
    return 0;
}

herr_t Read(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address, size_t size, void* buffer)
{
    for (size_t done = 0; done < size;) {
        const ssize_t got = ::pread(Parts::Cast(file)->descriptor, static_cast<char*>(buffer) + done,
                                    size - done, static_cast<off_t>(address + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return -1;
        done += static_cast<size_t>(got);
    }
    return 0;
}

// HDF5 wants to have one, and calls none for a file that it only reads.
herr_t Write(H5FD_t* /*file*/, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t /*address*/, size_t /*size*/,
             const void* /*buffer*/)
{
    return -1;
}

H5FD_class_t DriverClass()
{
    H5FD_class_t driver = Parts::Class("orrery-read", sizeof(DriverInfo));
    driver.fc_degree = H5F_CLOSE_STRONG;
    driver.open = &Open;
    driver.query = &Query; // without a comparison, so that no two files are the same
    driver.get_eof = &EndOfFile;
    driver.get_handle = &Handle;
    driver.read = &Read;
    driver.write = &Write;
    return driver;
}

} // namespace

Hdf5ReadDriver::Hdf5ReadDriver(int descriptor)
    : m_descriptor(descriptor)
{
    const H5FD_class_t driver = DriverClass();
    m_driver = Hdf5Handle(H5FDregister(&driver), &H5FDunregister);
}

bool Hdf5ReadDriver::Use(hid_t fileAccess) const
{
    const DriverInfo info{m_descriptor};
    return m_driver.IsValid() && H5Pset_driver(fileAccess, m_driver.Id(), &info) >= 0;
}

} // namespace Orrery
