// Random concatenations beside a plain model that asks member after member and appends pair by pair.
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/RangeVar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace Orrery {
namespace {

using namespace JoinTest;
using TestSupport::randomBelow;

/// The members of a concatenation in their order; null for one that leads to no Variable.
using Members = std::vector<const Variable*>;

// --- the model

std::uint64_t countOf(const Members& members)
{
    std::uint64_t sum = 0;
    for (const Variable* member : members)
        sum += member ? member->GetMaxIndepOffset() : 0;
    return sum;
}

ERESULT valueAt(const Members& members, BVariant* out, std::uint64_t offset)
{
    std::uint64_t end = 0;
    for (const Variable* member : members) {
        if (!member)
            return ER_FAILED;
        const std::uint64_t begin = end;
        end += member->GetMaxIndepOffset();
        if (offset < end)
            return member->GetValueAt(out, offset - begin);
    }
    return ER_INVALID_ARGUMENT;
}

ERESULT valueRange(const Members& members, BVariant* out, std::uint64_t start, std::uint64_t end)
{
    if (end == 0)
        end = countOf(members);
    *out = BVariant();
    if (end == 0)
        return ER_FAILED;
    if (members.empty())
        return ER_INVALID_ARGUMENT;
    std::uint64_t position = 0;
    ERESULT code = ER_SUCCESS;
    bool started = false;
    for (const Variable* member : members) {
        if (!member)
            return ER_FAILED;
        const std::uint64_t size = member->GetMaxIndepOffset();
        const std::uint64_t begin = position;
        position += size;
        const std::uint64_t localEnd = std::min(size, end - begin);
        std::uint64_t localStart = 0;
        if (begin <= start && start < position) {
            started = true;
            localStart = start - begin;
            if (start == begin && localEnd == 0)
                continue;
        } else if (end <= begin || !started || localEnd == 0) {
            continue;
        }
        if (out->isEmpty()) {
            code = member->GetValueRange(out, localStart, localEnd);
        } else {
            BVariant piece;
            code = member->GetValueRange(&piece, 0, localEnd);
            *out = appendValues(*out, piece);
        }
        if (code < 0)
            return code;
    }
    return end > position ? ER_INVALID_ARGUMENT : code;
}

BVariant dataOf(const Members& members)
{
    BVariant out;
    const ERESULT code = valueRange(members, &out, 0, countOf(members));
    return code < 0 ? BVariant() : out;
}

// --- random concatenations

enum class Regime
{
    Numbers, ///< vectors of numbers, which can all be joined
    OneType, ///< vectors of any one type
    Anything ///< all shapes, types and failures
};

class RandomConcat
{
public:
    /// With up to `most` members.
    RandomConcat(Regime regime, std::mt19937_64& random, std::uint64_t most = 5)
        : m_regime(regime)
        , m_random(random)
    {
        const auto& rows = TestSupport::elementRows();
        m_code = rows[below(rows.size())].code;
        const std::uint64_t count = below(most + 1);
        for (std::uint64_t i = 0; i < count; ++i)
            addMember(i);
    }

    ConcatVar* concat() const { return m_concat; }
    const Members& members() const { return m_members; }

    /// The runs that hosts' members were asked for since the last call.
    QStringList takeCalls() { return std::exchange(m_calls, {}); }

private:
    std::uint64_t below(std::uint64_t bound) { return randomBelow(m_random, bound); }
    bool chance(std::uint64_t percent) { return below(100) < percent; }

    void addMember(std::uint64_t i)
    {
        const QString name = numbered("m", i);
        switch (below(m_regime == Regime::Anything ? 12 : 8)) {
        case 0:
            refer(range(name));
            break;
        case 1:
            refer(nested(name));
            break;
        case 2:
        case 3:
            m_members.push_back(insertData(*m_concat, nextName(), data()));
            break;
        case 8:
        case 9:
        case 10:
            refer(host(name));
            break;
        case 11:
            addBroken(name);
            break;
        default:
            refer(insertData(m_top, name, data()));
        }
    }

    QString nextName() const
    {
        QString name;
        m_concat->nextNumberedChildName(&name);
        return name;
    }

    void refer(const Variable* variable)
    {
        if (m_concat->AddVariable(variable) < 0)
            throw std::logic_error("a member can't be added");
        m_members.push_back(variable);
    }

    void addBroken(const QString& name)
    {
        if (chance(50))
            m_concat->SetPropertyRef(nextName(), insertFolder(m_top, name));
        else
            m_concat->SetProperty(nextName(), 1.0);
        m_members.push_back(nullptr);
    }

    std::uint16_t typeCode()
    {
        if (m_regime == Regime::OneType)
            return m_code;
        const auto& rows = TestSupport::elementRows();
        for (;;) {
            const auto& row = rows[below(rows.size())];
            const bool number =
                row.kind != TestSupport::ElementKind::Text && row.kind != TestSupport::ElementKind::Time;
            if (number || (m_regime == Regime::Anything && chance(30)))
                return row.code;
        }
    }

    Sizes vectorShape()
    {
        const std::uint64_t size = below(4);
        const Sizes shapes[] = {{size},    {size},       {size},       {1, size},
                                {size, 1}, {1, 1, size}, {size, 1, 1}, {1, size, 1}};
        return shapes[below(8)];
    }

    Sizes matrixShape() { return {1 + below(3), 1 + below(3), chance(30) ? 2U : 1U}; }

    BVariant data()
    {
        if (chance(8))
            return BVariant();
        if (m_regime == Regime::Anything && chance(4))
            return BVariant::runTime(std::pair<int, int>(1, 2));
        const bool matrix = m_regime == Regime::Anything && chance(12);
        const Sizes shape = matrix ? matrixShape() : vectorShape();
        const DataOrdering ordering = chance(25) ? DataOrdering::ColumnMajor : DataOrdering::RowMajor;
        const BVariant array = operationsOf(typeCode()).random(shape, ordering, m_random);
        return array.holdsScalar() && chance(50)
                   ? elementAt(array, std::vector<std::uint64_t>(shape.size(), 0))
                   : array;
    }

    const Variable* range(const QString& name)
    {
        if (m_regime == Regime::OneType)
            return insertData(m_top, name, data());
        auto* const axis = insert(m_top, std::make_unique<RangeVar>(name));
        axis->SetStart(0.5);
        axis->SetCount(below(4));
        if (m_regime == Regime::Anything && chance(10))
            axis->SetStart(BVariant("unreadable"));
        return axis;
    }

    const Variable* nested(const QString& name)
    {
        auto* const inner = insert(m_top, std::make_unique<ConcatVar>(name));
        const std::uint64_t count = below(3);
        for (std::uint64_t i = 0; i < count; ++i)
            insertData(*inner, QString::number(i), data());
        return inner;
    }

    /// Promises one thing and does another, the same each time.
    const Variable* host(const QString& name)
    {
        HostVariable* const made = insertHost(m_top, name);
        const std::uint64_t size = chance(4) ? largest - below(3) : below(4);
        made->count = [size] { return size; };
        const ERESULT codes[] = {ER_SUCCESS, ER_SUCCESS,  ER_SUCCESS, static_cast<ERESULT>(3),
                                 ER_FAILED,  ER_NOT_FOUND};
        const ERESULT code = codes[below(6)];
        const bool throws = chance(6);
        const bool writes = chance(85);
        const BVariant value = data();
        const auto answer = [this, name, code, throws, writes, value](BVariant* out, const QString& what) {
            m_calls.append(name + what);
            if (throws)
                throw std::invalid_argument(("host " + name).toStdString());
            if (writes)
                *out = value;
            return code;
        };
        made->at = [answer](BVariant* out, std::uint64_t offset) {
            return answer(out, QStringLiteral(" at %1").arg(offset));
        };
        made->range = [answer](BVariant* out, std::uint64_t start, std::uint64_t end) {
            return answer(out, QStringLiteral(" %1 to %2").arg(start).arg(end));
        };
        return made;
    }

    Regime m_regime;
    std::mt19937_64& m_random;
    std::uint16_t m_code = 0;
    PropertyObject m_top{QStringLiteral("top")};
    ConcatVar* m_concat = insert(m_top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    Members m_members;
    QStringList m_calls;
};

/// All offsets, the first ones past the end, and ones so far off that differences wrap.
std::vector<std::uint64_t> boundsOf(std::uint64_t count)
{
    std::set<std::uint64_t> bounds{count - 1, count, count + 1, std::uint64_t{1} << 63, largest};
    for (std::uint64_t i = 0; i <= std::min<std::uint64_t>(count, 14) + 2; ++i)
        bounds.insert(i);
    return {bounds.begin(), bounds.end()};
}

/// What the tests have come across, so that a generator that makes nothing of interest is noticed.
struct Coverage
{
    int successes = 0;
    int joined = 0;
    int failures = 0;
    int failuresWithValues = 0;
    int exceptions = 0;
    int exceptionsWithValues = 0;

    void note(const Reading& reading)
    {
        const bool values = !reading.out.isEmpty();
        if (reading.failure.type != "none") {
            ++exceptions;
            exceptionsWithValues += values;
        } else if (reading.code < 0) {
            ++failures;
            failuresWithValues += values;
        } else {
            ++successes;
            joined += reading.out.elementCount() > 4;
        }
    }
};

class ConcatVarModel : public testing::Test
{
protected:
    void compare(RandomConcat& made)
    {
        const ConcatVar& c = *made.concat();
        const Members& members = made.members();
        const std::uint64_t count = countOf(members);
        ASSERT_EQ(c.GetMaxIndepOffset(), count);
        const auto bounds = boundsOf(count);
        for (const std::uint64_t offset : bounds)
            compareAt(made, offset);
        for (const std::uint64_t start : bounds) {
            for (const std::uint64_t end : bounds)
                compareRange(made, start, end);
        }
        expectSame(made, readingOf([&](BVariant* out) {
                       *out = dataOf(members);
                       return ER_SUCCESS;
                   }),
                   [&] { return readData(c); });
    }

    void compareAt(RandomConcat& made, std::uint64_t offset)
    {
        SCOPED_TRACE(testing::Message() << "offset " << offset);
        expectSame(made, readingOf([&](BVariant* out) { return valueAt(made.members(), out, offset); }),
                   [&] { return readAt(*made.concat(), offset); });
    }

    void compareRange(RandomConcat& made, std::uint64_t start, std::uint64_t end)
    {
        SCOPED_TRACE(testing::Message() << "from " << start << " to " << end);
        expectSame(made,
                   readingOf([&](BVariant* out) { return valueRange(made.members(), out, start, end); }),
                   [&] { return readRange(*made.concat(), start, end); });
    }

    /// One concatenation for each seed, up to the first that differs.
    void compareMany(Regime regime, std::uint64_t firstSeed)
    {
        const MessageCapture log; // ranges that can't be read say so
        for (std::uint64_t i = 0; i < 400 && !HasFailure(); ++i) {
            const TestSupport::RandomSeed seed{firstSeed + i};
            SCOPED_TRACE(seed);
            auto random = seed.engine();
            RandomConcat made(regime, random);
            compare(made);
        }
    }

    Coverage coverage;

private:
    void expectSame(RandomConcat& made, const Reading& expected, const std::function<Reading()>& read)
    {
        const QStringList expectedCalls = made.takeCalls();
        const Reading actual = read();
        EXPECT_EQ(actual, expected);
        EXPECT_EQ(made.takeCalls(), expectedCalls); // the members that were read, in their order
        coverage.note(expected);
    }
};

TEST_F(ConcatVarModel, HoldsForVectorsOfNumbers)
{
    compareMany(Regime::Numbers, 10000);
    EXPECT_GT(coverage.joined, 1000);
    EXPECT_GT(coverage.failuresWithValues, 1000);
}

TEST_F(ConcatVarModel, HoldsForVectorsOfOneType)
{
    compareMany(Regime::OneType, 20000);
    EXPECT_EQ(coverage.exceptions, 0);
    EXPECT_GT(coverage.joined, 1000);
    EXPECT_GT(coverage.failuresWithValues, 1000);
}

TEST_F(ConcatVarModel, HoldsForManyMembers)
{
    const MessageCapture log;
    for (std::uint64_t i = 0; i < 150 && !HasFailure(); ++i) {
        const TestSupport::RandomSeed seed{50000 + i};
        SCOPED_TRACE(seed);
        auto random = seed.engine();
        RandomConcat made(i % 3 == 0 ? Regime::Anything : Regime::OneType, random, 60);
        const Members& members = made.members();
        const std::uint64_t count = countOf(members);
        ASSERT_EQ(made.concat()->GetMaxIndepOffset(), count);
        for (int read = 0; read < 40; ++read) {
            const std::uint64_t start = randomBelow(random, count % 200 + 2);
            const std::uint64_t end = randomBelow(random, count % 200 + 3);
            compareRange(made, start, end);
            compareAt(made, start);
        }
        compareRange(made, 0, 0);
    }
    EXPECT_GT(coverage.joined, 500);
    EXPECT_GT(coverage.failuresWithValues, 100);
}

TEST_F(ConcatVarModel, HoldsForMembersOfAllShapesTypesAndFailures)
{
    compareMany(Regime::Anything, 30000);
    EXPECT_GT(coverage.successes, 1000);
    EXPECT_GT(coverage.failures, 1000);
    EXPECT_GT(coverage.failuresWithValues, 300);
    EXPECT_GT(coverage.exceptions, 300);
    EXPECT_GT(coverage.exceptionsWithValues, 300);
}

} // namespace
} // namespace Orrery
