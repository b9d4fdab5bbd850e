#pragma once

#include <string>
#include <string_view>

namespace Orrery::Host {

/// Thrown when whoever reads standard output has gone: the program ends without a word.
struct ReaderGone
{
};

/// Standard output through one large buffer.
///
/// Errors: ReaderGone, or Failure such as for a full disk, when the buffer is written; flush() before the end, the
///         destructor writes nothing.
class Output
{
public:
    Output();

    /// The buffer, to append to; call written() after each piece.
    std::string& buffer() { return m_buffer; }

    /// Pass the buffer on when it is large enough.
    void written()
    {
        if (m_buffer.size() >= s_full)
            flush();
    }

    void write(std::string_view text);
    void flush();

private:
    static constexpr std::size_t s_full = 64U << 10U;

    std::string m_buffer;
};

} // namespace Orrery::Host
