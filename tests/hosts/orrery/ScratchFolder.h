#pragma once

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace Orrery::Host {

/// A folder that goes away with the test.
class ScratchFolder
{
public:
    std::string path(const std::string& name) const { return m_folder.filePath(name.c_str()).toStdString(); }

    /// Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& content) const
    {
        const std::string file = path(name);
        std::remove(file.c_str()); // some file systems bring a file that is written over to the disk at once
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

private:
    QTemporaryDir m_folder;
};

/// The content of a file beside the tests; a missing one is a failure of the test.
inline std::string sampleContent(const std::string& name)
{
    std::ifstream file(ORRERY_TEST_DATA + name, std::ios::binary);
    EXPECT_TRUE(file.good()) << name << " is missing";
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

inline std::string samplePath(const std::string& name)
{
    return ORRERY_TEST_DATA + name;
}

} // namespace Orrery::Host
