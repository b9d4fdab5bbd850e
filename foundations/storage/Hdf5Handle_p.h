#pragma once

#include <QString>

#include <hdf5.h>

#include <cstdint>
#include <mutex>
#include <utility>

namespace Orrery {

/// How often the HDF5 library has been closed and opened anew. The host may close it whenever none of our sessions
/// stands, and the process does at its exit, before the last statics are destroyed: all identifiers made before are
/// gone then, and their numbers are given out again. Within an Hdf5Session.
std::uint64_t Hdf5Generation();

/// Owns one HDF5 identifier, which goes with the generation of the library that it was made in.
class Hdf5Handle
{
public:
    using Closer = herr_t (*)(hid_t);

    Hdf5Handle() = default;
    Hdf5Handle(hid_t id, Closer closer)
        : m_id(id)
        , m_closer(closer)
        , m_generation(Hdf5Generation())
    {
    }
    Hdf5Handle(Hdf5Handle&& other) noexcept
        : m_id(std::exchange(other.m_id, H5I_INVALID_HID))
        , m_closer(other.m_closer)
        , m_generation(other.m_generation)
    {
    }
    Hdf5Handle& operator=(Hdf5Handle&& other) noexcept
    {
        std::swap(m_id, other.m_id);
        std::swap(m_closer, other.m_closer);
        std::swap(m_generation, other.m_generation);
        return *this;
    }
    ~Hdf5Handle() { Close(); }

    hid_t Id() const { return m_id; }
    bool IsValid() const { return m_id >= 0 && m_generation == Hdf5Generation(); }

    /// False when HDF5 couldn't close it properly, which for a written file means that it isn't whole.
    bool Close()
    {
        const hid_t id = std::exchange(m_id, H5I_INVALID_HID);
        return id < 0 || m_generation != Hdf5Generation() || m_closer(id) >= 0;
    }

private:
    hid_t m_id = H5I_INVALID_HID;
    Closer m_closer = nullptr;
    std::uint64_t m_generation = 0;
};

/// Take over a new identifier.
///
/// Errors: throws StorageError that begins with `what` when HDF5 didn't give one.
Hdf5Handle Owned(hid_t id, Hdf5Handle::Closer closer, const char* what);

/// Everything that this library does with HDF5 happens while one of these stands.
///
/// The HDF5 library may be built without locks, so one thread at a time is inside; its own printing of errors is
/// off, and so is the loading of plug-ins, by which a file could run code from the user's disk. All three are as
/// before when the last session of the thread ends, since the host may use HDF5 on its own.
class Hdf5Session
{
public:
    Hdf5Session();
    ~Hdf5Session();
    Hdf5Session(const Hdf5Session&) = delete;
    Hdf5Session& operator=(const Hdf5Session&) = delete;

    /// What HDF5 says of the last failed call, as one line; the system's own reason where there is one.
    static QString LastError();

private:
    std::unique_lock<std::recursive_mutex> m_lock;
    H5E_auto2_t m_print = nullptr;
    void* m_printData = nullptr;
    unsigned int m_plugins = 0;
};

} // namespace Orrery
