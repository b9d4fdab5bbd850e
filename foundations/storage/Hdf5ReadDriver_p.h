#pragma once

#include "foundations/storage/Hdf5Handle_p.h"

#include <hdf5.h>

namespace Orrery {

/// Lets HDF5 read a file that is open already.
///
/// The HDF5 library gives everybody who opens one file the same structures, so a file that stays open would show
/// its former content to whoever opens it anew after a change in place. Files of this driver share nothing. A read
/// past the end fails; a file that was cut is told from one with zeros.
/// Threads: only within an Hdf5Session.
class Hdf5ReadDriver
{
public:
    /// `descriptor` isn't owned and must outlive the driver.
    /// The HDF5 files opened through this driver are to be closed before it is destroyed.
    explicit Hdf5ReadDriver(int descriptor);
    Hdf5ReadDriver(const Hdf5ReadDriver&) = delete;
    Hdf5ReadDriver& operator=(const Hdf5ReadDriver&) = delete;

    /// Make file accesses of this list go to the descriptor. False when HDF5 refuses.
    bool Use(hid_t fileAccess) const;

private:
    int m_descriptor;
    Hdf5Handle m_driver;
};

} // namespace Orrery
