#pragma once

#include <QPointF>
#include <QString>
#include <QVector>

#include <string>
#include <vector>

namespace Orrery::Host {

/// One line of a diagram. It is interrupted between its pieces.
struct DiagramLine
{
    QString label;
    std::vector<QVector<QPointF>> pieces;
};

/// Lines over two axes, ready to be drawn.
struct Diagram
{
    QString xLabel;
    QString yLabel;
    QString legendTitle; ///< above the labels of the lines; may be empty
    bool isLogX = false; ///< all coordinates are above 0 then
    bool isLogY = false;
    bool isSequence = false; ///< the lines have an order, and colours that show it
    std::vector<DiagramLine> lines;
};

/// Draw a diagram into a file, SVG or PNG by the ending of its name (".svg", ".png"). No display is needed.
///
/// Edge:   a single line and very many lines have no legend.
/// Errors: Failure when no font is installed or the file can't be written; a former file is then as it was.
void drawDiagram(const Diagram& diagram, const std::string& path);

/// Whether the ending of the name is one that drawDiagram() knows.
bool isDiagramPath(const std::string& path);

} // namespace Orrery::Host
