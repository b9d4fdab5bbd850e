#include "hosts/orrery/SignalPrinter.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/PlainText.h"
#include "variables/Variable.h"

namespace Orrery::Host {

SignalPrinter::SignalPrinter(EventLoop& loop, Output& out)
    : m_loop(loop)
    , m_out(out)
{
}

void SignalPrinter::follow(const Variable& variable, Qt::ConnectionType type)
{
    m_variable = PropertyHandle(&variable);
    m_name = printable(variable.GetName().toStdString());
    ConnectTo(variable, type);
}

ISlotNotifyable& SignalPrinter::Update()
{
    m_loop.guarded([this] { printUpdate(); });
    return *this;
}

ISlotNotifyable& SignalPrinter::Removed()
{
    m_loop.guarded([this] { printLine("removed\t" + m_name); });
    return *this;
}

ISlotNotifyable& SignalPrinter::Renamed()
{
    m_loop.guarded([this] {
        if (const AbstractProperty* const variable = m_variable.Get())
            m_name = printable(variable->GetFullPath().toStdString());
        printLine("renamed\t" + m_name);
    });
    return *this;
}

void SignalPrinter::printUpdate()
{
    const auto* const variable = static_cast<const Variable*>(m_variable.Get());
    if (!variable)
        return;
    const Brindle::Quay::BVariant data = variable->GetData();
    const std::uint64_t offsets = data.isEmpty() ? 0 : dimensionsOf(data).front();
    std::string line = "update\t" + m_name + '\t' + std::to_string(offsets);
    if (offsets > 0) {
        const ElementText newest(Brindle::Quay::subArrayAt(data, offsets - 1));
        for (std::uint64_t i = 0; i < newest.count(); ++i) {
            line += '\t';
            newest.append(&line, i);
        }
    }
    printLine(line);
}

// Flushed, so that whoever reads sees a line when its signal arrives.
void SignalPrinter::printLine(const std::string& line)
{
    m_out.write(line + '\n');
    m_out.flush();
}

} // namespace Orrery::Host
