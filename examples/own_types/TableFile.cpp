#include "TableFile.h"

#include "foundations/property/Property.h"
#include "foundations/variant/Variant.h"
#include "units/Units.h"
#include "variables/ExplicitDataVar.h"

#include <QFile>
#include <QSaveFile>
#include <QStringList>
#include <QTextStream>

#include <exception>
#include <memory>
#include <stdexcept>
#include <vector>

using namespace Orrery;

namespace {

struct Column
{
    QString name;
    Units units;
    std::vector<double> values;
};

[[noreturn]] void fail(const QString& reason)
{
    throw std::runtime_error(reason.toStdString());
}

// "voltage [V]"
Column columnOf(const QString& title)
{
    const int bracket = title.indexOf('[');
    if (bracket < 1 || !title.endsWith(']'))
        fail('"' + title + "\" is no name with a unit in brackets");
    Column column{title.left(bracket).trimmed(),
                  Units::FromSIString(title.mid(bracket + 1, title.size() - bracket - 2)),
                  {}};
    if (!column.units.IsValid())
        fail('"' + title + "\" has a unit that isn't one");
    return column;
}

void readRow(const QString& line, int number, std::vector<Column>* columns)
{
    const QStringList cells = line.split(';');
    if (cells.size() != static_cast<int>(columns->size()))
        fail("line " + QString::number(number) + " hasn't as many values as there are columns");
    for (int i = 0; i < cells.size(); ++i) {
        bool isNumber = false;
        (*columns)[static_cast<std::size_t>(i)].values.push_back(cells[i].trimmed().toDouble(&isNumber));
        if (!isNumber)
            fail("line " + QString::number(number) + ": \"" + cells[i].trimmed() + "\" is no number");
    }
}

std::vector<Column> readColumns(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(file.errorString());
    QTextStream text(&file);
    text.setCodec("UTF-8");
    std::vector<Column> columns;
    for (const QString& title : text.readLine().split(';'))
        columns.push_back(columnOf(title.trimmed()));
    for (int number = 2; !text.atEnd(); ++number)
        readRow(text.readLine(), number, &columns);
    return columns;
}

// The variables of a folder in the order of their names, but the axis first.
std::vector<const Variable*> variablesOf(const PropertyObject& folder)
{
    std::vector<const Variable*> variables;
    for (const AbstractProperty* const child : folder.GetPropertyListSorted()) {
        const auto* const variable = dynamic_cast<const Variable*>(child);
        if (!variable)
            fail(child->GetFullPath() + " is no variable, and a table holds nothing else");
        if (variable->GetIndepCount() == 0)
            variables.insert(variables.begin(), variable);
        else
            variables.push_back(variable);
    }
    return variables;
}

QString textOf(const PropertyObject& folder)
{
    const std::vector<const Variable*> variables = variablesOf(folder);
    QStringList titles;
    for (const Variable* const variable : variables)
        titles << variable->GetName() + " [" + variable->GetUnits().GetSIUnits() + ']';
    QString text = titles.join("; ") + '\n';
    const std::uint64_t rows = variables.empty() ? 0 : variables.front()->GetMaxIndepOffset();
    for (std::uint64_t row = 0; row < rows; ++row) {
        QStringList cells;
        for (const Variable* const variable : variables) {
            BVariant value;
            if (variable->GetMaxIndepOffset() != rows || variable->GetValueAt(&value, row) < 0)
                fail(variable->GetFullPath() + " hasn't as many values as the axis");
            cells << QString::number(Brindle::Quay::getScalar<double>(value), 'g', 17);
        }
        text += cells.join("; ") + '\n';
    }
    return text;
}

// What the factory and the host want to hear of an exception.
template <class Operation>
ERESULT guarded(const QString& path, QString* why, Operation operation)
{
    try {
        operation();
        return ER_SUCCESS;
    } catch (const std::exception& problem) {
        if (why)
            *why = path + ": " + QString::fromUtf8(problem.what());
        return ER_FAILED;
    }
}

} // namespace

QString TableFile::FileType()
{
    return "Table";
}

DataFile* TableFile::Create(const QString& path, OpenMode mode)
{
    return new TableFile(path, mode);
}

TableFile::TableFile(const QString& path, OpenMode mode)
    : DataFile(path, mode)
{
}

QString TableFile::GetFileType() const
{
    return FileType();
}

// The new tree is whole before it replaces the present one.
ERESULT TableFile::Load(QString* why)
{
    return guarded(GetPath(), why, [this] {
        auto root = std::make_unique<RootProperty>(this);
        Variable* axis = nullptr;
        for (Column& column : readColumns(GetPath())) {
            auto* const variable = new ExplicitDataVar(column.name);
            if (root->InsertProperty(variable) < 0) {
                delete variable;
                fail("two columns are named \"" + column.name + '"');
            }
            variable->UpdateData(BVariant(std::move(column.values)), false);
            variable->SetUnits(column.units);
            if (axis)
                variable->AddIndepVariableRef(axis);
            else
                axis = variable;
        }
        ReplaceRoot(std::move(root));
    });
}

// QSaveFile replaces the file in one step, or leaves it as it was.
ERESULT TableFile::Save(QString* why)
{
    return guarded(GetPath(), why, [this] {
        if (GetMode() == ReadOnly)
            fail("the file was opened read-only");
        if (!GetRoot())
            fail("the file is closed");
        const QByteArray text = textOf(*GetRoot()).toUtf8();
        QSaveFile file(GetPath());
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
            fail(file.errorString());
    });
}

ERESULT TableFile::Close()
{
    DropRoot();
    return ER_SUCCESS;
}
