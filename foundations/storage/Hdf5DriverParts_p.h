#pragma once

#include <hdf5.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>

#include <sys/types.h>

namespace Orrery {

/// What our HDF5 drivers have in common. `Opening` is what a driver keeps of one open file: it begins with a member
/// `H5FD_t base` and has a member `haddr_t endOfAllocation`.
template <class Opening>
struct Hdf5DriverParts
{
    static Opening* Cast(H5FD_t* file) { return reinterpret_cast<Opening*>(file); }
    static const Opening* Cast(const H5FD_t* file) { return reinterpret_cast<const Opening*>(file); }

    static herr_t Close(H5FD_t* file)
    {
        delete Cast(file);
        return 0;
    }

    static haddr_t EndOfAllocation(const H5FD_t* file, H5FD_mem_t /*type*/)
    {
        return Cast(file)->endOfAllocation;
    }

    static herr_t SetEndOfAllocation(H5FD_t* file, H5FD_mem_t /*type*/, haddr_t address)
    {
        Cast(file)->endOfAllocation = address;
        return 0;
    }

    /// A class of drivers with these operations; all others are still to be set. `infoSize` is the length of what HDF5
    /// copies along with a file access list.
    static H5FD_class_t Class(const char* name, std::size_t infoSize)
    {
        H5FD_class_t driver = {};
        driver.name = name;
        driver.maxaddr = static_cast<haddr_t>(std::numeric_limits<off_t>::max());
        driver.fapl_size = infoSize;
        driver.close = &Close;
        driver.get_eoa = &EndOfAllocation;
        driver.set_eoa = &SetEndOfAllocation;
        const H5FD_mem_t freeLists[] = H5FD_FLMAP_DICHOTOMY;
        std::copy(std::begin(freeLists), std::end(freeLists), std::begin(driver.fl_map));
        return driver;
    }
};

} // namespace Orrery
