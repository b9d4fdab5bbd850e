#include "foundations/storage/Hdf5WriteDriver_p.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

namespace Orrery {

namespace {

using Target = Hdf5WriteDriver::Target;

// What HDF5 copies along with a file access list.
struct DriverInfo
{
    Target* target;
};

// One opening of the target; `base` must come first.
struct OpenFile
{
    H5FD_t base = {};
    Target* target = nullptr;
    haddr_t endOfAllocation = 0;
    haddr_t endOfFile = 0;
};

OpenFile* Cast(H5FD_t* file)
{
    return reinterpret_cast<OpenFile*>(file);
}

const OpenFile* Cast(const H5FD_t* file)
{
    return reinterpret_cast<const OpenFile*>(file);
}

H5FD_t* Open(const char* /*name*/, unsigned /*flags*/, hid_t fileAccess, haddr_t /*maxAddress*/)
{
    const auto* const info = static_cast<const DriverInfo*>(H5Pget_driver_info(fileAccess));
    struct stat status = {};
    if (!info || ::fstat(info->target->descriptor, &status) != 0)
        return nullptr;
    auto* const file = new (std::nothrow) OpenFile;
    if (!file)
        return nullptr;
    file->target = info->target;
    file->endOfFile = static_cast<haddr_t>(status.st_size);
    return &file->base;
}

herr_t Close(H5FD_t* file)
{
    delete Cast(file);
    return 0;
}

int Compare(const H5FD_t* a, const H5FD_t* b)
{
    const std::less<const Target*> less;
    const Target* const first = Cast(a)->target;
    const Target* const second = Cast(b)->target;
    return less(first, second) ? -1 : less(second, first) ? 1 : 0;
}

herr_t Query(const H5FD_t* /*file*/, unsigned long* flags)
{
    if (flags)
        *flags = H5FD_FEAT_AGGREGATE_METADATA | H5FD_FEAT_ACCUMULATE_METADATA | H5FD_FEAT_DATA_SIEVE |
                 H5FD_FEAT_AGGREGATE_SMALLDATA | H5FD_FEAT_DEFAULT_VFD_COMPATIBLE;
    return 0;
}

haddr_t EndOfAllocation(const H5FD_t* file, H5FD_mem_t /*type*/)
{
    return Cast(file)->endOfAllocation;
}

herr_t SetEndOfAllocation(H5FD_t* file, H5FD_mem_t /*type*/, haddr_t address)
{
    Cast(file)->endOfAllocation = address;
    return 0;
}

haddr_t EndOfFile(const H5FD_t* file, H5FD_mem_t /*type*/)
{
    return Cast(file)->endOfFile;
}

herr_t Handle(H5FD_t* file, hid_t /*fileAccess*/, void** handle)
{
    *handle = &Cast(file)->target->descriptor;
    return 0;
}

// What was never written reads as zeros, as behind the end of a file.
herr_t Read(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address, size_t size, void* buffer)
{
    auto* const out = static_cast<char*>(buffer);
    for (size_t done = 0; done < size;) {
        const ssize_t got = ::pread(Cast(file)->target->descriptor, out + done, size - done,
                                    static_cast<off_t>(address + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            std::memset(out + done, 0, size - done);
            break;
        }
        done += static_cast<size_t>(got);
    }
    return 0;
}

herr_t Write(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address, size_t size,
             const void* buffer)
{
    OpenFile* const open = Cast(file);
    open->endOfFile = std::max(open->endOfFile, address + size);
    const auto* const from = static_cast<const char*>(buffer);
    for (size_t done = 0; done < size && open->target->error == 0;) {
        const ssize_t put =
            ::pwrite(open->target->descriptor, from + done, size - done, static_cast<off_t>(address + done));
        if (put > 0)
            done += static_cast<size_t>(put);
        else if (put == 0 || errno != EINTR)
            open->target->error = put == 0 ? ENOSPC : errno;
    }
    return 0;
}

herr_t Truncate(H5FD_t* file, hid_t /*transfer*/, hbool_t /*closing*/)
{
    OpenFile* const open = Cast(file);
    if (open->endOfAllocation == open->endOfFile)
        return 0;
    open->endOfFile = open->endOfAllocation;
    if (open->target->error == 0 &&
        ::ftruncate(open->target->descriptor, static_cast<off_t>(open->endOfAllocation)) != 0)
        open->target->error = errno;
    return 0;
}

H5FD_class_t DriverClass()
{
    H5FD_class_t driver = {};
    driver.name = "orrery-write";
    driver.maxaddr = static_cast<haddr_t>(std::numeric_limits<off_t>::max());
    driver.fc_degree = H5F_CLOSE_WEAK;
    driver.fapl_size = sizeof(DriverInfo);
    driver.open = &Open;
    driver.close = &Close;
    driver.cmp = &Compare;
    driver.query = &Query;
    driver.get_eoa = &EndOfAllocation;
    driver.set_eoa = &SetEndOfAllocation;
    driver.get_eof = &EndOfFile;
    driver.get_handle = &Handle;
    driver.read = &Read;
    driver.write = &Write;
    driver.truncate = &Truncate;
    const H5FD_mem_t freeLists[] = H5FD_FLMAP_DICHOTOMY;
    std::copy(std::begin(freeLists), std::end(freeLists), std::begin(driver.fl_map));
    return driver;
}

} // namespace

Hdf5WriteDriver::Hdf5WriteDriver(int descriptor)
    : m_target{descriptor, 0}
{
    const H5FD_class_t driver = DriverClass();
    m_driver = H5FDregister(&driver);
}

Hdf5WriteDriver::~Hdf5WriteDriver()
{
    if (m_driver >= 0)
        H5FDunregister(m_driver);
}

bool Hdf5WriteDriver::Use(hid_t fileAccess)
{
    const DriverInfo info{&m_target};
    return m_driver >= 0 && H5Pset_driver(fileAccess, m_driver, &info) >= 0;
}

} // namespace Orrery
