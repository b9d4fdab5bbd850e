#include "hosts/orrery/SourceFile.h"

#include "hosts/orrery/Failure.h"
#include "tests/hosts/orrery/ScratchFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace Orrery::Host {

namespace {

std::string failureOf(const std::string& path)
{
    try {
        const SourceFile file(path);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

} // namespace

TEST(SourceFileOpening, WhatIsNoRegularFileIsRefusedAtOnce)
{
    const ScratchFolder folder;
    EXPECT_EQ(failureOf(folder.path("none")), folder.path("none") + ": No such file or directory");
    EXPECT_EQ(failureOf(folder.path("")), folder.path("") + ": is a folder, expected a file");
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(failureOf(folder.path("fifo")), folder.path("fifo") + ": is not a regular file");
    EXPECT_EQ(failureOf("/dev/zero"), "/dev/zero: is not a regular file");
}

TEST(SourceFileReading, LinesAndBytesFollowEachOther)
{
    const ScratchFolder folder;
    SourceFile file(folder.write("f", "one\r\n\ntwo\nBYTESlast"));
    std::string_view line;
    ASSERT_TRUE(file.readLine(&line, 100));
    EXPECT_EQ(line, "one");
    ASSERT_TRUE(file.readLine(&line, 100));
    EXPECT_EQ(line, "");
    ASSERT_TRUE(file.readLine(&line, 3));
    EXPECT_EQ(line, "two");
    EXPECT_TRUE(file.isLineEnded());
    EXPECT_EQ(file.position(), 10U);
    EXPECT_EQ(file.remaining(), 9U);
    std::string bytes(5, '\0');
    file.read(bytes.data(), bytes.size());
    EXPECT_EQ(bytes, "BYTES");
    ASSERT_TRUE(file.readLine(&line, 100));
    EXPECT_EQ(line, "last");
    EXPECT_FALSE(file.isLineEnded());
    EXPECT_FALSE(file.readLine(&line, 100));
    EXPECT_EQ(file.remaining(), 0U);
}

// A line that is longer than the buffer, and ends of lines at every place around the buffer's end.
TEST(SourceFileReading, LinesMayCrossTheBuffer)
{
    const ScratchFolder folder;
    std::string content;
    std::vector<std::size_t> lengths;
    for (const std::size_t length : {262'140U, 1U, 0U, 2U, 600'000U, 524'287U, 3U}) {
        lengths.push_back(length);
        content += std::string(length, 'a') + '\n';
    }
    for (const bool isWide : {false, true}) {
        std::string bytes;
        for (const char c : content)
            bytes += isWide ? std::string{c, '\0'} : std::string(1, c);
        SourceFile file(folder.write("f", bytes));
        EXPECT_EQ(file.isUtf16(), isWide);
        for (const std::size_t length : lengths) {
            std::string_view line;
            ASSERT_TRUE(file.readLine(&line, 2'000'000));
            EXPECT_EQ(line.size(), length);
        }
        EXPECT_EQ(file.remaining(), 0U);
    }
}

TEST(SourceFileReading, ALineFeedWithinAWideCharacterEndsNoLine)
{
    const ScratchFolder folder;
    // "a", U+0A0A, U+010A, end of line
    SourceFile file(folder.write("f", std::string("a\0\n\n\n\x01\n\0", 8)));
    std::string_view line;
    ASSERT_TRUE(file.readLine(&line, 100));
    EXPECT_EQ(line, "a\xE0\xA8\x8A\xC4\x8A");
    EXPECT_FALSE(file.readLine(&line, 100));
}

TEST(SourceFileReading, AFileThatShrinksMeanwhileIsAnError)
{
    const ScratchFolder folder;
    const std::string path = folder.write("f", std::string(1'000'000, 'x'));
    SourceFile file(path);
    ASSERT_EQ(::truncate(path.c_str(), 500'000), 0);
    std::vector<char> bytes(1'000'000);
    try {
        file.read(bytes.data(), bytes.size());
        FAIL() << "the bytes can't have been there";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(),
                  path + ": byte 500000: expected 500000 more bytes of values, found the end of the "
                         "file, which became shorter while it was read");
    }
}

TEST(SourceFileReading, TellsHowFarItIs)
{
    const ScratchFolder folder;
    std::vector<std::uint64_t> seen;
    SourceFile file(folder.write("f", std::string(700'000, 'x')),
                    [&](std::uint64_t done, std::uint64_t size) {
                        EXPECT_EQ(size, 700'000U);
                        seen.push_back(done);
                    });
    std::vector<char> bytes(700'000);
    file.read(bytes.data(), bytes.size());
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back(), 700'000U);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

} // namespace Orrery::Host
