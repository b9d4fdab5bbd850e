#include "hosts/orrery/VectorNames.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

struct NamesCase
{
    const char* story;
    QStringList given;
    QStringList names;
};

class VectorNames : public ::testing::TestWithParam<NamesCase>
{
};

TEST_P(VectorNames, AreUniqueAndNoneIsAPartOfASweep)
{
    EXPECT_EQ(vectorNames(GetParam().given), GetParam().names);
}

INSTANTIATE_TEST_SUITE_P(
    Plots, VectorNames,
    ::testing::Values(NamesCase{"Ordinary",
                                {"v(a)", "", "Title", "x0", "-1", "0x"},
                                {"v(a)", "", "Title", "x0", "-1", "0x"}},
                      NamesCase{"Repeated", {"x", "x", "x_2", "x"}, {"x", "x_2", "x_2_2", "x_3"}},
                      NamesCase{"Numbers",
                                {"0", "17", "007", "99999999999999999999"},
                                {"0_", "17_", "007_", "99999999999999999999_"}},
                      NamesCase{"Parameter", {"Parameter", "parameter"}, {"Parameter_", "parameter"}},
                      NamesCase{"IndepsOfAnother", {"x_Indeps", "x"}, {"x_Indeps_", "x"}},
                      NamesCase{"IndepsOfNone", {"x_Indeps", "y"}, {"x_Indeps", "y"}},
                      NamesCase{"IndepsOfTheEmptyName", {"", "_Indeps"}, {"", "_Indeps_"}},
                      NamesCase{"GivenWay", {"0", "0_", "0__"}, {"0___", "0_", "0__"}},
                      NamesCase{"IndepsOfARenamedOne", {"0__Indeps", "0"}, {"0__Indeps_", "0_"}},
                      NamesCase{"None", {}, {}}),
    [](const auto& row) { return std::string(row.param.story); });

} // namespace Orrery::Host
