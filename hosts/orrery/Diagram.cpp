#include "hosts/orrery/Diagram.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <QApplication>
#include <QFontDatabase>
#include <QImage>
#include <QLocale>
#include <QPainter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <qwt_legend.h>
#include <qwt_painter.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_renderer.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Orrery::Host {

namespace {

constexpr QSize s_size(880, 520);
constexpr QRect s_frame(14, 14, 848, 494); // without the margins
constexpr int s_pixelsPerPoint = 2;        // of a PNG, which is looked at on fine screens too
constexpr std::size_t s_mostLabels = 16;   // more don't fit into the height

const QColor s_ink(0x33, 0x33, 0x33);
const QColor s_gridColor(0xe4, 0xe4, 0xe4);

/// Qt's surroundings for painting text, without a display and without what the user's desktop would change.
class PaintingApplication
{
public:
    PaintingApplication()
        : m_application(prepared(&m_argumentCount), m_arguments)
    {
        QLocale::setDefault(QLocale::c());
        if (QFontDatabase().families().isEmpty())
            throw Failure("no font is installed to write the labels with");
    }

private:
    static int& prepared(int* argumentCount)
    {
        QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
        QApplication::setDesktopSettingsAware(false);
        return *argumentCount;
    }

    int m_argumentCount = 5;
    char m_program[7] = "orrery";
    char m_platformOption[10] = "-platform";
    char m_platform[10] = "offscreen";
    char m_styleOption[7] = "-style";
    char m_style[7] = "fusion";
    char* m_arguments[6] = {m_program, m_platformOption, m_platform, m_styleOption, m_style, nullptr};
    QApplication m_application;
};

// Colours that stay apart for most people who see some colours alike.
const QColor s_colors[] = {{0x00, 0x72, 0xb2}, {0xd5, 0x5e, 0x00}, {0x00, 0x9e, 0x73}, {0xcc, 0x79, 0xa7},
                           {0x56, 0x4a, 0xa8}, {0xb0, 0x8a, 0x00}, {0x3f, 0xa7, 0xd6}, {0x55, 0x55, 0x55}};

// Each round of the colours has another kind of line.
QPen penOf(std::size_t line)
{
    static const Qt::PenStyle styles[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine};
    const std::size_t round = line / std::size(s_colors);
    return {s_colors[line % std::size(s_colors)], 2.0, styles[round % std::size(styles)]};
}

// From cold to warm by way of dark tones, all of which stand out from white.
QColor colorBetween(double part)
{
    static const QColor stops[] = {
        {0x1f, 0x4e, 0xb4}, {0x2a, 0x94, 0xa8}, {0x5a, 0xa0, 0x3c}, {0xe0, 0x90, 0x1a}, {0xc6, 0x28, 0x28}};
    const double place = part * static_cast<double>(std::size(stops) - 1);
    const auto first = std::min(static_cast<std::size_t>(place), std::size(stops) - 2);
    const double rest = place - static_cast<double>(first);
    const auto mixed = [rest](int from, int to) {
        return static_cast<int>(std::lround(from + (to - from) * rest));
    };
    const QColor& a = stops[first];
    const QColor& b = stops[first + 1];
    return {mixed(a.red(), b.red()), mixed(a.green(), b.green()), mixed(a.blue(), b.blue())};
}

QPen penIn(const Diagram& diagram, std::size_t line)
{
    const std::size_t count = diagram.lines.size();
    if (!diagram.isSequence || count < 2)
        return penOf(line);
    return {colorBetween(static_cast<double>(line) / static_cast<double>(count - 1)), 2.0};
}

QFont fontOf(int pixels, bool isBold = false)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    font.setBold(isBold);
    return font;
}

// As it is: a name may look like markup.
QwtText plainText(const QString& text, const QFont& font)
{
    QwtText plain(text, QwtText::PlainText);
    plain.setFont(font);
    plain.setColor(s_ink);
    return plain;
}

