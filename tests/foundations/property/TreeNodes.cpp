#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace Orrery::TreeTest {

HostFolder::HostFolder(const QString& name, LifeCount* life)
    : PropertyObject(name)
    , m_life(life)
{
    if (m_life)
        ++m_life->made;
}

HostFolder::~HostFolder()
{
    if (onDestroy) {
        const Handler handler = std::move(onDestroy);
        handler(*this);
    }
    if (m_life)
        ++m_life->destroyed;
}

AbstractProperty* HostFolder::DoClone() const
{
    if (onClone)
        onClone();
    auto clone = std::make_unique<HostFolder>(QString(), m_life);
    clone->PropertyObject::operator=(*this);
    return clone.release();
}

void HostFolder::OnPathChanged()
{
    PropertyObject::OnPathChanged();
    ++pathChanges;
    if (!onPathChanged)
        return;
    const Handler handler = onPathChanged; // a copy of its own: the handler may destroy this folder
    handler(*this);
}

HostValue::HostValue(const QString& name, LifeCount* life)
    : SimpleProperty(name)
    , m_life(life)
{
    ++m_life->made;
}

HostValue::~HostValue()
{
    ++m_life->destroyed;
}

HostReference::HostReference(const QString& name, LifeCount* life)
    : PropertyReference(name)
    , m_life(life)
{
    ++m_life->made;
}

HostReference::~HostReference()
{
    ++m_life->destroyed;
}

unsigned int RootLikeFolder::GetTypeFlags() const
{
    return PropertyTypeFlagObject | PropertyTypeFlagFileRoot;
}

HostMetadata::HostMetadata(const QString& name)
    : Metadata(name)
{
}

AbstractProperty* HostMetadata::DoClone() const
{
    auto clone = std::make_unique<HostMetadata>(QString());
    clone->PropertyObject::operator=(*this);
    return clone.release();
}

namespace {
template <class Node>
Node* insertNew(PropertyObject& parent, std::unique_ptr<Node> node)
{
    const ERESULT code = parent.InsertProperty(node.get());
    EXPECT_EQ(code, ER_SUCCESS) << node->GetName().toStdString();
    return code >= 0 ? node.release() : nullptr;
}
} // namespace

HostFolder* addFolder(PropertyObject& parent, const QString& name, LifeCount* life)
{
    return insertNew(parent, std::make_unique<HostFolder>(name, life));
}

SimpleProperty* addValue(PropertyObject& parent, const QString& name, double value)
{
    auto node = std::make_unique<SimpleProperty>(name);
    EXPECT_EQ(node->SetValue(BVariant(value), IsCellArrayFalse), ER_SUCCESS);
    return insertNew(parent, std::move(node));
}

PropertyReference* addReference(PropertyObject& parent, const QString& name, const AbstractProperty& target)
{
    PropertyReference* reference = insertNew(parent, std::make_unique<PropertyReference>(name));
    if (reference) {
        EXPECT_EQ(reference->SetPropertyRef(&target), ER_SUCCESS) << name.toStdString();
    }
    return reference;
}

QStringList namesOf(const QList<AbstractProperty*>& nodes)
{
    QStringList names;
    for (const AbstractProperty* node : nodes)
        names.append(node->GetName());
    return names;
}

QStringList childNames(const PropertyObject& folder)
{
    return namesOf(folder.GetPropertyListSorted());
}

QStringList numberedNames(const PropertyObject& folder, const QString& prefix)
{
    QList<AbstractProperty*> list;
    folder.GetPrefixedChildrenProperties(&list, prefix);
    return namesOf(list);
}

QStringList awkwardNames()
{
    const QString nul(1, QChar(0));
    const QString highSurrogate(1, QChar(0xD800));
    const QString lowSurrogate(1, QChar(0xDC00));
    return {
        QString(),
        QStringLiteral("."),
        QStringLiteral(".."),
        QStringLiteral("..."),
        QStringLiteral("/"),
        QStringLiteral("//"),
        QStringLiteral("a/b"),
        QStringLiteral("/a"),
        QStringLiteral("a/"),
        QStringLiteral("../x"),
        QStringLiteral("./x"),
        QStringLiteral("%"),
        QStringLiteral("%%"),
        QStringLiteral("%2F"),
        QStringLiteral("%2f"),
        QStringLiteral("%25"),
        QStringLiteral("%2E"),
        QStringLiteral("%2E%2E"),
        QStringLiteral("%00"),
        QStringLiteral("%zz"),
        QStringLiteral("100%"),
        QStringLiteral(" "),
        QStringLiteral("\n"),
        QStringLiteral("a b"),
        QStringLiteral("A"),
        QStringLiteral("a"),
        QStringLiteral("0"),
        QStringLiteral("\u00e9"),
        QStringLiteral("e\u0301"),
        QString::fromUcs4(U"\U0001F600"),
        nul,
        nul + nul,
        QStringLiteral("a") + nul + QStringLiteral("b"),
        highSurrogate,
        lowSurrogate,
        lowSurrogate + highSurrogate,
        QStringLiteral("x") + highSurrogate + QStringLiteral("y"),
        QString(1, QChar(0xFEFF)),
        QString(1, QChar(0xFFFF)),
        QString(5000, QLatin1Char('n')),
    };
}

} // namespace Orrery::TreeTest
