#include "tests/foundations/storage/DataFiles.h"

#include "tests/foundations/storage/CompareTrees.h"

#include <QDir>
#include <QFile>
#include <QList>
#include <QtGlobal>

#include <stdexcept>
#include <utility>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

QStringList s_warnings;
QtMessageHandler s_former = nullptr;

void Collect(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    if (type == QtWarningMsg)
        s_warnings.append(text);
}

template <class Node>
Node* Insert(PropertyObject& parent, std::unique_ptr<Node> node)
{
    if (parent.InsertProperty(node.get()) < 0)
        throw std::runtime_error("a node of the test tree can't be inserted");
    return node.release();
}

} // namespace

ScratchFolder::ScratchFolder()
    : ScratchFolder(QDir::tempPath())
{
}

ScratchFolder::ScratchFolder(const QString& parent)
    : m_folder(QDir(parent).filePath(QStringLiteral("storage-test-XXXXXX")))
{
    if (!m_folder.isValid())
        throw std::runtime_error("no temporary folder");
}

QString ScratchFolder::Path(const QString& name) const
{
    return m_folder.filePath(name);
}

QStringList ScratchFolder::Names() const
{
    return QDir(m_folder.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QStringList ScratchFolder::Strays() const
{
    return Names().filter(QStringLiteral(".saving"));
}

LogCapture::LogCapture()
{
    s_warnings.clear();
    s_former = qInstallMessageHandler(&Collect);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(s_former);
}

QStringList LogCapture::Warnings() const
{
    return s_warnings;
}

Outcome TryOpen(const QString& path, DataFile::OpenMode mode)
{
    Outcome outcome;
    outcome.code = DataFileFactory::Instance().Open(path, mode, &outcome.file, &outcome.why);
    return outcome;
}

Outcome TrySave(DataFile& file)
{
    Outcome outcome;
    outcome.code = file.Save(&outcome.why);
    return outcome;
}

std::shared_ptr<DataFile> Open(const QString& path, DataFile::OpenMode mode)
{
    Outcome outcome = TryOpen(path, mode);
    if (outcome.code < 0)
        throw std::runtime_error(outcome.why.toStdString());
    return std::move(outcome.file);
}

std::shared_ptr<DataFile> SaveNew(const QString& path, const Builder& build)
{
    std::shared_ptr<DataFile> file = Open(path, DataFile::Create);
    build(*file->GetRoot());
    const Outcome saved = TrySave(*file);
    if (saved.code < 0)
        throw std::runtime_error(saved.why.toStdString());
    return file;
}

std::string RoundTrip(const Builder& build)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    SaveNew(path, build).reset();
    const std::shared_ptr<DataFile> reload = Open(path);
    DataFile::RootProperty original(nullptr);
    build(original);
    return CompareTrees(original, *reload->GetRoot());
}

PropertyObject* AddFolder(PropertyObject& parent, const QString& name)
{
    return Insert(parent, std::make_unique<PropertyObject>(name));
}

SimpleProperty* AddValue(PropertyObject& parent, const QString& name, BVariant value, IsCellArray cellArray)
{
    auto leaf = std::make_unique<SimpleProperty>(name);
    leaf->SetValue(std::move(value), cellArray);
    return Insert(parent, std::move(leaf));
}

PropertyReference* AddReference(PropertyObject& parent, const QString& name, const AbstractProperty& target)
{
    PropertyReference* const reference = Insert(parent, std::make_unique<PropertyReference>(name));
    if (reference->SetPropertyRef(&target) < 0)
        throw std::runtime_error("a reference of the test tree can't be bound");
    return reference;
}

BVariant ValueOf(PropertyObject& folder, const QString& name)
{
    AbstractProperty* const node = folder.GetPropertyPtr(name);
    if (!node || !node->IsSimpleProperty())
        throw std::runtime_error("no value '" + name.toStdString() + "'");
    return static_cast<SimpleProperty*>(node)->GetValue();
}

QString ReadArrays(const PropertyObject& folder)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (const AbstractProperty* const child : qAsConst(children)) {
        if (const auto* const below = dynamic_cast<const PropertyObject*>(child)) {
            const QString failure = ReadArrays(*below);
            if (!failure.isEmpty())
                return failure;
        } else if (child->IsSimpleProperty()) {
            try {
                static_cast<const SimpleProperty*>(child)->GetValue().constData();
            } catch (const std::runtime_error& error) {
                return QString::fromUtf8(error.what());
            }
        }
    }
    return QString();
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("can't read " + path.toStdString());
    return file.readAll();
}

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("can't write " + path.toStdString());
}

bool IsOneLineAbout(const QString& why, const QString& path)
{
    return why.startsWith(path + QStringLiteral(": ")) && why.size() > path.size() + 4 &&
           !why.contains(QLatin1Char('\n')) && !why.contains(QLatin1Char('\r'));
}

} // namespace Orrery::StorageTest
