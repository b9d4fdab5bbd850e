#include "foundations/storage/Hdf5WriteDriver_p.h"

#include "foundations/storage/Hdf5DriverParts_p.h"
#include "foundations/storage/StorageError_p.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <new>
#include <vector>

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
};

using Parts = Hdf5DriverParts<OpenFile>;

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
    file->target->endOfFile = static_cast<haddr_t>(status.st_size);
    return &file->base;
}

int Compare(const H5FD_t* a, const H5FD_t* b)
{
    const std::less<const Target*> less;
    const Target* const first = Parts::Cast(a)->target;
    const Target* const second = Parts::Cast(b)->target;
    return less(first, second) ? -1 : less(second, first) ? 1 : 0;
}

herr_t Query(const H5FD_t* /*file*/, unsigned long* flags)
{
    if (flags)
        *flags = H5FD_FEAT_AGGREGATE_METADATA | H5FD_FEAT_ACCUMULATE_METADATA | H5FD_FEAT_DATA_SIEVE |
                 H5FD_FEAT_AGGREGATE_SMALLDATA | H5FD_FEAT_DEFAULT_VFD_COMPATIBLE;
    return 0;
}

haddr_t EndOfFile(const H5FD_t* file, H5FD_mem_t /*type*/)
{
    return Parts::Cast(file)->target->endOfFile;
}

herr_t Handle(H5FD_t* file, hid_t /*fileAccess*/, void** handle)
{
    *handle = &Parts::Cast(file)->target->descriptor;
    return 0;
}

// What was never written reads as zeros, as behind the end of a file.
herr_t Read(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address, size_t size, void* buffer)
{
    auto* const out = static_cast<char*>(buffer);
    for (size_t done = 0; done < size;) {
        const ssize_t got = ::pread(Parts::Cast(file)->target->descriptor, out + done, size - done,
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

void Put(Target* target, haddr_t address, const char* from, std::uint64_t size)
{
    target->endOfFile = std::max(target->endOfFile, address + size);
    for (std::uint64_t done = 0; done < size && target->error == 0;) {
        const ssize_t put =
            ::pwrite(target->descriptor, from + done, size - done, static_cast<off_t>(address + done));
        if (put > 0)
            done += static_cast<std::uint64_t>(put);
        else if (put == 0 || errno != EINTR)
            target->error = put == 0 ? ENOSPC : errno;
    }
}

herr_t Write(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address, size_t size,
             const void* buffer)
{
    Put(Parts::Cast(file)->target, address, static_cast<const char*>(buffer), size);
    return 0;
}

herr_t Truncate(H5FD_t* file, hid_t /*transfer*/, hbool_t /*closing*/)
{
    const haddr_t end = Parts::Cast(file)->endOfAllocation;
    Target* const target = Parts::Cast(file)->target;
    if (end == target->endOfFile)
        return 0;
    target->endOfFile = end;
    if (target->error == 0 && ::ftruncate(target->descriptor, static_cast<off_t>(end)) != 0)
        target->error = errno;
    return 0;
}

// The number of bytes that the system has copied by itself; what is left has to be read and written.
std::uint64_t CopyInTheSystem(int source, std::uint64_t offset, const Target& target, std::uint64_t address,
                              std::uint64_t size)
{
    std::uint64_t done = 0;
    while (done < size) {
        auto from = static_cast<off64_t>(offset + done);
        auto to = static_cast<off64_t>(address + done);
        const ssize_t copied = ::copy_file_range(source, &from, target.descriptor, &to, size - done, 0);
        if (copied <= 0)
            break; // whatever the reason is, it is met again below if it lasts
        done += static_cast<std::uint64_t>(copied);
    }
    return done;
}

void ReadOrThrow(int source, std::uint64_t offset, std::uint64_t size, char* out)
{
    for (std::uint64_t done = 0; done < size;) {
        const ssize_t got = ::pread(source, out + done, size - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            throw StorageError(QStringLiteral("the array can't be read: ") +
                               (got < 0 ? QString::fromLocal8Bit(std::strerror(errno))
                                        : QStringLiteral("its file ends before it")));
        done += static_cast<std::uint64_t>(got);
    }
}

H5FD_class_t DriverClass()
{
    H5FD_class_t driver = Parts::Class("orrery-write", sizeof(DriverInfo));
    driver.fc_degree = H5F_CLOSE_WEAK;
    driver.open = &Open;
    driver.cmp = &Compare;
    driver.query = &Query;
    driver.get_eof = &EndOfFile;
    driver.get_handle = &Handle;
    driver.read = &Read;
    driver.write = &Write;
    driver.truncate = &Truncate;
    return driver;
}

} // namespace

Hdf5WriteDriver::Hdf5WriteDriver(int descriptor)
    : m_target{descriptor, 0, 0}
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

void Hdf5WriteDriver::Write(std::uint64_t address, const void* data, std::uint64_t size)
{
    Put(&m_target, address, static_cast<const char*>(data), size);
}

void Hdf5WriteDriver::Copy(int source, std::uint64_t offset, std::uint64_t address, std::uint64_t size)
{
    constexpr std::uint64_t piece = std::uint64_t(1) * 1024 * 1024;
    if (m_target.error != 0)
        return;
    std::uint64_t done = CopyInTheSystem(source, offset, m_target, address, size);
    m_target.endOfFile = std::max<haddr_t>(m_target.endOfFile, address + done);
    std::vector<char> buffer(done < size ? std::min(piece, size - done) : 0);
    while (done < size && m_target.error == 0) {
        const std::uint64_t length = std::min(piece, size - done);
        ReadOrThrow(source, offset + done, length, buffer.data());
        Write(address + done, buffer.data(), length);
        done += length;
    }
}

void Hdf5WriteDriver::GiveUp()
{
    if (m_target.error == 0)
        m_target.error = ECANCELED;
}

} // namespace Orrery
