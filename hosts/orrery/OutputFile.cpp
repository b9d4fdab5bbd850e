#include "hosts/orrery/OutputFile.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace Orrery::Host {

namespace {

bool startsLikeDataFile(const std::string& path)
{
    const std::string signature = "\x89HDF\r\n\x1a\n";
    std::string start(signature.size(), '\0');
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open())
        return false;
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    return file.gcount() == 0 || start == signature;
}

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Tells before the work what would be told after it.
void checkFolder(const std::string& output)
{
    const std::string folder = folderOf(output);
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0)
        throw Failure(printable(output) + ": the folder " + inQuotes(folder) + ": " + std::strerror(errno));
    if (!S_ISDIR(status.st_mode))
        throw Failure(printable(output) + ": " + inQuotes(folder) + " is not a folder");
}

} // namespace

void checkOutput(const std::string& input, const std::string& output, bool isForced)
{
    const std::string name = printable(output);
    struct stat out = {};
    if (::stat(output.c_str(), &out) != 0) {
        checkFolder(output);
        return;
    }
    if (S_ISDIR(out.st_mode))
        throw Failure(name + ": is a folder, expected a file to write");
    if (!S_ISREG(out.st_mode))
        throw Failure(name + ": is not a regular file");
    struct stat in = {};
    if (::stat(input.c_str(), &in) == 0 && in.st_dev == out.st_dev && in.st_ino == out.st_ino)
        throw Failure(name + ": is the file to read; write to another one");
    if (!isForced && !startsLikeDataFile(output))
        throw Failure(name + ": exists and is not an HDF5 file; --force replaces it");
}

} // namespace Orrery::Host
