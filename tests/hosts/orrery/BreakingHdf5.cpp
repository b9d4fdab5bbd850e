// Loaded in front of the HDF5 library, this stands for a file that breaks it: every file does what the environment
// says as it is opened.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

extern "C" __attribute__((visibility("default"))) std::int64_t
H5Fopen(const char* /*name*/, unsigned /*flags*/, std::int64_t /*access*/)
{
    const char* const what = std::getenv("ORRERY_BREAK");
    if (what && std::strcmp(what, "crash") == 0)
        std::abort();
    if (what && std::strcmp(what, "exit") == 0)
        ::_exit(7);
    while (what && std::strcmp(what, "hang") == 0)
        ::pause();
    return -1;
}
