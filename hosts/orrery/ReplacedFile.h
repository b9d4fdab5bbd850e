#pragma once

#include <string>

namespace Orrery::Host {

/// A new file that takes another one's place in one step, whole or not at all. Unlike QSaveFile it has a name from the
/// start, for libraries that want to open it themselves. An interruption from the keyboard, or another request to end the
/// program, removes it first.
///
/// Edge: one at a time.
class ReplacedFile
{
public:
    /// Makes an empty file beside `target`; a link is followed.
    ///
    /// Errors: Failure that names the target.
    explicit ReplacedFile(const std::string& target);

    /// Removes the new file unless it was committed.
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    /// The new file, by its name and open for writing.
    const std::string& path() const { return m_path; }
    int descriptor() const { return m_descriptor; }

    /// Bring it to the disk and put it in place.
    ///
    /// Errors: Failure that names the target, which is then as it was.
    void commit();

private:
    [[noreturn]] void fail() const;

    std::string m_name; ///< as it was given
    std::string m_target;
    std::string m_path;
    int m_descriptor = -1;
};

} // namespace Orrery::Host
