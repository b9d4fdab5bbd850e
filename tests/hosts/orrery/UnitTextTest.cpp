#include "hosts/orrery/UnitText.h"

#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/TreeAccess.h"
#include "tests/hosts/orrery/ScratchFolder.h"
#include "units/SystemOfUnits.h"
#include "variables/ExplicitDataVar.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

namespace {

std::string refusalOf(const std::string& text)
{
    try {
        parseUnits(text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitFailed);
        return failure.what();
    }
    return "";
}

/// The variable "v" with these units, as a file brings it back.
class Reloaded
{
public:
    explicit Reloaded(const Units& units)
    {
        const QString path = QString::fromStdString(m_folder.path("u.h5"));
        {
            std::shared_ptr<DataFile> file;
            EXPECT_GE(DataFileFactory::Instance().Open(path, DataFile::Create, &file), 0);
            auto variable = std::make_unique<ExplicitDataVar>(QStringLiteral("v"));
            EXPECT_GE(variable->SetUnits(units), 0);
            insertNode(file->GetRoot(), std::move(variable));
            EXPECT_GE(file->Save(), 0);
        }
        m_file = openForReading(path.toStdString());
    }

    const Variable& variable() const { return *m_file->GetRoot()->GetPtr<Variable>(QStringLiteral("v")); }

private:
    ScratchFolder m_folder;
    std::shared_ptr<DataFile> m_file;
};

} // namespace

TEST(UnitText, IsANameOfTheCatalogueOrAnSIString)
{
    EXPECT_EQ(parseUnits("in").GetScale(), 0.0254);
    EXPECT_EQ(parseUnits("uF").GetScale(), 1e-6);
    EXPECT_EQ(parseUnits("kOhm").GetScale(), 1000);
    EXPECT_EQ(parseUnits("km/s").GetScale(), 1000);
    EXPECT_TRUE(parseUnits("").IsValid());
}

TEST(UnitText, ThatIsNeitherIsShownWithACaretBelowThePlace)
{
    EXPECT_EQ(refusalOf("m/s/s"), "there is no unit 'm/s/s': a second '/' at 3; write m/s^2 or m/(s*s)\n"
                                  "  m/s/s\n"
                                  "     ^");
}

TEST(UnitText, CountsCharactersUpToTheCaret)
{
    const std::string refusal = refusalOf("\xC2\xB5m/\xC2\xB5y\n");
    const std::size_t shown = refusal.find("\n  \xC2\xB5m/\xC2\xB5y\\n\n");
    ASSERT_NE(shown, std::string::npos) << refusal;
    EXPECT_EQ(refusal.substr(refusal.rfind('\n')), "\n     ^");
}

TEST(UnitText, OfGreatLengthIsNotShownAgain)
{
    const std::string refusal = refusalOf(std::string(100000, '('));
    EXPECT_EQ(refusal.find('\n'), std::string::npos);
    EXPECT_LT(refusal.size(), 1000U);
}

TEST(Definitions, TellWhatAValueIsInTheBase)
{
    EXPECT_EQ(definitionText(parseUnits("in")), "1 in = 0.0254 m");
    EXPECT_EQ(definitionText(parseUnits("\xC2\xB0"
                                        "C")),
              "x \xC2\xB0"
              "C = x + 273.15 K");
    EXPECT_EQ(definitionText(parseUnits("dBm")), "x dBm = 10^(x/10) * 0.001 W");
    EXPECT_EQ(definitionText(parseUnits("log")), "x log = 10^x");
    EXPECT_EQ(definitionText(parseUnits("%")), "1 % = 0.01");
    EXPECT_EQ(definitionText(parseUnits("")), "a plain number");
}

TEST(Kinds, HaveTheirDimensions)
{
    EXPECT_EQ(kindText(parseUnits("m")), "length (m)");
    EXPECT_EQ(kindText(parseUnits("mW")), "power (m^2*kg/s^3)");
}

TEST(Conversion, BetweenKindsIsRefusedWithBothDimensions)
{
    EXPECT_NO_THROW(requireCommensurable(parseUnits("dBm"), parseUnits("mW")));
    try {
        requireCommensurable(parseUnits("m"), parseUnits("V"));
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(),
                     "can't convert m, length (m), to V, electric potential (m^2*kg/(s^3*A))");
    }
}

// Units from explicit numbers lose their dimensions in a file.
TEST(RecognizedUnits, AreAllOfTheCatalogueAfterAFile)
{
    const QList<Units> all = SystemOfUnits::instance().GetAllUnits();
    ASSERT_GT(all.size(), 100);
    for (const Units& units : all) {
        const Reloaded reloaded(units);
        const std::optional<Units> found = unitsOf(reloaded.variable());
        ASSERT_TRUE(found) << unitsLabel(units);
        EXPECT_TRUE(*found == units) << unitsLabel(units);
    }
}

TEST(RecognizedUnits, MayBeAHostsOwn)
{
    const Units perMinute(UnitType::velocity, QStringLiteral("m/min"), 1.0 / 60, 0.0, 0.0);
    EXPECT_TRUE(*unitsOf(Reloaded(perMinute).variable()) == perMinute);
    const Units plain = Units::FromSIString(QStringLiteral("1"));
    EXPECT_TRUE(recognized(plain) == plain);
}

TEST(RecognizedUnits, AreNoneOfAVariableWithoutOrWithUnusableOnes)
{
    Variable variable(QStringLiteral("v"));
    EXPECT_FALSE(unitsOf(variable));
    ASSERT_GE(variable.SetUnits(Units()), 0); // not valid
    EXPECT_FALSE(unitsOf(variable));
    ASSERT_GE(variable.DeleteProperty(Variable::sUnitsPropertyName()), 0);
    ASSERT_GE(variable.SetProperty(Variable::sUnitsPropertyName(), 5), 0);
    EXPECT_FALSE(unitsOf(variable));
}

TEST(UnitsSuffix, StandsInBrackets)
{
    EXPECT_EQ(unitsSuffix(std::nullopt), "");
    EXPECT_EQ(unitsSuffix(parseUnits("mV")), " [mV]");
    EXPECT_EQ(unitsSuffix(parseUnits("")), " [1]");
}

} // namespace Orrery::Host
