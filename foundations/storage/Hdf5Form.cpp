#include "foundations/storage/Hdf5Form_p.h"

#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/storage/StorageError_p.h"

#include <cstdint>
#include <cstring>

#include <unistd.h>

namespace Orrery {

namespace {

// The beginning of a file.
// Source: HDF5 File Format, version 3.0, section II.A "Superblock".
struct Start
{
    char signature[8];
    std::uint8_t version;
    std::uint8_t offsetSize;
    std::uint8_t lengthSize;
    std::uint8_t flags;
    // From here on for the versions 2 and 3 with offsets of 8 bytes.
    std::uint32_t baseAddress[2];
    std::uint32_t extensionAddress[2];
    std::uint32_t endOfFile[2];
    std::uint32_t rootAddress[2];
    std::uint32_t checksum;
};
static_assert(sizeof(Start) == 48, "the start is read as it lies in the file");

const char s_signature[] = {'\x89', 'H', 'D', 'F', '\r', '\n', '\x1a', '\n'};
const char s_headerSignature[] = {'O', 'H', 'D', 'R'};

std::uint64_t Joined(const std::uint32_t (&halves)[2])
{
    return std::uint64_t(halves[0]) | std::uint64_t(halves[1]) << 32U;
}

bool IsSignature(const char* bytes)
{
    return std::memcmp(bytes, s_signature, sizeof s_signature) == 0;
}

// Behind a user block, whose length is a power of two, HDF5 finds a file as well.
bool HasUserBlock(int descriptor)
{
    char bytes[sizeof s_signature];
    for (off_t at = 512; ::pread(descriptor, bytes, sizeof bytes, at) == sizeof bytes; at *= 2) {
        if (IsSignature(bytes))
            return true;
    }
    return false;
}

bool IsNewHeader(int descriptor, std::uint64_t address)
{
    char bytes[sizeof s_headerSignature];
    return address <= static_cast<std::uint64_t>(INT64_MAX) &&
           ::pread(descriptor, bytes, sizeof bytes, static_cast<off_t>(address)) == sizeof bytes &&
           std::memcmp(bytes, s_headerSignature, sizeof bytes) == 0;
}

} // namespace

void Hdf5Form::ExpectSound(int descriptor)
{
    Start start = {};
    if (::pread(descriptor, &start, sizeof start, 0) < static_cast<ssize_t>(sizeof s_signature) ||
        !IsSignature(start.signature))
        throw StorageError(HasUserBlock(descriptor)
                               ? QStringLiteral("begins with a user block, which no data file does")
                               : QStringLiteral("is not an HDF5 file"));
    if (start.version < 2 || start.offsetSize != sizeof(std::uint64_t) ||
        start.lengthSize != sizeof(std::uint64_t) || Joined(start.baseAddress) != 0)
        throw StorageError(QStringLiteral("is an HDF5 file in another form than that of HDF5 1.8"));
    if (!IsNewHeader(descriptor, Joined(start.rootAddress)))
        throw StorageError(QStringLiteral("can't be opened: its root group is damaged"));
}

void Hdf5Form::ExpectSoundGroup(hid_t parent, haddr_t address)
{
    const Hdf5Handle file(H5Iget_file_id(parent), &H5Fclose);
    void* descriptor = nullptr;
    if (!file.IsValid() || H5Fget_vfd_handle(file.Id(), H5P_DEFAULT, &descriptor) < 0 || !descriptor ||
        !IsNewHeader(*static_cast<int*>(descriptor), address))
        throw StorageError(QStringLiteral("the array's group is in another form than that of HDF5 1.8"));
}

} // namespace Orrery
