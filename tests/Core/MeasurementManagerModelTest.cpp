// The manager beside a naive model of its two maps, under random operations.
#include "tests/Core/MeasurementTestSupport.h"
#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <map>

namespace Orrery {
namespace {

using TestSupport::randomBelow;

/// The two maps with every step spelled out, slow and plain.
class ManagerModel
{
public:
    void add(Measurement<Variable>* measurement)
    {
        const QString category = measurement->get_category();
        if (m_lists.count(category) == 0) {
            m_lists[category] = {};
            m_byName[category] = {};
        }
        m_lists[category].append(measurement);
        m_byName[category][measurement->get_name()] = measurement;
    }

    QStringList categories() const
    {
        QStringList keys;
        for (const auto& entry : m_lists)
            keys.append(entry.first);
        return keys;
    }

    MeasurementList list(const QString& category) { return m_lists[category]; }

    Measurement<Variable>* byName(const QString& category, const QString& name) const
    {
        const auto names = m_byName.find(category);
        if (names == m_byName.end())
            return nullptr;
        const auto found = names->second.find(name);
        return found == names->second.end() ? nullptr : found->second;
    }

    Measurement<Variable>* find(const QString& name) const
    {
        for (const auto& entry : m_lists) {
            if (Measurement<Variable>* found = byName(entry.first, name))
                return found;
        }
        return nullptr;
    }

    void removeCategory(const QString& category)
    {
        m_lists.erase(category);
        m_byName.erase(category);
    }

    MeasurementList remove(const QList<QString>& names)
    {
        MeasurementList removed;
        for (const QString& category : categories()) {
            for (const QString& name : names) {
                Measurement<Variable>* const found = byName(category, name);
                if (found) {
                    m_lists[category].removeAll(found);
                    m_byName[category].erase(name);
                }
                if (m_lists[category].isEmpty())
                    m_lists.erase(category);
                removed.append(found);
            }
        }
        return removed;
    }

private:
    std::map<QString, MeasurementList> m_lists;
    std::map<QString, std::map<QString, Measurement<Variable>*>> m_byName;
};

class MeasurementManagerModelTest : public RegistryTest, public ::testing::WithParamInterface<std::uint64_t>
{
protected:
    void SetUp() override
    {
        RegistryTest::SetUp();
        for (Measurement<Variable>* builtIn : manager().GetMeasurements(QStringLiteral("Math")))
            m_model.add(builtIn);
    }

    /// Some of few texts, so that they meet; they sort before and behind the built-in category.
    QString someText() { return QString(QChar(ushort('K' + randomBelow(m_random, 5)))); }

    void registerSomething()
    {
        auto* measurement = new HostMeasurement(someText(), someText());
        m_known.push_back(measurement);
        registerInBoth(measurement);
    }

    /// One that is known already, under another name.
    void registerAgain()
    {
        if (m_known.empty())
            return;
        HostMeasurement* const measurement = m_known[randomBelow(m_random, m_known.size())];
        measurement->name = someText();
        registerInBoth(measurement);
    }

    void registerInBoth(HostMeasurement* measurement)
    {
        EXPECT_EQ(manager().Register(measurement), ER_SUCCESS);
        m_model.add(measurement);
    }

    void removeSome()
    {
        QList<QString> names;
        for (std::uint64_t i = randomBelow(m_random, 4); i > 0; --i)
            names.append(someText());
        EXPECT_EQ(manager().RemoveMeasurements(names), m_model.remove(names));
    }

    void removeSomeCategory()
    {
        const QString category = someText();
        manager().RemoveCategory(category);
        m_model.removeCategory(category);
    }

    void doSomething()
    {
        switch (randomBelow(m_random, 10)) {
        case 0:
        case 1:
        case 2:
            return registerSomething();
        case 3:
            return registerAgain();
        case 4:
        case 5:
            return removeSome();
        case 6:
            return removeSomeCategory();
        case 7: {
            const QString category = someText();
            EXPECT_EQ(manager().GetMeasurements(category), m_model.list(category));
            return;
        }
        default:
            const QString category = someText();
            const QString name = someText();
            EXPECT_EQ(manager().GetMeasurement(category, name), m_model.byName(category, name));
        }
    }

    /// All that can be seen without changing anything.
    void compare()
    {
        EXPECT_EQ(manager().GetCategories(), m_model.categories());
        for (const QString& category : m_model.categories())
            EXPECT_EQ(manager().GetMeasurements(category), m_model.list(category));
        for (char letter = 'K'; letter < 'P'; ++letter) {
            const QString name = QString(QLatin1Char(letter));
            EXPECT_EQ(manager().FindMeasurement(name), m_model.find(name));
        }
        EXPECT_EQ(manager().FindMeasurement(QStringLiteral("polynomial-3")),
                  m_model.find(QStringLiteral("polynomial-3")));
    }

    std::mt19937_64 m_random = TestSupport::RandomSeed{GetParam()}.engine();
    ManagerModel m_model;
    std::vector<HostMeasurement*> m_known;
};

TEST_P(MeasurementManagerModelTest, AnswersAsTheModelDoes)
{
    SCOPED_TRACE(TestSupport::RandomSeed{GetParam()});
    for (int step = 0; step < 400 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        doSomething();
        compare();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MeasurementManagerModelTest, ::testing::Values(1, 2, 3, 5, 8, 13, 21, 34));

} // namespace
} // namespace Orrery
