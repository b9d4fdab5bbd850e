#pragma once

namespace Orrery {

/// How the arrays of a file are stored; see DataFile.
struct SaveOptions
{
    int compressionLevel = 0;
    bool packed = false;
};

} // namespace Orrery
