// Any text is a name, and comes back as it was from every place in a tree.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <vector>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

struct NameCase
{
    const char* name;
    QString text;
};

QString Units(std::initializer_list<ushort> units)
{
    QString text;
    for (const ushort unit : units)
        text += QChar(unit);
    return text;
}

std::vector<NameCase> NameCases()
{
    return {
        {"Plain", QStringLiteral("Data")},
        {"Empty", QString()},
        {"Slash", QStringLiteral("/")},
        {"SlashAtTheEnd", QStringLiteral("a/")},
        {"SlashInside", QStringLiteral("V(out)/I(in)")},
        {"Percent", QStringLiteral("%")},
        {"LooksEncoded", QStringLiteral("%2F")},
        {"LooksShortened", QStringLiteral("%#0123")},
        {"Dot", QStringLiteral(".")},
        {"DotDot", QStringLiteral("..")},
        {"HiddenFile", QStringLiteral(".config")},
        {"Nul", Units({0})},
        {"NulInside", Units({'a', 0, 'b'})},
        {"LineBreaks", QStringLiteral("a\nb\r\tc")},
        {"Blanks", QStringLiteral("  two  ")},
        {"Catalogue", QStringLiteral("catalogue")},
        {"CatalogueHeap", QStringLiteral("catalogue-heap")},
        {"EncodedCatalogue", QStringLiteral("%63atalogue")},
        {"LoneHighSurrogate", Units({0xD800})},
        {"LoneLowSurrogate", Units({0xDFFF})},
        {"SurrogatesTheWrongWayRound", Units({0xDC00, 0xD800})},
        {"LoneSurrogateBeforeAPair", Units({0xD83D, 0xD83D, 0xDE00, 'x'})},
        {"Emoji", Units({0xD83D, 0xDE00})},
        {"Umlauts", QString::fromUtf8("gr\xC3\xBC\xC3\x9F")},
        {"Decomposed", Units({'u', 0x0308})},
        {"ByteOrderMarkFirst", Units({0xFEFF, 'a'})},
        {"ByteOrderMarksOnly", Units({0xFEFF, 0xFEFF})},
        {"MarkAfterASurrogate", Units({0xD800, 0xFEFF, 'a'})},
        {"SwappedMark", Units({0xFFFE})},
        {"LastUnit", Units({0xFFFF})},
        {"Replacement", Units({0xFFFD})},
        {"LongPlain", QString(5000, QLatin1Char('n'))},
        {"LongWithSameBeginning", QString(5000, QLatin1Char('n')) + QLatin1Char('m')},
        {"LongUmlauts", QString(900, QChar(0x00FC))},
        {"LongSlashes", QString(400, QLatin1Char('/'))},
        {"Exactly1024", QString(1024, QLatin1Char('k'))},
        {"VeryLong", QString(200'000, QLatin1Char('v'))},
    };
}

} // namespace

class NameRoundTrip : public ::testing::TestWithParam<NameCase>
{
};

TEST_P(NameRoundTrip, KeepsTheNameAtTheRootAndBelow)
{
    const QString& name = GetParam().text;
    const BVariant array(std::vector<double>{1.0, 2.0, 3.0});
    EXPECT_EQ(RoundTrip([&](PropertyObject& root) { AddValue(root, name, array); }), "");
    EXPECT_EQ(RoundTrip([&](PropertyObject& root) {
                  PropertyObject* const folder = AddFolder(root, name);
                  AddValue(*folder, name, array);
                  AddValue(*AddFolder(*folder, QStringLiteral("x")), name, BVariant(std::string("text")));
                  AddReference(root, QStringLiteral("reference"), *folder);
              }),
              "");
}

INSTANTIATE_TEST_SUITE_P(Names, NameRoundTrip, ::testing::ValuesIn(NameCases()), TestSupport::CaseName());

// All links of a group must be distinct, or one dataset would take another's place.
TEST(NameRoundTripOfAll, KeepsAllNamesApartInOneFolder)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  PropertyObject* const below = AddFolder(root, QStringLiteral("below"));
                  std::int32_t number = 0;
                  for (const NameCase& row : NameCases()) {
                      AddValue(root, row.text, BVariant(std::vector<std::int32_t>{++number}));
                      AddValue(*AddFolder(*below, row.text), QStringLiteral("Data"),
                               BVariant(std::vector<std::int32_t>{++number, number}));
                  }
              }),
              "");
}

TEST(TypeNameRoundTrip, KeepsAnyTypeNameOfAnUnknownType)
{
    class HostType : public PropertyObject
    {
    public:
        explicit HostType(const QString& name, const QString& type)
            : PropertyObject(name)
            , m_type(type)
        {
        }
        const QString& PropertyObjType() const override { return m_type; }

    private:
        QString m_type;
    };
    const auto build = [](PropertyObject& root) {
        for (const NameCase& row : NameCases()) {
            auto* const node = new HostType(QString::fromLatin1(row.name), row.text);
            AddValue(*node, QStringLiteral("Data"), BVariant(1.5));
            ASSERT_EQ(root.InsertProperty(node), ER_SUCCESS);
        }
    };
    EXPECT_EQ(RoundTrip(build), "");
}

} // namespace Orrery::StorageTest
