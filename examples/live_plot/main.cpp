// A window whose plot follows a variable through its signals.
//
//     live_plot                          until the window is closed
//     live_plot --values 200 --picture live.png    measure that many values, save a picture of the window, end
#include "Instrument.h"
#include "VariablePlot.h"

#include "foundations/property/Property.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <cstdio>

using namespace Orrery;

namespace {

// The controls and the plot know the variable, and nothing of each other.
void fill(QWidget& window, VariablePlot& plot, Instrument& instrument, QTimer& clock)
{
    auto* const frequency = new QDoubleSpinBox;
    frequency->setRange(0.1, 5.0);
    frequency->setSingleStep(0.1);
    frequency->setValue(0.8);
    frequency->setSuffix(" Hz");
    auto* const pause = new QPushButton("Pause");
    pause->setCheckable(true);
    QObject::connect(frequency, QOverload<double>::of(&QDoubleSpinBox::valueChanged),
                     [&instrument](double hertz) { instrument.Restart(hertz); });
    QObject::connect(pause, &QPushButton::toggled, [&clock](bool paused) {
        if (paused)
            clock.stop();
        else
            clock.start();
    });

    auto* const controls = new QHBoxLayout;
    controls->addWidget(new QLabel("Frequency"));
    controls->addWidget(frequency);
    controls->addWidget(pause);
    controls->addStretch();
    auto* const column = new QVBoxLayout(&window);
    column->addLayout(controls);
    column->addWidget(&plot, 1);
    window.setWindowTitle("A variable, as it changes");
    window.resize(640, 420);
}

// Whether the picture could be written and each value was drawn when it came.
bool keepPicture(QWidget& window, const VariablePlot& plot, int values, const QString& path)
{
    const bool isSaved = window.grab().save(path);
    std::printf("%d values, drawn %d times%s%s\n", values, plot.Drawings(), isSaved ? ", picture in " : "",
                isSaved ? qPrintable(path) : "");
    return isSaved && plot.Drawings() == values + 1;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOption({"values", "Measure that many values, then end.", "count"});
    options.addOption({"picture", "Save a picture of the window at the end.", "file"});
    options.process(application);
    const int last = options.value("values").toInt();

    PropertyObject tree("measurements");
    Instrument instrument(tree);
    QWidget window;
    QTimer clock;
    // The window would destroy a child; the plot is a local object, and is declared after it so that it goes first.
    VariablePlot plot(instrument.Voltage());
    fill(window, plot, instrument, clock);
    window.show();

    int values = 0;
    bool isWell = true;
    QObject::connect(&clock, &QTimer::timeout, [&] {
        instrument.Measure();
        if (++values != last)
            return;
        clock.stop();
        isWell = !options.isSet("picture") || keepPicture(window, plot, values, options.value("picture"));
        QApplication::quit();
    });
    clock.start(last > 0 ? 0 : 20);
    QApplication::exec();
    return isWell ? 0 : 1;
}
