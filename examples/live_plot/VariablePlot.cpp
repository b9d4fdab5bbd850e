#include "VariablePlot.h"

#include "foundations/variant/Variant.h"
#include "units/Units.h"

#include <QPen>
#include <QVector>

#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_text.h>

#include <exception>

using namespace Orrery;

namespace {

QVector<double> valuesOf(const Variable& variable)
{
    const Brindle::Quay::IterableContainer<double> values(variable.GetData());
    QVector<double> numbers;
    for (const double value : values)
        numbers.append(value);
    return numbers;
}

QwtText labelOf(const Variable& variable)
{
    return QwtText(variable.GetName() + " [" + variable.GetUnits().GetUnitsLabel() + "]");
}

Variable* axisOf(const Variable& variable)
{
    Variable* axis = nullptr;
    return variable.GetIndepVariable(&axis, 0) < 0 ? nullptr : axis;
}

} // namespace

VariablePlot::VariablePlot(Variable& variable)
    : m_variable(&variable)
    , m_curve(new QwtPlotCurve)
    , m_client(this)
{
    auto* const canvas = new QwtPlotCanvas(this);
    canvas->setFrameStyle(QFrame::NoFrame);
    setCanvas(canvas);
    setCanvasBackground(Qt::white);
    auto* const grid = new QwtPlotGrid;
    grid->setPen(Qt::lightGray, 0.0, Qt::DotLine);
    grid->attach(this);
    m_curve->setPen(QColor(0, 90, 170), 2.0);
    m_curve->setRenderHint(QwtPlotItem::RenderAntialiased);
    m_curve->attach(this);
    m_curve->setItemAttribute(QwtPlotItem::AutoScale);
    SetTitles();
    Draw();
    // The variable calls Update() from now on, until one of the two is gone.
    m_client.ConnectTo(variable, Qt::AutoConnection);
}

void VariablePlot::SetTitles()
{
    setAxisTitle(QwtPlot::yLeft, labelOf(*m_variable));
    if (const Variable* const axis = axisOf(*m_variable))
        setAxisTitle(QwtPlot::xBottom, labelOf(*axis));
}

void VariablePlot::Draw()
{
    const Variable* const axis = axisOf(*m_variable);
    if (!axis)
        return;
    try {
        m_curve->setSamples(valuesOf(*axis), valuesOf(*m_variable));
    } catch (const std::exception& problem) { // the values are no numbers, say
        setTitle(QString::fromUtf8(problem.what()));
    }
    replot();
    ++m_drawings;
}

VariablePlot::Client::Client(VariablePlot* plot)
    : m_plot(plot)
{
}

ISlotNotifyable& VariablePlot::Client::Update()
{
    if (m_plot->m_variable)
        m_plot->Draw();
    return *this;
}

ISlotNotifyable& VariablePlot::Client::Removed()
{
    m_plot->m_variable = nullptr;
    m_plot->m_curve->setSamples(QVector<double>(), QVector<double>());
    m_plot->replot();
    return *this;
}

ISlotNotifyable& VariablePlot::Client::Renamed()
{
    if (m_plot->m_variable)
        m_plot->SetTitles();
    return *this;
}
