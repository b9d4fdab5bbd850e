#pragma once

#include "foundations/variant/BVariant.h"

#include <hdf5.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Orrery::Host {

/// An HDF5 object that is closed at the end of its life.
class Hdf5Object
{
public:
    using Close = herr_t (*)(hid_t);

    Hdf5Object() = default;
    Hdf5Object(hid_t id, Close closing)
        : m_id(id)
        , m_close(closing)
    {
    }
    Hdf5Object(Hdf5Object&& other) noexcept
        : m_id(std::exchange(other.m_id, H5I_INVALID_HID))
        , m_close(other.m_close)
    {
    }
    Hdf5Object& operator=(Hdf5Object&& other) noexcept
    {
        std::swap(m_id, other.m_id);
        std::swap(m_close, other.m_close);
        return *this;
    }
    Hdf5Object(const Hdf5Object&) = delete;
    Hdf5Object& operator=(const Hdf5Object&) = delete;
    ~Hdf5Object() { static_cast<void>(close()); }

    hid_t id() const { return m_id; }
    bool isValid() const { return m_id >= 0; }

    /// False if closing fails, as it does when the last bytes can't be written.
    bool close() { return m_id < 0 || m_close(std::exchange(m_id, H5I_INVALID_HID)) >= 0; }

private:
    hid_t m_id = H5I_INVALID_HID;
    Close m_close = nullptr;
};

/// A dimension of a NetcdfFile.
struct NetcdfDimension
{
    std::string name;
    std::uint64_t length = 0;
    int number = 0;
};

/// A variable of a NetcdfFile.
struct NetcdfVariable
{
    Hdf5Object dataset;
    Hdf5Object memoryType;
    std::vector<hsize_t> shape;
};

/// The part of a complex number that a variable holds.
enum class NumberPart
{
    Whole, ///< the number is real
    Real,
    Imaginary,
};

/// An HDF5 file that programs for netCDF-4 read: variables over named dimensions, with attributes.
///
/// Names:  a variable or a dimension gets the name that is asked for as far as netCDF allows it: '/' and control
///         characters become '_', and one that is taken gets "_2" and so on behind it.
/// Errors: each operation throws a NotWritten that says what couldn't be; the file is then worth nothing.
class NetcdfFile
{
public:
    /// To be called before anything else has used HDF5: at its exit, the HDF5 library crashes over a file that it
    /// couldn't close, as on a full disk, and fills standard error over a damaged one. From then on it leaves such a file
    /// alone.
    static void keepExitSafe();

    /// Replaces what is at the path.
    explicit NetcdfFile(const std::string& path);

    NetcdfDimension addDimension(const std::string& name, std::uint64_t length);

    /// A dimension whose variable holds the places along it.
    NetcdfDimension addCoordinate(const std::string& name, std::uint64_t length,
                                  Brindle::Quay::WellKnownType type, NetcdfVariable* variable);

    /// Errors: Failure also for an element type that netCDF doesn't have.
    NetcdfVariable addVariable(const std::string& name, const std::vector<NetcdfDimension>& dimensions,
                               Brindle::Quay::WellKnownType type, NumberPart part);

    void setAttribute(const NetcdfVariable& variable, const char* name, const std::string& text);
    void setFileAttribute(const char* name, const std::string& text);

    /// The name that a variable has got.
    std::string nameOf(const NetcdfVariable& variable) const;

    /// Write the elements of an array, of the type that the variable was made with, at [begin, ...) of its first
    /// dimension; they are as many as fit a multiple of the others.
    void write(const NetcdfVariable& variable, const Brindle::Quay::BVariant& data, NumberPart part,
               std::uint64_t begin);

    /// Errors: as write(); without it, nobody is told.
    void close();

private:
    std::string uniqueName(const std::string& wanted);
    NetcdfVariable makeDataset(const std::string& name, std::vector<hsize_t> shape,
                               Brindle::Quay::WellKnownType type, NumberPart part);
    void makeScale(hid_t dataset, const std::string& label, NetcdfDimension* dimension);
    void setText(hid_t object, const char* name, const std::string& text);

    Hdf5Object m_file;
    std::vector<std::string> m_names;
    std::vector<std::pair<int, Hdf5Object>> m_scales; // by the number of their dimension
};

} // namespace Orrery::Host
