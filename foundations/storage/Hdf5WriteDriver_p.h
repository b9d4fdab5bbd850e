#pragma once

#include "foundations/storage/Hdf5Handle_p.h"

#include <hdf5.h>

#include <cstdint>

namespace Orrery {

/// Lets HDF5 write into a file that is open already, and keeps write errors from it.
///
/// The HDF5 library can't get rid of a file whose last writes fail: its close fails, the file stays open, and the
/// process crashes when it exits. So a failing write (a full disk, a limit) is kept here and reported as done; from
/// then on nothing more is written, and the save asks for the error and fails.
/// Threads: only within an Hdf5Session.
class Hdf5WriteDriver
{
public:
    /// `descriptor` is an empty file open for reading and writing; it isn't owned and must outlive the driver.
    explicit Hdf5WriteDriver(int descriptor);

    /// The HDF5 files made through this driver are to be closed before.
    ~Hdf5WriteDriver();
    Hdf5WriteDriver(const Hdf5WriteDriver&) = delete;
    Hdf5WriteDriver& operator=(const Hdf5WriteDriver&) = delete;

    /// Make file accesses of this list go to the descriptor. False when HDF5 refuses.
    bool Use(hid_t fileAccess);

    /// The errno of the first write that failed; 0 for none.
    int Error() const { return m_target.error; }

    /// Write elements where HDF5 has set space aside, past its own ways; a failure is kept like any other.
    void Write(std::uint64_t address, const void* data, std::uint64_t size);

    /// The same with bytes of another file, which don't pass through this process where the system can do without.
    ///
    /// Errors: throws StorageError when the other file can't be read or ends too early.
    void Copy(int source, std::uint64_t offset, std::uint64_t address, std::uint64_t size);

    /// From here on nothing is written any more: the file is given up.
    void GiveUp();

    /// What the driver's operations work on.
    struct Target
    {
        int descriptor;
        int error;
        haddr_t endOfFile;
    };

private:
    Target m_target;
    hid_t m_driver;
};

} // namespace Orrery
