// Random sweeps beside a plain model that sets element after element.
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVariable.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Orrery {
namespace {

using namespace JoinTest;
using TestSupport::randomBelow;

/// What a sweep reads from: the members of the concatenation, null for one that leads to no Variable.
struct Sweep
{
    const Variable* parameter = nullptr;
    std::vector<const Variable*> members;
};

// --- the model

std::uint64_t countOf(const Sweep& sweep)
{
    std::uint64_t sum = 0;
    for (const Variable* member : sweep.members)
        sum += member ? member->GetMaxIndepOffset() : 0;
    return sum;
}

ERESULT valueAt(const Sweep& sweep, BVariant* out, std::uint64_t offset)
{
    std::uint64_t end = 0;
    for (std::size_t i = 0; i < sweep.members.size(); ++i) {
        if (!sweep.members[i])
            return ER_FAILED;
        end += sweep.members[i]->GetMaxIndepOffset();
        if (offset < end)
            return sweep.parameter->GetValueAt(out, i);
    }
    return ER_INVALID_ARGUMENT;
}

BVariant arrayLike(const BVariant& sample, std::uint64_t count)
{
    Sizes dimensions = ToDimensions(sample);
    if (dimensions == Sizes{1})
        dimensions[0] = count;
    else
        dimensions.insert(dimensions.begin(), count);
    if (sample.getWellKnownType().code() == 32)
        throw std::runtime_error("Creating with run-time wellknowntype is not allowed.");
    return createArray(sample.getWellKnownType(), {dimensions.data(), dimensions.size()},
                       DataOrdering::RowMajor);
}

/// Fill `result`, as far as nothing fails. `code` is that of the sample.
ERESULT fill(const Sweep& sweep, BVariant& result, std::uint64_t start, std::uint64_t end, ERESULT code)
{
    std::uint64_t written = 0;
    std::uint64_t position = 0;
    bool started = false;
    const auto set = operationsOf(result.getWellKnownType().code()).set;
    for (std::size_t i = 0; i < sweep.members.size(); ++i) {
        if (!sweep.members[i])
            return ER_FAILED;
        const std::uint64_t size = sweep.members[i]->GetMaxIndepOffset();
        const std::uint64_t begin = position;
        position += size;
        const std::uint64_t localEnd = std::min(size, end - begin);
        std::uint64_t localStart = 0;
        const bool isFirst = begin <= start && start < position;
        if (isFirst) {
            started = true;
            localStart = start - begin;
        } else if (end <= begin || !started) {
            continue;
        }
        if (localEnd == 0 && (!isFirst || start == begin))
            continue;
        BVariant value;
        code = sweep.parameter->GetValueAt(&value, i);
        for (std::uint64_t k = 0; k < localEnd - localStart; ++k)
            set(result, written + k, value);
        written += localEnd - localStart;
        if (code < 0)
            return code;
    }
    return code;
}

ERESULT valueRange(const Sweep& sweep, BVariant* out, std::uint64_t start, std::uint64_t end)
{
    if (end == 0)
        end = countOf(sweep);
    BVariant sample;
    const ERESULT code = valueAt(sweep, &sample, 0);
    BVariant result = arrayLike(sample, end - start);
    const ERESULT filled = code < 0 ? code : fill(sweep, result, start, end, code);
    *out = result;
    return filled;
}

// --- random sweeps

class RandomSweep
{
public:
    /// Over up to `most` members.
    explicit RandomSweep(std::mt19937_64& random, std::uint64_t most = 5)
        : m_random(random)
    {
        const std::uint64_t count = below(most + 1);
        m_rarity = std::max<std::uint64_t>(12, 2 * count);
        for (std::uint64_t i = 0; i < count; ++i)
            addMember(numbered("m", i));
        m_model.parameter = below(3) == 0 ? host(count) : insertData(m_top, QStringLiteral("p"), data(count));
        if (m_sweep->SetParameter(m_model.parameter) < 0 || m_sweep->SetConcatVar(m_concat) < 0)
            throw std::logic_error("a sweep can't be made");
    }

    const SweptVariable& sweep() const { return *m_sweep; }
    const Sweep& model() const { return m_model; }

    /// What a host's parameter was asked for since the last call.
    QStringList takeCalls() { return std::exchange(m_calls, {}); }

private:
    std::uint64_t below(std::uint64_t bound) { return randomBelow(m_random, bound); }

    void addMember(const QString& name)
    {
        const std::uint64_t kind = below(m_rarity);
        if (kind == 0) {
            m_concat->SetPropertyRef(QString::number(m_model.members.size()), insertFolder(m_top, name));
            m_model.members.push_back(nullptr);
            return;
        }
        const Variable* member = nullptr;
        if (kind == 1) {
            HostVariable* const made = insertHost(m_top, name);
            const std::uint64_t size = below(5) == 0 ? largest - below(3) : below(4);
            made->count = [size] { return size; };
            member = made;
        } else {
            member = insertData(m_top, name, MakeCounting({below(4)}));
        }
        if (m_concat->AddVariable(member) < 0)
            throw std::logic_error("a member can't be added");
        m_model.members.push_back(member);
    }

    std::uint16_t typeCode()
    {
        const auto& rows = TestSupport::elementRows();
        return rows[below(rows.size())].code;
    }

    /// About as many values as there are members, now and then in rows.
    BVariant data(std::uint64_t members)
    {
        const std::uint64_t size = below(5) == 0 ? below(members + 1) : members + below(2);
        const Sizes shapes[] = {{size}, {size}, {size}, {size, 1}, {1, size}, {size, 1, 1}, {size, 2}};
        const DataOrdering ordering = below(4) == 0 ? DataOrdering::ColumnMajor : DataOrdering::RowMajor;
        return operationsOf(typeCode()).random(shapes[below(7)], ordering, m_random);
    }

    /// A parameter with an answer of its own for each member.
    const Variable* host(std::uint64_t members)
    {
        struct Answer
        {
            ERESULT code;
            bool throws;
            BVariant value;
        };
        std::vector<Answer> answers;
        const std::uint16_t usual = typeCode();
        const Sizes usualShape = below(3) == 0 ? Sizes{1, 1} : Sizes{1};
        for (std::uint64_t i = 0; i < members; ++i) {
            const std::uint16_t type = below(5) == 0 ? typeCode() : usual;
            const Sizes shapes[] = {{1}, {1, 1}, {2}, {0}, {1, 1, 1}};
            const Sizes shape = below(4) == 0 ? shapes[below(5)] : usualShape;
            const ERESULT codes[] = {ER_FAILED, ER_NOT_FOUND, static_cast<ERESULT>(2)};
            BVariant value = operationsOf(type).random(shape, DataOrdering::RowMajor, m_random);
            if (below(12) == 0)
                value = below(2) == 0 ? BVariant() : BVariant::runTime(std::pair<int, int>(1, 2));
            answers.push_back({below(6) == 0 ? codes[below(3)] : ER_SUCCESS, below(20) == 0, value});
        }
        HostVariable* const made = insertHost(m_top, QStringLiteral("p"));
        made->at = [this, answers](BVariant* out, std::uint64_t offset) {
            m_calls.append(QString::number(offset));
            if (offset >= answers.size())
                throw std::logic_error("asked for a member that doesn't exist");
            if (answers[offset].throws)
                throw std::out_of_range("no value");
            *out = answers[offset].value;
            return answers[offset].code;
        };
        return made;
    }

    std::mt19937_64& m_random;
    std::uint64_t m_rarity = 12; // one member in so many is out of the ordinary
    PropertyObject m_top{QStringLiteral("top")};
    ConcatVar* m_concat = insert(m_top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    SweptVariable* m_sweep = insert(m_top, std::make_unique<SweptVariable>(QStringLiteral("s")));
    Sweep m_model;
    QStringList m_calls;
};

struct Coverage
{
    int successes = 0;
    int failures = 0;
    int failuresWithValues = 0;
    int lengthErrors = 0;
    int otherExceptions = 0;

    void note(const Reading& reading)
    {
        if (reading.failure.type == "std::length_error")
            ++lengthErrors;
        else if (reading.failure.type != "none")
            ++otherExceptions;
        else if (reading.code >= 0)
            ++successes;
        else if (reading == refused(reading.code))
            ++failures;
        else
            ++failuresWithValues;
    }
};

class SweptVariableModel : public testing::Test
{
protected:
    void compare(RandomSweep& made)
    {
        const Sweep& model = made.model();
        const std::uint64_t count = countOf(model);
        ASSERT_EQ(made.sweep().GetMaxIndepOffset(), count);
        const std::uint64_t near = std::min<std::uint64_t>(count, 14) + 3;
        for (std::uint64_t offset = 0; offset <= near; ++offset)
            compareAt(made, offset);
        for (std::uint64_t start = 0; start <= near; ++start) {
            for (std::uint64_t end = 0; end <= near; ++end)
                compareRange(made, start, end);
            compareRange(made, start, largest);
        }
        expectSame(made, dataOf(model), [&] { return readData(made.sweep()); });
    }

    void compareAt(RandomSweep& made, std::uint64_t offset)
    {
        SCOPED_TRACE(testing::Message() << "offset " << offset);
        expectSame(made, readingOf([&](BVariant* out) { return valueAt(made.model(), out, offset); }),
                   [&] { return readAt(made.sweep(), offset); });
    }

    void compareRange(RandomSweep& made, std::uint64_t start, std::uint64_t end)
    {
        SCOPED_TRACE(testing::Message() << "from " << start << " to " << end);
        expectSame(made, readingOf([&](BVariant* out) { return valueRange(made.model(), out, start, end); }),
                   [&] { return readRange(made.sweep(), start, end); });
    }

    Coverage coverage;

private:
    static Reading dataOf(const Sweep& model)
    {
        return readingOf([&](BVariant* out) {
            BVariant data;
            const ERESULT code = valueRange(model, &data, 0, countOf(model));
            *out = code < 0 ? BVariant() : data;
            return ER_SUCCESS;
        });
    }

    void expectSame(RandomSweep& made, Reading expected, const std::function<Reading()>& read)
    {
        const QStringList expectedCalls = made.takeCalls();
        Reading actual = read();
        coverage.note(expected);
        if (actual.failure.type == "std::length_error") // its words are the allocator's
            expected.failure.words = actual.failure.words;
        EXPECT_EQ(actual, expected);
        EXPECT_EQ(made.takeCalls(), expectedCalls);
    }
};

TEST_F(SweptVariableModel, HoldsForParametersOfAllTypesAndMembersOfAllLengths)
{
    for (std::uint64_t i = 0; i < 1500 && !HasFailure(); ++i) {
        const TestSupport::RandomSeed seed{40000 + i};
        SCOPED_TRACE(seed);
        auto random = seed.engine();
        RandomSweep made(random);
        compare(made);
    }
    EXPECT_GT(coverage.successes, 10000);
    EXPECT_GT(coverage.failures, 1000);
    EXPECT_GT(coverage.failuresWithValues, 1000);
    EXPECT_GT(coverage.lengthErrors, 1000);
    EXPECT_GT(coverage.otherExceptions, 1000);
}

TEST_F(SweptVariableModel, HoldsForManyMembers)
{
    for (std::uint64_t i = 0; i < 200 && !HasFailure(); ++i) {
        const TestSupport::RandomSeed seed{60000 + i};
        SCOPED_TRACE(seed);
        auto random = seed.engine();
        RandomSweep made(random, 200);
        const std::uint64_t count = countOf(made.model());
        ASSERT_EQ(made.sweep().GetMaxIndepOffset(), count);
        for (int read = 0; read < 30; ++read) {
            const std::uint64_t start = randomBelow(random, count % 500 + 2);
            compareRange(made, start, start + randomBelow(random, count % 500 + 3));
            compareAt(made, start);
        }
    }
    EXPECT_GT(coverage.successes, 1000);
    EXPECT_GT(coverage.otherExceptions, 100);
}

} // namespace
} // namespace Orrery
