#pragma once

#include "hosts/orrery/Output.h"

#include <QString>

#include <cstdint>
#include <string_view>
#include <vector>

namespace Orrery::Host {

/// Writes one JSON document piece by piece, so that it may be larger than memory.
///
/// Shape:  what is open() has a line for each of its items; what is openInline() is one line, with all inside.
/// Errors: those of Output. Calls must make up a document: a key before each value in an object, and only there.
class JsonWriter
{
public:
    explicit JsonWriter(Output& out)
        : m_out(out)
    {
    }

    void open(char bracket) { open(bracket, true); }
    void openInline(char bracket) { open(bracket, false); }

    /// Close what was opened last; of the document itself, with a line end behind it.
    void close();

    /// `name` must be plain ASCII.
    void key(std::string_view name);

    void string(std::string_view text);
    void string(const char* text) { string(std::string_view(text)); }
    void string(const std::string& text) { string(std::string_view(text)); }
    void string(const QString& text);
    void integer(std::uint64_t number);
    void number(double number);
    void boolean(bool value);
    void null();

    /// The place for a value that the caller appends to the buffer itself; no more than one, and written() after it.
    std::string& value();
    void written() { m_out.written(); }

private:
    struct Level
    {
        char closing;
        bool hasLines;
        bool isEmpty;
    };

    void open(char bracket, bool hasLines);
    void beginItem();
    void beginLine();

    Output& m_out;
    std::vector<Level> m_levels;
    bool m_isBehindKey = false;
};

} // namespace Orrery::Host
