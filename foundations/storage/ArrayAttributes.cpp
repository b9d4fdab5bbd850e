#include "foundations/storage/ArrayAttributes.h"

#include <algorithm>
#include <mutex>

namespace Orrery {

namespace {

struct Sources
{
    // Never destroyed: a tree may be saved by a static's destructor.
    static Sources& Instance()
    {
        static auto* const instance = new Sources;
        return *instance;
    }

    std::mutex mutex;
    std::vector<ArrayAttributes::Source> sources;
};

} // namespace

ERESULT ArrayAttributes::RegisterSource(Source source)
{
    if (!source)
        return ER_INVALID_ARGUMENT;
    Sources& all = Sources::Instance();
    const std::lock_guard<std::mutex> lock(all.mutex);
    if (std::find(all.sources.begin(), all.sources.end(), source) != all.sources.end())
        return ER_ALREADY_EXISTS;
    all.sources.push_back(source);
    return ER_SUCCESS;
}

// What one attribute can be called, and another one isn't: names that aren't Unicode become the same one in a file.
bool ArrayAttributes::Takes(const QString& name) const
{
    constexpr int longest = 1000;
    const auto hasName = [&](const Attribute& attribute) { return attribute.name == name; };
    return !name.isEmpty() && name.size() <= longest && !name.contains(QChar()) &&
           QString::fromUtf8(name.toUtf8()) == name &&
           std::none_of(m_attributes.begin(), m_attributes.end(), hasName);
}

void ArrayAttributes::AddText(const QString& name, const QString& text)
{
    if (!text.isEmpty() && Takes(name))
        m_attributes.push_back({name, text, {}});
}

void ArrayAttributes::AddPaths(const QString& name, const std::vector<const SimpleProperty*>& arrays)
{
    if (!arrays.empty() && Takes(name))
        m_attributes.push_back({name, QString(), arrays});
}

// A source may save a file of its own: nothing is locked while it runs.
void ArrayAttributes::Ask(const SimpleProperty& array, ArrayAttributes* attributes)
{
    std::vector<Source> sources;
    {
        Sources& all = Sources::Instance();
        const std::lock_guard<std::mutex> lock(all.mutex);
        sources = all.sources;
    }
    for (const Source source : sources)
        source(array, attributes);
}

} // namespace Orrery
