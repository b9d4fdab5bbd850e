#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/property/SimpleProperty.h"
#include "tests/support/Variants.h"

#include <QString>
#include <QStringList>
#include <QVector>
#include <QtGlobal>

#include <cstdint>
#include <functional>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Orrery {

using TestSupport::DataOrdering;
using TestSupport::MakeCounting;
using TestSupport::MakeVector;
using TestSupport::ToDimensions;
using TestSupport::ToDoubles;

/// The text of a child, or "(none)" where there is none.
inline QString childText(const PropertyObject& folder, const QString& name)
{
    QString text;
    return folder.GetProperty(name, &text) >= 0 ? text : QStringLiteral("(none)");
}

/// The elements of a child; none where there is no such value.
inline std::vector<double> childDoubles(PropertyObject& folder, const QString& name)
{
    const auto* property = folder.GetPtr<SimpleProperty>(name);
    return property ? ToDoubles(property->GetValue()) : std::vector<double>();
}

/// Whether T, and no class derived from it, is the type of the object.
template <class T, class Base>
bool isExactly(const Base& object)
{
    return typeid(object) == typeid(T);
}

/// Puts `child` into `folder` and hands back what has been put in; null if it can't be put in.
template <class T>
T* put(PropertyObject& folder, std::unique_ptr<T> child)
{
    if (folder.InsertProperty(child.get()) < 0)
        return nullptr;
    return child.release();
}

/// Catches the Qt log as long as it lives. One at a time.
class LogCapture
{
public:
    LogCapture()
    {
        s_messages.clear();
        m_former = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            s_messages.append({type, text});
        });
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture() { qInstallMessageHandler(m_former); }

    QStringList warnings() const
    {
        QStringList texts;
        for (const auto& [type, text] : qAsConst(s_messages)) {
            if (type == QtWarningMsg)
                texts.append(text);
        }
        return texts;
    }

private:
    static inline QVector<QPair<QtMsgType, QString>> s_messages;
    QtMessageHandler m_former;
};

/// A host's folder that reacts to a change of its path.
class ReactingFolder : public PropertyObject
{
public:
    using PropertyObject::PropertyObject;

    AbstractProperty* DoClone() const override
    {
        auto copy = std::make_unique<ReactingFolder>();
        *copy = *this;
        return copy.release();
    }

    std::function<void()> reaction;

protected:
    void OnPathChanged() override
    {
        PropertyObject::OnPathChanged();
        if (reaction)
            std::exchange(reaction, nullptr)(); // once
    }
};

} // namespace Orrery
