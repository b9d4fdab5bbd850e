#pragma once

#include "tracking/SlotNotifyable.h"
#include "variables/Variable.h"

#include <qwt_plot.h>
#include <qwt_plot_curve.h>

/// Draws one variable over its first axis, and draws it anew when the variable says that it has changed.
///
/// It may outlive the variable, and goes empty then.
class VariablePlot : public QwtPlot
{
public:
    explicit VariablePlot(Orrery::Variable& variable);

    /// How often the variable has been drawn.
    int Drawings() const { return m_drawings; }

private:
    // QwtPlot and ISlotNotifyable are both QObjects, so the client is a member.
    class Client : public Orrery::ISlotNotifyable
    {
    public:
        explicit Client(VariablePlot* plot);
        Orrery::ISlotNotifyable& Update() override;
        Orrery::ISlotNotifyable& Removed() override;
        Orrery::ISlotNotifyable& Renamed() override;

    private:
        VariablePlot* m_plot;
    };

    void Draw();
    void SetTitles();

    Orrery::Variable* m_variable;
    QwtPlotCurve* m_curve; // owned by the plot, as all that is attached to it
    Client m_client;
    int m_drawings = 0;
};
