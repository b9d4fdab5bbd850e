#include "hosts/orrery/SourceFile.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QString>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace Orrery::Host {

namespace {

constexpr std::size_t s_bufferSize = 256U << 10U;
constexpr std::uint64_t s_largestRead = 1U << 30U;

[[noreturn]] void failOpening(const std::string& path, const std::string& reason)
{
    throw Failure(printable(path) + ": " + reason);
}

void requireRegular(const std::string& path, const struct stat& status)
{
    if (S_ISDIR(status.st_mode))
        failOpening(path, "is a folder, expected a file");
    if (!S_ISREG(status.st_mode))
        failOpening(path, "is not a regular file");
}

// The kind is asked before the file is opened, since opening a device may have effects, and again on what was
// opened.
int openRegular(const std::string& path, std::uint64_t* size)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        failOpening(path, std::strerror(errno));
    requireRegular(path, status);
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        failOpening(path, std::strerror(errno));
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        failOpening(path, "is not a regular file");
    }
    *size = static_cast<std::uint64_t>(status.st_size);
    return descriptor;
}

} // namespace

SourceFile::SourceFile(const std::string& path, Progress progress)
    : m_path(path)
    , m_progress(std::move(progress))
    , m_descriptor(openRegular(path, &m_size))
    , m_buffer(s_bufferSize)
{
    try {
        detectEncoding();
    } catch (...) {
        ::close(m_descriptor);
        throw;
    }
}

SourceFile::~SourceFile()
{
    ::close(m_descriptor);
}

void SourceFile::detectEncoding()
{
    while (m_end < 3 && fill()) {
    }
    const std::string_view start(m_buffer.data(), m_end);
    const bool marked = start.substr(0, 2) == "\xFF\xFE";
    m_utf16 = marked || (start.size() > 1 && start[0] != '\0' && start[1] == '\0');
    const std::size_t skipped = marked ? 2 : (start.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0);
    m_begin += skipped;
    m_position += skipped;
}

std::uint64_t SourceFile::readSome(char* to, std::uint64_t count)
{
    ssize_t got = 0;
    do {
        got = ::read(m_descriptor, to, std::min(count, s_largestRead));
    } while (got < 0 && errno == EINTR);
    if (got < 0)
        failOpening(m_path, std::strerror(errno));
    m_fetched += static_cast<std::uint64_t>(got);
    if (m_progress && got > 0)
        m_progress(m_fetched, std::max(m_size, m_fetched));
    return static_cast<std::uint64_t>(got);
}

// Makes room behind the bytes at hand, by moving them to the front or by a larger buffer, and reads on.
bool SourceFile::fill()
{
    if (m_begin > 0) {
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end == m_buffer.size())
        m_buffer.resize(2 * m_buffer.size());
    const std::uint64_t got = readSome(m_buffer.data() + m_end, m_buffer.size() - m_end);
    m_end += static_cast<std::size_t>(got);
    return got > 0;
}

// `*from` is how far the bytes at hand are known to hold no line end; it moves on with the search.
bool SourceFile::findLineEnd(std::size_t* from, std::size_t* length) const
{
    const char* const start = m_buffer.data() + m_begin;
    const std::size_t count = m_end - m_begin;
    while (*from < count) {
        const void* const hit = std::memchr(start + *from, '\n', count - *from);
        if (!hit) {
            *from = count;
            return false;
        }
        const auto at = static_cast<std::size_t>(static_cast<const char*>(hit) - start);
        if (!m_utf16 || (at % 2 == 0 && at + 1 < count && start[at + 1] == '\0')) {
            *length = at;
            return true;
        }
        if (at % 2 == 0 && at + 1 == count) {
            *from = at; // the second half of this character isn't here yet
            return false;
        }
        *from = at + 1;
    }
    return false;
}

std::string_view SourceFile::asText(std::string_view bytes)
{
    if (m_utf16) {
        QString text;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const auto low = static_cast<unsigned char>(bytes[i]);
            const auto high = static_cast<unsigned char>(bytes[i + 1]);
            text += QChar(static_cast<ushort>(low | (high << 8U)));
        }
        m_converted = text.toStdString();
        bytes = m_converted;
    }
    if (!bytes.empty() && bytes.back() == '\r')
        bytes.remove_suffix(1);
    return bytes;
}

bool SourceFile::readLine(std::string_view* line, std::uint64_t limit)
{
    ++m_line;
    m_place = m_position;
    std::size_t from = 0;
    std::size_t length = 0;
    std::size_t endLength = m_utf16 ? 2 : 1;
    while (!findLineEnd(&from, &length)) {
        if (from > limit)
            fail("a line of at most " + std::to_string(limit) + " bytes", "a longer one");
        if (!fill()) {
            length = m_end - m_begin;
            endLength = 0;
            if (length == 0)
                return false;
            break;
        }
    }
    if (length > limit)
        fail("a line of at most " + std::to_string(limit) + " bytes", "a longer one");
    m_isLineEnded = endLength > 0;
    *line = asText({m_buffer.data() + m_begin, length});
    m_begin += length + endLength;
    m_position += length + endLength;
    return true;
}

void SourceFile::read(char* to, std::uint64_t count)
{
    if (count == 0)
        return;
    m_hasBytes = true;
    m_place = m_position;
    const std::uint64_t atHand = std::min<std::uint64_t>(count, m_end - m_begin);
    std::memcpy(to, m_buffer.data() + m_begin, static_cast<std::size_t>(atHand));
    m_begin += static_cast<std::size_t>(atHand);
    m_position += atHand;
    for (std::uint64_t done = atHand; done < count;) {
        const std::uint64_t got = readSome(to + done, count - done);
        m_place = m_position;
        if (got == 0)
            fail(std::to_string(count - done) + " more bytes of values",
                 "the end of the file, which became shorter while it was read");
        done += got;
        m_position += got;
    }
}

void SourceFile::fail(const std::string& expected, const std::string& found) const
{
    const std::string where =
        m_hasBytes ? "byte " + std::to_string(m_place) : "line " + std::to_string(m_line);
    throw Failure(printable(m_path) + ": " + where + ": expected " + expected + ", found " + found);
}

} // namespace Orrery::Host
