#pragma once

#include "hosts/orrery/Colour.h"

#include <string>
#include <string_view>

namespace Orrery::Host {

/// Thrown when whoever reads standard output has gone: the program ends without a word.
struct ReaderGone
{
};

/// Standard output, or a file that is open, through one large buffer.
///
/// Errors: ReaderGone, or Failure such as for a full disk, when the buffer is written; flush() before the end, the
///         destructor writes nothing.
class Output
{
public:
    Output();

    /// Writes to a file, which stays the caller's; `name` stands before what goes wrong.
    Output(int descriptor, const std::string& name);

    /// The buffer, to append to; call written() after each piece.
    std::string& buffer() { return m_buffer; }

    /// Pass the buffer on when it is large enough.
    void written()
    {
        if (m_buffer.size() >= s_full)
            flush();
    }

    /// Whether whoever reads wants colours; nobody does until told.
    void setColoured(bool isColoured) { m_isColoured = isColoured; }

    /// `text`, which may be empty, in a colour where they are wanted, else as it is. Measure its columns before.
    std::string painted(Ink ink, std::string_view text) const
    {
        return m_isColoured ? inked(ink, text) : std::string(text);
    }

    void write(std::string_view text);
    void flush();

private:
    static constexpr std::size_t s_full = 64U << 10U;

    int m_descriptor;
    std::string m_name;
    std::string m_buffer;
    bool m_isColoured = false;
};

} // namespace Orrery::Host
