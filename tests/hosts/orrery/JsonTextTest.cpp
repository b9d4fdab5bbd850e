#include "hosts/orrery/JsonText.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace Orrery::Host {

using namespace std::string_literals;

namespace {

std::string string(const std::string& text)
{
    std::string out;
    appendJsonString(&out, std::string_view(text));
    return out;
}

std::string bytes(const std::string& text)
{
    std::string out;
    appendJsonBytes(&out, text);
    return out;
}

std::string number(double value)
{
    std::string out;
    appendJsonNumber(&out, value);
    return out;
}

} // namespace

TEST(JsonString, EscapesWhatMustBeAndWhatSteersATerminal)
{
    EXPECT_EQ(string("a\"\\/"), R"("a\"\\/")");
    EXPECT_EQ(string("\n\t\r\b\0\x1f\x7f"s), R"("\n\t\r\u0008\u0000\u001f\u007f")");
    EXPECT_EQ(string("\xC2\x80\xC2\x9F\xC2\xA0"), "\"\\u0080\\u009f\xC2\xA0\"");
    EXPECT_EQ(string("µ€\xF0\x9D\x84\x9E"), "\"µ€\xF0\x9D\x84\x9E\"");
    EXPECT_EQ(string(""), "\"\"");
}

TEST(JsonString, HasAReplacementForEachByteThatIsNoUtf8)
{
    EXPECT_EQ(string("a\xFFz"), "\"a\xEF\xBF\xBDz\"");
    EXPECT_EQ(string("\xE2\x82"), "\"\xEF\xBF\xBD\xEF\xBF\xBD\"");
}

TEST(JsonString, HasAReplacementForEachHalfOfASurrogatePair)
{
    const QString text =
        QString(QChar(0xD800)) + "a" + QChar(0xDC00) + QChar(0xD834) + QChar(0xDD1E) + QChar(0xD834);
    std::string out;
    appendJsonString(&out, text);
    EXPECT_EQ(out, "\"\xEF\xBF\xBD"
                   "a\xEF\xBF\xBD\xF0\x9D\x84\x9E\xEF\xBF\xBD\"");
}

TEST(JsonBytes, ComeBackAsTheyAre)
{
    EXPECT_EQ(bytes("µ"), "\"µ\"");
    EXPECT_EQ(bytes("\xFF\xFE"), R"({"base64": "//4="})");
    // Longer forms, surrogates, beyond U+10FFFF, cut off, and a continuation alone.
    for (const char* const text : {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                                   "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x82", "\x80", "\xC2"})
        EXPECT_EQ(bytes(text).substr(0, 12), R"({"base64": ")") << text;
    for (const char* const text :
         {"\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_EQ(bytes(text).front(), '"') << text;
}

TEST(JsonNumber, IsTheShortestThatReadsBack)
{
    EXPECT_EQ(number(0.1), "0.1");
    EXPECT_EQ(number(1e22), "1e+22");
    EXPECT_EQ(number(3.0), "3");
    EXPECT_EQ(number(-0.0), "-0.0");
    EXPECT_EQ(number(5e-324), "5e-324");
}

TEST(JsonNumber, IsAStringWhereJsonHasNone)
{
    EXPECT_EQ(number(std::numeric_limits<double>::quiet_NaN()), "\"NaN\"");
    EXPECT_EQ(number(-std::numeric_limits<double>::quiet_NaN()), "\"NaN\"");
    EXPECT_EQ(number(std::numeric_limits<double>::infinity()), "\"Infinity\"");
    EXPECT_EQ(number(-std::numeric_limits<double>::infinity()), "\"-Infinity\"");
}

} // namespace Orrery::Host
