// The leak detector passes over what the HDF5 library doesn't free when it gives up on a damaged header. Programs
// that open sound files do without this, so that a handle of ours that is never closed doesn't stay hidden.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() // NOLINT
{
    return "leak:libhdf5_serial\n";
}
