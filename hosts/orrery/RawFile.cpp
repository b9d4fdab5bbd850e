#include "hosts/orrery/RawFile.h"

#include "hosts/orrery/RawHeader.h"
#include "hosts/orrery/RawValues.h"

#include <utility>

namespace Orrery::Host {

RawFile::RawFile(const std::string& path, SourceFile::Progress progress)
    : m_file(path, std::move(progress))
{
}

bool RawFile::next(RawPlot* plot)
{
    RawHeader header;
    if (!readRawHeader(m_file, &header, m_isFirst))
        return false;
    m_isFirst = false;
    std::vector<Brindle::Quay::BVariant> values = readRawValues(m_file, header);

    *plot = RawPlot();
    plot->title = header.title;
    plot->date = header.date;
    plot->name = header.plotName;
    plot->flags = header.flags;
    plot->commands = header.commands;
    plot->options = header.options;
    plot->vectors.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        plot->vectors.push_back({header.columns[i].name, header.columns[i].type, std::move(values[i])});
    return true;
}

} // namespace Orrery::Host
