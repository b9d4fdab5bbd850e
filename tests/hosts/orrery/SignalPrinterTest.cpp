#include "hosts/orrery/SignalPrinter.h"

#include "hosts/orrery/Failure.h"
#include "variables/Variable.h"

#include <QMetaObject>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Orrery::Host {

namespace {

class SignalPrinterTest : public ::testing::Test
{
protected:
    // Delivers what is queued, and returns what has been printed since the beginning of the test.
    std::string printed()
    {
        QMetaObject::invokeMethod(&m_context, &QCoreApplication::quit, Qt::QueuedConnection);
        m_loop.run();
        return testing::internal::GetCapturedStdout();
    }

    void SetUp() override { testing::internal::CaptureStdout(); }

    EventLoop m_loop;
    Output m_out;
    SignalPrinter m_printer{m_loop, m_out};
    QObject m_context;
};

TEST_F(SignalPrinterTest, PrintsNoUpdateOfAVariableThatHasGone)
{
    auto variable = std::make_unique<Variable>("x");
    m_printer.follow(*variable, Qt::QueuedConnection);
    variable->UpdateData(BVariant(std::vector<double>{1, 2}));
    variable->SetName("y");
    variable.reset();
    EXPECT_EQ(printed(), "renamed\tx\nremoved\tx\n"); // the last name that it could find out
}

TEST_F(SignalPrinterTest, PrintsNoValueOfAVariableWithoutAny)
{
    Variable variable("a\tb");
    m_printer.follow(variable, Qt::DirectConnection);
    variable.UpdateData(BVariant());
    m_printer.DisconnectFrom(variable);
    EXPECT_EQ(printed(), "update\ta\\tb\t0\n");
}

TEST_F(SignalPrinterTest, IsSilentAfterAFailureThatEndedTheLoop)
{
    Variable variable("x");
    m_printer.follow(variable, Qt::DirectConnection);
    QMetaObject::invokeMethod(
        &m_context, [this] { m_loop.guarded([] { throw Failure("stop"); }); }, Qt::QueuedConnection);
    EXPECT_THROW(m_loop.run(), Failure);
    variable.UpdateData(BVariant(1.0));
    m_printer.DisconnectFrom(variable);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace

} // namespace Orrery::Host
