// The reading operations of a function variable on data of every shape.
#include "tests/variables/FunctionVarTestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;
using Sizes = std::vector<std::uint64_t>;

// --- shapes

struct ShapeCase
{
    const char* name;
    BVariant data;
    std::uint64_t offsets;
    std::uint64_t dimensions; ///< all of them, where stored data take one off
    Sizes shape;
};

class FunctionVarShape : public testing::TestWithParam<ShapeCase>
{
};

TEST_P(FunctionVarShape, IsThatOfTheDataWithAllDimensionsCounted)
{
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(GetParam().data);
    EXPECT_EQ(f.GetMaxIndepOffset(), GetParam().offsets);
    EXPECT_EQ(f.GetElementDimCount(), GetParam().dimensions);
    Sizes shape{99};
    EXPECT_EQ(f.GetElementShape(&shape), ER_SUCCESS);
    EXPECT_EQ(shape, GetParam().shape);
}

TEST_P(FunctionVarShape, ComesOutOfAComputationLikewise)
{
    PropertyObject top;
    auto* f = insert(top, std::make_unique<FunctionVar>(QStringLiteral("f")));
    auto* x = insert(top, std::make_unique<Variable>(QStringLiteral("x"), GetParam().data));
    auto function = std::make_unique<Function>(QStringLiteral("polynomial-1"));
    function->SetParameters({BVariant(0.0), BVariant(1.0)});
    ASSERT_EQ(f->SetFunction(function.get()), ER_SUCCESS);
    function.release();
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    EXPECT_EQ(f->GetMaxIndepOffset(), GetParam().offsets);
    EXPECT_EQ(f->GetElementDimCount(), GetParam().dimensions);
    EXPECT_EQ(ToDimensions(f->GetData()), ToDimensions(GetParam().data));
    EXPECT_EQ(updatesOf(*f), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Data, FunctionVarShape,
    testing::Values(ShapeCase{"Null", BVariant(), 0, 0, {}}, ShapeCase{"Scalar", BVariant(2.0), 1, 1, {}},
                    ShapeCase{"Vector", MakeCounting({5}), 5, 1, {}},
                    ShapeCase{"Row", MakeCounting({1, 5}), 5, 2, {5}},
                    ShapeCase{"Column", MakeCounting({5, 1}), 5, 2, {1}},
                    ShapeCase{"Ones", MakeCounting({1, 1}), 1, 2, {1}},
                    ShapeCase{"Matrix", MakeCounting({2, 3}), 2, 2, {3}},
                    ShapeCase{"Cube", MakeCounting({2, 3, 4}), 2, 3, {3, 4}},
                    ShapeCase{"Empty", BVariant(Doubles(), Sizes{0}, DataOrdering::RowMajor), 0, 1, {}},
                    ShapeCase{
                        "EmptyMatrix", BVariant(Doubles(), Sizes{3, 0}, DataOrdering::RowMajor), 0, 2, {0}}),
    [](const auto& test) { return std::string(test.param.name); });

// The difference is to be kept.
TEST(FunctionVarRead, CountsOneDimensionMoreThanStoredDataDo)
{
    const Variable plain(QStringLiteral("v"), MakeCounting({2, 3}));
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(MakeCounting({2, 3}));
    EXPECT_EQ(plain.GetElementDimCount(), 1u);
    EXPECT_EQ(f.GetElementDimCount(), 2u);
    Sizes ofPlain;
    Sizes ofFunction;
    plain.GetElementShape(&ofPlain);
    f.GetElementShape(&ofFunction);
    EXPECT_EQ(ofPlain, ofFunction);
}

// --- one offset

struct AtCase
{
    const char* name;
    BVariant data;
    std::uint64_t offset;
    ERESULT code;
    Doubles value; ///< {-7}, what stood there before, where it stays
    Sizes dimensions;
};

class FunctionVarValueAt : public testing::TestWithParam<AtCase>
{
};

TEST_P(FunctionVarValueAt, GivesTheElementOrLeavesTheOutput)
{
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(GetParam().data);
    BVariant out(-7.0);
    const MessageCapture log;
    EXPECT_EQ(f.GetValueAt(&out, GetParam().offset), GetParam().code);
    EXPECT_EQ(ToDoubles(out), GetParam().value);
    EXPECT_EQ(ToDimensions(out), GetParam().dimensions);
    EXPECT_EQ(log.warnings(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(
    Offsets, FunctionVarValueAt,
    testing::Values(AtCase{"FirstOfAVector", MakeCounting({3}), 0, ER_SUCCESS, {0}, {1}},
                    AtCase{"LastOfAVector", MakeCounting({3}), 2, ER_SUCCESS, {2}, {1}},
                    AtCase{"PastAVector", MakeCounting({3}), 3, ER_FAILED, {-7}, {1}},
                    AtCase{"FarPastAVector", MakeCounting({3}), UINT64_MAX, ER_FAILED, {-7}, {1}},
                    AtCase{"OfARow", MakeCounting({1, 3}), 1, ER_SUCCESS, {1}, {1}},
                    AtCase{"OfAMatrix", MakeCounting({2, 3}), 1, ER_SUCCESS, {3, 4, 5}, {3}},
                    AtCase{"PastAMatrix", MakeCounting({2, 3}), 2, ER_FAILED, {-7}, {1}},
                    AtCase{"OfAScalar", BVariant(4.0), 0, ER_SUCCESS, {4}, {1}},
                    AtCase{"PastAScalar", BVariant(4.0), 1, ER_INVALID_ARGUMENT, {-7}, {1}},
                    AtCase{"OfOneByOne", MakeCounting({1, 1}), 0, ER_SUCCESS, {0}, {1, 1}},
                    AtCase{"OfNull", BVariant(), 0, ER_SUCCESS, {}, {}},
                    AtCase{"PastNull", BVariant(), 1, ER_INVALID_ARGUMENT, {-7}, {1}}),
    [](const auto& test) { return std::string(test.param.name); });

// --- ranges

struct RangeCase
{
    const char* name;
    BVariant data;
    std::uint64_t start, end;
    ERESULT code;
    Doubles value; ///< {-7}, what stood there before, where it stays
    Sizes dimensions;
};

class FunctionVarValueRange : public testing::TestWithParam<RangeCase>
{
};

TEST_P(FunctionVarValueRange, GivesThePartOrFailsWithoutALogLine)
{
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(GetParam().data);
    BVariant out(-7.0);
    const MessageCapture log;
    EXPECT_EQ(f.GetValueRange(&out, GetParam().start, GetParam().end), GetParam().code);
    EXPECT_EQ(ToDoubles(out), GetParam().value);
    EXPECT_EQ(ToDimensions(out), GetParam().dimensions);
    EXPECT_EQ(log.warnings(), QStringList());
    EXPECT_EQ(log.debug(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, FunctionVarValueRange,
    testing::Values(RangeCase{"Whole", MakeCounting({3}), 0, 0, ER_SUCCESS, {0, 1, 2}, {3}},
                    RangeCase{"WholeByItsEnd", MakeCounting({3}), 0, 3, ER_SUCCESS, {0, 1, 2}, {3}},
                    RangeCase{
                        "WholeMatrix", MakeCounting({2, 3}), 0, 0, ER_SUCCESS, {0, 1, 2, 3, 4, 5}, {2, 3}},
                    RangeCase{"WholeScalar", BVariant(4.0), 0, 0, ER_SUCCESS, {4}, {1}},
                    RangeCase{"Start", MakeCounting({3}), 0, 2, ER_SUCCESS, {0, 1}, {2}},
                    RangeCase{"Middle", MakeCounting({4}), 1, 3, ER_SUCCESS, {1, 2}, {2}},
                    RangeCase{"ToTheEnd", MakeCounting({4}), 2, 0, ER_SUCCESS, {2, 3}, {2}},
                    RangeCase{"RowsOfAMatrix", MakeCounting({3, 2}), 1, 3, ER_SUCCESS, {2, 3, 4, 5}, {2, 2}},
                    // Offsets are counted along the second dimension here, but cut along the first.
                    RangeCase{"WholeRow", MakeCounting({1, 5}), 0, 5, ER_SUCCESS, {0, 1, 2, 3, 4}, {1, 5}},
                    RangeCase{"PartOfARow", MakeCounting({1, 5}), 1, 3, ER_FAILED, {-7}, {1}},
                    RangeCase{"EndPastTheData", MakeCounting({3}), 0, 4, ER_FAILED, {-7}, {1}},
                    RangeCase{"StartAtTheEnd", MakeCounting({3}), 3, 0, ER_FAILED, {}, {}},
                    RangeCase{"StartPastTheEnd", MakeCounting({3}), 9, 10, ER_FAILED, {}, {}},
                    RangeCase{"Null", BVariant(), 0, 0, ER_FAILED, {}, {}},
                    RangeCase{"Empty",
                              BVariant(Doubles(), Sizes{3, 0}, DataOrdering::RowMajor),
                              0,
                              0,
                              ER_FAILED,
                              {},
                              {3, 0}}), // the empty data themselves
    [](const auto& test) { return std::string(test.param.name); });

TEST(FunctionVarRead, RefusesNullResults)
{
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(MakeCounting({3}));
    EXPECT_EQ(f.GetValueAt(nullptr, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(f.GetValueRange(nullptr, 0, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(f.GetElementShape(nullptr), ER_INVALID_ARGUMENT);
}

TEST(FunctionVarRead, SharesThePayloadOfTheWhole)
{
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(MakeCounting({100}));
    BVariant out;
    ASSERT_EQ(f.GetValueRange(&out, 0, 0), ER_SUCCESS);
    EXPECT_EQ(out.constData(), f.GetData().constData());
}

TEST(FunctionVarRead, GivesAsARunWhatItsOffsetsGiveSingly)
{
    FunctionVar f(QStringLiteral("f"));
    f.UpdateData(MakeCounting({7, 2}));
    BVariant run;
    ASSERT_EQ(f.GetValueRange(&run, 2, 6), ER_SUCCESS);
    Doubles singly;
    for (std::uint64_t offset = 2; offset < 6; ++offset) {
        BVariant one;
        ASSERT_EQ(f.GetValueAt(&one, offset), ER_SUCCESS);
        const Doubles elements = ToDoubles(one);
        singly.insert(singly.end(), elements.begin(), elements.end());
    }
    EXPECT_EQ(ToDoubles(run), singly);
}

TEST(FunctionVarRead, TellsTheStoredFlag)
{
    FunctionVar f(QStringLiteral("f"));
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_TRUE(f.GetData(&flag).isNull());
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_EQ(&f.UpdateDataAsCellArrayFromBVariant(MakeCounting({3})), &f);
    EXPECT_EQ(ToDoubles(f.GetData(&flag)), (Doubles{0, 1, 2}));
    EXPECT_EQ(flag, IsCellArrayTrue);
}

} // namespace
} // namespace Orrery
