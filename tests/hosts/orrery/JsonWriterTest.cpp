#include "hosts/orrery/JsonWriter.h"

#include "hosts/orrery/JsonElements.h"
#include "hosts/orrery/UnitText.h"

#include <gtest/gtest.h>

#include <complex>
#include <vector>

namespace Orrery::Host {

using Brindle::Quay::BVariant;

TEST(JsonWriter, GivesEachItemALineOrAllOne)
{
    Output out;
    JsonWriter json(out);
    json.open('{');
    json.key("a");
    json.open('[');
    json.integer(1);
    json.openInline('{');
    json.key("b");
    json.open('['); // inside of a line
    json.boolean(true);
    json.null();
    json.close();
    json.close();
    json.close();
    json.key("c");
    json.string("x\n");
    json.key("d");
    json.number(0.5);
    json.close();
    EXPECT_EQ(
        out.buffer(),
        "{\n  \"a\": [\n    1,\n    {\"b\": [true, null]}\n  ],\n  \"c\": \"x\\n\",\n  \"d\": 0.5\n}\n");
}

TEST(JsonWriter, HasNoLinesForWhatIsEmpty)
{
    Output out;
    JsonWriter json(out);
    json.open('[');
    json.open('{');
    json.close();
    json.open('[');
    json.close();
    json.close();
    EXPECT_EQ(out.buffer(), "[\n  {},\n  []\n]\n");
}

namespace {

std::string items(const BVariant& values, const std::vector<std::uint64_t>& dimensions)
{
    Output out;
    JsonWriter json(out);
    json.openInline('[');
    JsonElements(values).writeItems(json, dimensions);
    json.close();
    return out.buffer();
}

} // namespace

TEST(JsonElements, AreNestedByTheirDimensions)
{
    EXPECT_EQ(items(BVariant(std::vector<int>{1, 2, 3, 4, 5, 6}, {3, 2}), {3, 2}),
              "[[1, 2], [3, 4], [5, 6]]\n");
    EXPECT_EQ(items(BVariant(std::vector<bool>{true, false}), {2}), "[true, false]\n");
    EXPECT_EQ(items(BVariant(std::vector<std::complex<float>>{{0.1F, -0.0F}}), {1}), "[[0.1, -0.0]]\n");
    EXPECT_EQ(items(BVariant(std::vector<std::string>{"\xFF", "nan"}), {2}),
              "[{\"base64\": \"/w==\"}, \"nan\"]\n");
    EXPECT_EQ(items(BVariant(), {}), "[]\n");
}

TEST(JsonUnits, TellTheirNumbers)
{
    Output out;
    JsonWriter json(out);
    json.openInline('[');
    writeUnits(json, parseUnits("dBm"));
    writeUnits(json, std::nullopt);
    json.close();
    EXPECT_EQ(
        out.buffer(),
        "[{\"label\": \"dBm\", \"si\": \"dB(mW)\", \"type\": \"power\", \"base\": \"W\", \"dimensions\": "
        "\"m^2*kg/s^3\", \"scale\": 0.001, \"offset\": 0, \"log_scale\": 10}, null]\n");
}

} // namespace Orrery::Host
