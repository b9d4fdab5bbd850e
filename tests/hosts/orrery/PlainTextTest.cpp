#include "hosts/orrery/PlainText.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

TEST(PrintableText, ShowsControlCharactersAndKeepsTheRest)
{
    EXPECT_EQ(printable("a\\b \xC2\xB5 \xE2\x82\xAC"), "a\\b \xC2\xB5 \xE2\x82\xAC");
    EXPECT_EQ(printable("1\n2\t3\r4\x1b[m\x7f"), "1\\n2\\t3\\r4\\x1b[m\\x7f");
    EXPECT_EQ(printable("\xC2\x9B"
                        "1m"),
              "\\x9b1m"); // the one-character form of ESC [
    EXPECT_EQ(printable(std::string("\0", 1)), "\\x00");
    EXPECT_EQ(printable("\xC2"), "\xC2");
}

TEST(QuotedText, IsCutBetweenCharacters)
{
    EXPECT_EQ(inQuotes(""), "''");
    EXPECT_EQ(inQuotes(std::string(40, 'x')), "'" + std::string(40, 'x') + "'");
    EXPECT_EQ(inQuotes(std::string(41, 'x')), "'" + std::string(40, 'x') + "...'");
    EXPECT_EQ(inQuotes(std::string(39, 'x') + "\xC2\xB5x"), "'" + std::string(39, 'x') + "...'");
    EXPECT_EQ(inQuotes("\xFF"), "'\xC3\xBF'"); // Latin-1
}

TEST(DecodedText, IsUtf8OrLatin1)
{
    EXPECT_EQ(decoded("\xC2\xB5"), QString(QChar(0xB5)));
    EXPECT_EQ(decoded("\xB5"), QString(QChar(0xB5)));
    EXPECT_EQ(decoded("\xE2\x82"), QString("\xC3\xA2\xC2\x82"));
    EXPECT_EQ(decoded(std::string_view("a\0b", 3)).size(), 3);
    EXPECT_EQ(decoded(""), QString());
}

TEST(TrimmedText, HasNoBlanksAtItsEnds)
{
    EXPECT_EQ(trimmed(" \t a b\r"), "a b");
    EXPECT_EQ(trimmed(" \t\r"), "");
    EXPECT_EQ(trimmed(""), "");
}

} // namespace Orrery::Host
