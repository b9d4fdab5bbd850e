#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Orrery::Host {

/// A regular file that is read once from front to back, as lines and as blocks of bytes, and that can say where
/// it stands when something in it is wrong.
///
/// The file is read, not mapped: a simulator may cut it short meanwhile, and that must be an error, not a signal.
/// Lines of a file in UTF-16LE (by its first bytes) are handed out as UTF-8.
class SourceFile
{
public:
    /// Receives how many bytes of how many have been read, each time that more have been.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t size)>;

    /// Errors: Failure when `path` can't be opened or isn't a regular file; a FIFO isn't waited for.
    explicit SourceFile(const std::string& path, Progress progress = {});
    ~SourceFile();
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    /// Whether the text in this file is UTF-16LE.
    bool isUtf16() const { return m_utf16; }

    /// Bytes that lie behind the current position, by the size that the file had when it was opened.
    std::uint64_t remaining() const { return m_size > position() ? m_size - position() : 0; }

    /// Offset of the first byte that hasn't been handed out.
    std::uint64_t position() const { return m_position; }

    /// Hand out the next line without its end (LF or CR LF). The last line of the file needs no end.
    ///
    /// Errors: false at the end of the file. Failure for a line above `limit` bytes.
    /// Edge:   `*line` is valid until the next call of any operation.
    bool readLine(std::string_view* line, std::uint64_t limit);

    /// Number of the line handed out last, from 1.
    std::uint64_t lineNumber() const { return m_line; }

    /// Whether the line handed out last had an end. A file that was cut off has none.
    bool isLineEnded() const { return m_isLineEnded; }

    /// Copy exactly `count` bytes. From here on the file is told by bytes, no longer by lines.
    ///
    /// Errors: Failure when the file ends before.
    /// Cost:   large counts go straight from the system to `to`.
    void read(char* to, std::uint64_t count);

    /// Throw the Failure "PATH: line N: expected EXPECTED, found FOUND", with "byte N" for "line N" once bytes
    /// have been read. The line is the one handed out last; the byte is where it began, or where the current
    /// block begins.
    [[noreturn]] void fail(const std::string& expected, const std::string& found) const;

private:
    bool fill();
    std::uint64_t readSome(char* to, std::uint64_t count);
    bool findLineEnd(std::size_t* from, std::size_t* length) const;
    std::string_view asText(std::string_view bytes);
    void detectEncoding();

    std::string m_path;
    Progress m_progress;
    std::uint64_t m_size = 0; // before m_descriptor, whose opening sets it
    int m_descriptor = -1;
    std::uint64_t m_fetched = 0;  // bytes that the system has given
    std::uint64_t m_position = 0; // bytes handed out
    std::uint64_t m_line = 0;     // number of the last line, from 1
    std::uint64_t m_place = 0;    // offset of the last line or block
    bool m_hasBytes = false;
    bool m_isLineEnded = true;
    bool m_utf16 = false;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::string m_converted;
};

} // namespace Orrery::Host