/// A line of the legend without a line of the diagram.
class LegendTitle : public QwtPlotItem
{
public:
    explicit LegendTitle(const QString& title)
        : QwtPlotItem(plainText(title, fontOf(13, true)))
    {
        setItemAttribute(Legend);
        setLegendIconSize(QSize(0, 0));
    }

    void draw(QPainter*, const QwtScaleMap&, const QwtScaleMap&, const QRectF&) const override {}
};

/// Writes large and small numbers with an exponent as short as it can be: "1e6", not "1e+06".
class ScaleDraw : public QwtScaleDraw
{
public:
    QwtText label(double value) const override
    {
        if (value == 0.0)
            value = 0.0; // the scale may have it with a sign
        QString text = QString::number(value, 'g', 6);
        if (std::abs(value) >= 1e5)
            text = QString::fromStdString(shortExponent(value));
        return QwtText(text.replace(QStringLiteral("e-0"), QStringLiteral("e-")), QwtText::PlainText);
    }

private:
    static std::string shortExponent(double value)
    {
        std::string text = QString::number(value, 'e', 5).toStdString();
        const std::size_t exponent = text.find('e');
        std::string digits = text.substr(0, exponent);
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.')
            digits.pop_back();
        return digits + 'e' + std::to_string(std::stoi(text.substr(exponent + 1)));
    }
};

void setAxis(QwtPlot* plot, int axis, const QString& label, bool isLog)
{
    plot->setAxisTitle(axis, plainText(label, fontOf(14)));
    plot->setAxisFont(axis, fontOf(12));
    if (isLog)
        plot->setAxisScaleEngine(axis, new QwtLogScaleEngine);
    QwtScaleWidget* const scale = plot->axisWidget(axis);
    QPalette palette = scale->palette();
    palette.setColor(QPalette::WindowText, s_ink);
    palette.setColor(QPalette::Text, s_ink);
    scale->setPalette(palette);
    scale->setMargin(0);
    scale->setSpacing(6);
    plot->setAxisScaleDraw(axis, new ScaleDraw);
    scale->scaleDraw()->enableComponent(QwtAbstractScaleDraw::Backbone, false);
}

void addGrid(QwtPlot* plot)
{
    auto* const grid = new QwtPlotGrid;
    grid->setMajorPen(s_gridColor, 1.0);
    grid->attach(plot);
}

// The pieces of a line share its entry in the legend.
void addLine(QwtPlot* plot, const DiagramLine& line, const QPen& pen)
{
    bool isFirst = true;
    for (const QVector<QPointF>& piece : line.pieces) {
        auto* const curve = new QwtPlotCurve(plainText(line.label, fontOf(13)));
        curve->setPen(pen);
        curve->setRenderHint(QwtPlotItem::RenderAntialiased);
        curve->setLegendAttribute(QwtPlotCurve::LegendShowLine);
        curve->setLegendIconSize(QSize(22, 10));
        curve->setItemAttribute(QwtPlotItem::Legend, isFirst);
        if (piece.size() == 1) // a line of one point can't be seen
            curve->setStyle(QwtPlotCurve::Dots);
        if (piece.size() == 1)
            curve->setPen(pen.color(), 6.0);
        curve->setSamples(piece);
        curve->attach(plot);
        isFirst = false;
    }
}

void addLegend(QwtPlot* plot)
{
    auto* const legend = new QwtLegend;
    legend->setFrameStyle(QFrame::NoFrame);
    plot->insertLegend(legend, QwtPlot::RightLegend);
}

