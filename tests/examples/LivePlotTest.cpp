#include "examples/live_plot/Instrument.h"
#include "examples/live_plot/VariablePlot.h"
#include "foundations/property/Property.h"

#include <QApplication>
#include <QImage>

#include <gtest/gtest.h>
#include <qwt_text.h>

#include <memory>

namespace {

using namespace Orrery;

// Pixels of the window's curve, whose colour nothing else in it has.
int curvePixels(QWidget& window)
{
    const QImage picture = window.grab().toImage();
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            count += picture.pixelColor(x, y) == QColor(0, 90, 170) ? 1 : 0;
    }
    return count;
}

class LivePlot : public testing::Test
{
protected:
    LivePlot() { plot.resize(640, 420); }

    PropertyObject tree{QStringLiteral("measurements")};
    Instrument instrument{tree};
    VariablePlot plot{instrument.Voltage()};
};

TEST_F(LivePlot, DrawsEachNewValueOnce)
{
    ASSERT_EQ(plot.Drawings(), 1);
    for (int i = 0; i < 50; ++i)
        instrument.Measure();
    EXPECT_EQ(plot.Drawings(), 51);
}

TEST_F(LivePlot, ShowsACurveOnceThereAreValues)
{
    EXPECT_EQ(curvePixels(plot), 0);
    for (int i = 0; i < 50; ++i)
        instrument.Measure();
    EXPECT_GT(curvePixels(plot), 100);
}

TEST_F(LivePlot, NamesTheAxesAfterTheVariablesAndTheirUnits)
{
    EXPECT_EQ(plot.axisTitle(QwtPlot::yLeft).text(), QStringLiteral("voltage [V]"));
    EXPECT_EQ(plot.axisTitle(QwtPlot::xBottom).text(), QStringLiteral("time [s]"));
}

TEST_F(LivePlot, TakesOverANewName)
{
    ASSERT_GE(instrument.Voltage().SetName(QStringLiteral("output")), 0);
    EXPECT_EQ(plot.axisTitle(QwtPlot::yLeft).text(), QStringLiteral("output [V]"));
}

TEST_F(LivePlot, BeginsAnewWithAnotherFrequency)
{
    for (int i = 0; i < 50; ++i)
        instrument.Measure();
    instrument.Restart(2.0);
    EXPECT_EQ(curvePixels(plot), 0);
    instrument.Measure();
    instrument.Measure();
    EXPECT_GT(curvePixels(plot), 0);
}

TEST(LivePlotLifetime, GoesEmptyWithItsVariable)
{
    auto tree = std::make_unique<PropertyObject>(QStringLiteral("measurements"));
    Instrument instrument(*tree);
    for (int i = 0; i < 50; ++i)
        instrument.Measure();
    VariablePlot plot(instrument.Voltage());
    plot.resize(640, 420);
    ASSERT_GT(curvePixels(plot), 100);
    tree.reset();
    EXPECT_EQ(curvePixels(plot), 0);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
