#pragma once

#include "foundations/property/PropertyObject.h"
#include "tracking/Notifier.h"
#include "tracking/SlotNotifyable.h"
#include "variables/Variable.h"

#include <QSignalSpy>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <QtGlobal>

#include <functional>
#include <memory>
#include <ostream>
#include <vector>

/// GoogleTest shows a text as text; found by argument-dependent lookup, hence in the global namespace.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace Orrery {

/// Catches the Qt log as long as it lives. One at a time.
class MessageCapture
{
public:
    MessageCapture()
    {
        s_debug.clear();
        s_warnings.clear();
        m_former = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            (type == QtDebugMsg ? s_debug : s_warnings).append(text);
        });
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    ~MessageCapture() { qInstallMessageHandler(m_former); }

    QStringList debug() const { return s_debug; }
    QStringList warnings() const { return s_warnings; } ///< and worse

private:
    static inline QStringList s_debug;
    static inline QStringList s_warnings;
    QtMessageHandler m_former;
};

/// A host's client: counts what it hears, and does what a test wants when it hears of new data.
class Client : public ISlotNotifyable
{
public:
    ISlotNotifyable& Update() override
    {
        ++updates;
        if (onUpdate)
            onUpdate();
        return *this;
    }

    ISlotNotifyable& Removed() override
    {
        ++removals;
        if (onRemoved)
            onRemoved();
        return *this;
    }

    ISlotNotifyable& Renamed() override
    {
        ++renamings;
        if (onRenamed)
            onRenamed();
        return *this;
    }

    int updates = 0;
    int removals = 0;
    int renamings = 0;
    std::function<void()> onUpdate;
    std::function<void()> onRemoved;
    std::function<void()> onRenamed;
};

/// A client connected directly to a Variable.
class ConnectedClient : public Client
{
public:
    explicit ConnectedClient(const Variable& variable) { ConnectTo(variable, Qt::DirectConnection); }
};

/// Counts the three signals of a Variable.
struct SignalSpies
{
    explicit SignalSpies(const Variable& variable)
        : modified(variable.getNotifier(), &Variable::Notifier::Modified)
        , removed(variable.getNotifier(), &Variable::Notifier::Removed)
        , renamed(variable.getNotifier(), &Variable::Notifier::Renamed)
    {
    }

    int count() const { return modified.count() + removed.count() + renamed.count(); }

    QSignalSpy modified;
    QSignalSpy removed;
    QSignalSpy renamed;
};

inline BVariant numbers(std::vector<double> values)
{
    return BVariant(std::move(values));
}

/// Puts `child` into `folder` and hands back what has been put in; null if it can't be put in.
template <class T>
T* insert(PropertyObject& folder, std::unique_ptr<T> child)
{
    return folder.InsertProperty(child.get()) < 0 ? nullptr : child.release();
}

inline Variable* insertVariable(PropertyObject& folder, const QString& name)
{
    return insert(folder, std::make_unique<Variable>(name));
}

inline PropertyObject* insertFolder(PropertyObject& folder, const QString& name)
{
    return insert(folder, std::make_unique<PropertyObject>(name));
}

} // namespace Orrery