void setUp(QwtPlot* plot, const Diagram& diagram)
{
    auto* const canvas = new QwtPlotCanvas;
    canvas->setFrameStyle(QFrame::NoFrame);
    canvas->setPalette(QPalette(Qt::white));
    plot->setCanvas(canvas);
    plot->setCanvasBackground(Qt::white);
    plot->setPalette(QPalette(Qt::white));
    plot->plotLayout()->setSpacing(12);
    setAxis(plot, QwtPlot::xBottom, diagram.xLabel, diagram.isLogX);
    setAxis(plot, QwtPlot::yLeft, diagram.yLabel, diagram.isLogY);
    addGrid(plot);
    const std::size_t count = diagram.lines.size();
    const bool hasLegend = count <= s_mostLabels && (count > 1 || !diagram.legendTitle.isEmpty());
    if (hasLegend)
        addLegend(plot);
    if (hasLegend && !diagram.legendTitle.isEmpty())
        (new LegendTitle(diagram.legendTitle))->attach(plot);
    for (std::size_t i = 0; i < count; ++i)
        addLine(plot, diagram.lines[i], penIn(diagram, i));
    plot->resize(s_frame.size());
    plot->updateAxes();
    plot->updateLegend();
    plot->replot();
}

// Qwt splits a line to paint it faster. The ends of the parts overlap, which shows in a line of few points; one of
// very many would take Qt seconds as a whole.
void choosePainting(const Diagram& diagram)
{
    constexpr int mostPoints = 1000;
    bool isSplit = false;
    for (const DiagramLine& line : diagram.lines) {
        for (const QVector<QPointF>& piece : line.pieces)
            isSplit = isSplit || piece.size() > mostPoints;
    }
    QwtPainter::setPolylineSplitting(isSplit);
}

void render(QwtPlot* plot, QPaintDevice* device, double scale)
{
    QPainter painter(device);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.scale(scale, scale);
    painter.fillRect(QRect(QPoint(), s_size), Qt::white);
    QwtPlotRenderer renderer;
    renderer.setDiscardFlags(QwtPlotRenderer::DiscardBackground | QwtPlotRenderer::DiscardCanvasBackground |
                             QwtPlotRenderer::DiscardCanvasFrame);
    renderer.render(plot, &painter, s_frame);
}

void writeSvg(QwtPlot* plot, const Diagram& diagram, QIODevice* file)
{
    QSvgGenerator svg;
    svg.setOutputDevice(file);
    svg.setSize(s_size);
    svg.setViewBox(QRect(QPoint(), s_size));
    svg.setResolution(plot->logicalDpiX()); // as many as the plot's own, or all lengths are converted
    svg.setTitle(diagram.yLabel.toHtmlEscaped());
    render(plot, &svg, 1.0);
}

bool writePng(QwtPlot* plot, QIODevice* file)
{
    QImage image(s_size * s_pixelsPerPoint, QImage::Format_RGB32);
    const double metersPerInch = 0.0254;
    image.setDotsPerMeterX(qRound(plot->logicalDpiX() / metersPerInch));
    image.setDotsPerMeterY(qRound(plot->logicalDpiY() / metersPerInch));
    render(plot, &image, s_pixelsPerPoint);
    return image.save(file, "PNG");
}

bool hasEnding(const std::string& path, const char* ending)
{
    return QString::fromStdString(path).endsWith(QLatin1String(ending), Qt::CaseInsensitive);
}

} // namespace

bool isDiagramPath(const std::string& path)
{
    return hasEnding(path, ".svg") || hasEnding(path, ".png");
}

void drawDiagram(const Diagram& diagram, const std::string& path)
{
    const PaintingApplication application;
    QSaveFile file(QString::fromStdString(path));
    const auto fail = [&] { throw Failure(printable(path) + ": " + file.errorString().toStdString()); };
    if (!file.open(QIODevice::WriteOnly))
        fail();
    QwtPlot plot;
    setUp(&plot, diagram);
    choosePainting(diagram);
    if (hasEnding(path, ".svg"))
        writeSvg(&plot, diagram, &file);
    else if (!writePng(&plot, &file))
        fail();
    if (!file.commit())
        fail();
}

} // namespace Orrery::Host
