#include "hosts/orrery/ReplacedFile.h"

#include "hosts/orrery/Failure.h"
#include "tests/hosts/orrery/ScratchFolder.h"

#include <QDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace Orrery::Host {

namespace {

void append(const ReplacedFile& file, const std::string& text)
{
    ASSERT_EQ(::write(file.descriptor(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

} // namespace

TEST(ReplacedFile, TakesThePlaceOfAnotherOnlyWhenCommitted)
{
    const ScratchFolder folder;
    const std::string target = folder.write("out", "old");
    {
        const ReplacedFile file(target);
        append(file, "half");
        EXPECT_EQ(contentOf(file.path()), "half");
    }
    EXPECT_EQ(contentOf(target), "old");
    ReplacedFile file(target);
    append(file, "new");
    EXPECT_EQ(contentOf(target), "old");
    file.commit();
    EXPECT_EQ(contentOf(target), "new");
    EXPECT_EQ(QDir(QString::fromStdString(folder.path(""))).entryList(QDir::Files).size(), 1);
}

TEST(ReplacedFile, NamesItsTargetWhenItCantBeMade)
{
    const ScratchFolder folder;
    const std::string target = folder.path("nowhere/out");
    try {
        const ReplacedFile file(target);
        FAIL() << "there is no such folder";
    } catch (const Failure& failure) {
        EXPECT_EQ(std::string(failure.what()), target + ": No such file or directory");
    }
}

} // namespace Orrery::Host
