// Writes sample files for other programs to look at, and opens files that other programs have made.
//
//     storage_tool sample FILE    write a file of every element type, shape and awkward name
//     storage_tool small FILE     write a file with one node of each kind, to be forged
//     storage_tool open FILE      0 and nothing said, or 3 and the reason on standard output
//     storage_tool resave FILE    open a file for writing and save it again
//     storage_tool probe FILE...  open each file, read all of it and follow its references; one line for each, with
//                                 what became of it, the memory that it took at most, and the reason
#include "tests/foundations/storage/DataFiles.h"

#include "foundations/variant/VariantOperations.h"

#include <QList>

#include <complex>
#include <cstdio>
#include <exception>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

using namespace Orrery;
using namespace Orrery::StorageTest;
using Brindle::Quay::BVariant;
using Brindle::Quay::Complex;
using Brindle::Quay::createArray;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::Duration;
using Brindle::Quay::sliceRange;
using Brindle::Quay::TimePoint;
using Brindle::Quay::WellKnownType;

constexpr int s_refused = 3;

template <class T>
void AddReal(PropertyObject& folder, const char* name)
{
    const std::vector<T> values = {std::numeric_limits<T>::lowest(), T(0), T(7),
                                   std::numeric_limits<T>::max()};
    AddValue(folder, QString::fromLatin1(name), BVariant(values));
}

template <class T>
void AddComplex(PropertyObject& folder, const char* name, std::initializer_list<std::pair<T, T>> parts)
{
    std::vector<Complex<T>> values;
    for (const auto& [real, imag] : parts) {
        Complex<T> value{};
        value.real = real;
        value.imag = imag;
        values.push_back(value);
    }
    AddValue(folder, QString::fromLatin1(name), BVariant(std::move(values)));
}

template <class T>
void AddComplexInteger(PropertyObject& folder, const char* name)
{
    AddComplex<T>(folder, name,
                  {{std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max()}, {T(3), T(4)}});
}

template <class T>
void AddTimes(PropertyObject& folder, const char* name)
{
    std::vector<T> times(2);
    times[0].words[0] = 1;
    times[0].words[1] = 2;
    times[1].words[0] = ~std::uint64_t{0};
    times[1].words[1] = std::uint64_t{1} << 63U;
    AddValue(folder, QString::fromLatin1(name), BVariant(std::move(times)));
}

void AddTypes(PropertyObject& types)
{
    AddReal<double>(types, "double");
    AddReal<float>(types, "float");
    AddReal<std::int8_t>(types, "int8");
    AddReal<std::int16_t>(types, "int16");
    AddReal<std::int32_t>(types, "int32");
    AddReal<std::int64_t>(types, "int64");
    AddReal<std::uint8_t>(types, "uint8");
    AddReal<std::uint16_t>(types, "uint16");
    AddReal<std::uint32_t>(types, "uint32");
    AddReal<std::uint64_t>(types, "uint64");
    AddValue(types, QStringLiteral("bool"), BVariant(std::vector<bool>{true, false, true}));
    AddValue(types, QStringLiteral("complex double"),
             BVariant(std::vector<std::complex<double>>{{1.5, -2.5}, {0.0, 1e300}}));
    AddValue(types, QStringLiteral("complex float"),
             BVariant(std::vector<std::complex<float>>{{1.5F, -2.5F}}));
    AddComplexInteger<std::int8_t>(types, "complex int8");
    AddComplexInteger<std::int16_t>(types, "complex int16");
    AddComplexInteger<std::int32_t>(types, "complex int32");
    AddComplexInteger<std::int64_t>(types, "complex int64");
    AddComplexInteger<std::uint8_t>(types, "complex uint8");
    AddComplexInteger<std::uint16_t>(types, "complex uint16");
    AddComplexInteger<std::uint32_t>(types, "complex uint32");
    AddComplexInteger<std::uint64_t>(types, "complex uint64");
    AddComplex<bool>(types, "complex bool", {{true, false}, {false, true}});
    AddTimes<Duration>(types, "duration");
    AddTimes<TimePoint>(types, "time point");
    AddValue(types, QStringLiteral("text"),
             BVariant(std::vector<std::string>{"a", "\xC3\xA4\xC3\xB6\xC3\xBC", "", "long"}));
}

std::vector<int> Counting(int count)
{
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(i);
    return numbers;
}

void AddShapes(PropertyObject& shapes)
{
    AddValue(shapes, QStringLiteral("row"), BVariant(Counting(6), {2, 3}));
    AddValue(shapes, QStringLiteral("column"), BVariant(Counting(6), {2, 3}, DataOrdering::ColumnMajor));
    AddValue(shapes, QStringLiteral("cube"), BVariant(Counting(24), {2, 3, 4}, DataOrdering::ColumnMajor));
    AddValue(shapes, QStringLiteral("single"), BVariant(Counting(1), {1, 1}));
    AddValue(shapes, QStringLiteral("empty"),
             createArray(WellKnownType::of<double>(), std::vector<std::uint64_t>{3, 0, 2},
                         DataOrdering::RowMajor));
    AddValue(shapes, QStringLiteral("texts"),
             BVariant(std::vector<std::string>{"00", "10", "01", "11"}, {2, 2}, DataOrdering::ColumnMajor));
}

QString Units(std::initializer_list<ushort> units)
{
    QString text;
    for (const ushort unit : units)
        text += QChar(unit);
    return text;
}

// Each name's array holds its number in this list, by which the other side knows it.
QStringList Names()
{
    return {
        QString(),
        QStringLiteral("V(out)/I(in)"),
        QStringLiteral("100%"),
        QStringLiteral("."),
        QStringLiteral(".."),
        QStringLiteral(".hidden"),
        QStringLiteral("trailing/"),
        Units({'n', 0, 'l'}),
        Units({0xD800}),
        Units({'x', 0xDFFF, 'y'}),
        Units({0xD83D, 0xDE00}),
        QString::fromUtf8("\xC3\xBC"),
        Units({0xFEFF, 'b'}),
        QStringLiteral("catalogue"),
        QStringLiteral("catalogue-heap"),
        QStringLiteral("two words"),
        QString(2000, QLatin1Char('l')),
    };
}

void AddNames(PropertyObject& folder)
{
    int number = 0;
    for (const QString& name : Names())
        AddValue(folder, name, BVariant(std::vector<int>{number++}));
}

void BuildSample(PropertyObject& root)
{
    AddTypes(*AddFolder(root, QStringLiteral("types")));
    AddShapes(*AddFolder(root, QStringLiteral("shapes")));
    AddNames(*AddFolder(root, QStringLiteral("names")));
    AddNames(root);
    PropertyObject* const run = AddFolder(*AddFolder(root, QStringLiteral("res")), QStringLiteral("run0"));
    PropertyObject* const current = AddFolder(*run, QStringLiteral("I"));
    AddValue(*current, QStringLiteral("Data"), BVariant(std::vector<double>{0.1, 0.2, 0.4}))
        ->SetPropertyFlags(5);
    AddValue(*current, QStringLiteral("Unit"), BVariant(std::string("mA")));
    AddValue(*current, QStringLiteral("Scale"), BVariant(std::complex<double>(1.0, -2.0)), IsCellArrayTrue);
    AddValue(*current, QStringLiteral("Nothing"), BVariant());
    AddReference(*current, QStringLiteral("Axis"), *run);
    AddValue(root, QStringLiteral("packed"),
             BVariant(std::vector<std::string>{"ab", std::string("c\0", 2), "", "def"}));
    AddValue(root, QStringLiteral("blocks"), BVariant(std::vector<std::uint8_t>(5U * 1024U * 1024U, 7)));
}

// Rows, in the order of the names: Root, a, b, f, g, x, y, p, r, s, t, z.
void BuildSmall(PropertyObject& root)
{
    AddValue(root, QStringLiteral("a"), BVariant(std::vector<double>{1, 2, 3, 4, 5, 6}, {2, 3}));
    AddValue(root, QStringLiteral("b"), BVariant(std::vector<bool>{true, false, true}));
    PropertyObject* const g = AddFolder(*AddFolder(root, QStringLiteral("f")), QStringLiteral("g"));
    AddValue(*g, QStringLiteral("x"), BVariant(std::vector<int>{10, 20, 30, 40}));
    AddValue(*g, QStringLiteral("y"), BVariant(2.5));
    AddValue(root, QStringLiteral("p"), BVariant(std::vector<std::string>{std::string("pa\0", 3), "cked"}));
    AddReference(root, QStringLiteral("r"), *g);
    AddValue(root, QStringLiteral("s"), BVariant(std::string("a text scalar")));
    AddValue(root, QStringLiteral("t"), BVariant(std::vector<std::string>{"one", "three", ""}));
    AddValue(root, QStringLiteral("z"), BVariant(true));
}

// Bytes of memory that this process has had at most since the last call of StartMeter.
std::uint64_t PeakMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stoull(line.substr(6)) * 1024;
    }
    return 0;
}

void StartMeter()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

// What keeps some array from being read, whole or in part; empty if nothing does.
QString ReasonUnread(const PropertyObject& folder)
{
    QString reason;
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (const AbstractProperty* const child : qAsConst(children)) {
        try {
            if (const auto* const below = dynamic_cast<const PropertyObject*>(child)) {
                reason = ReasonUnread(*below);
            } else if (const auto* const simple = dynamic_cast<const SimpleProperty*>(child)) {
                const BVariant value = simple->GetValue();
                if (!value.isScalar() && !value.getDimensions().empty() && value.getDimensions()[0] != 0)
                    sliceRange(value, value.getDimensions()[0] - 1, value.getDimensions()[0] - 1);
                if (!value.isNull())
                    value.constData();
            } else if (const auto* const reference = dynamic_cast<const PropertyReference*>(child)) {
                reference->Resolve();
            }
        } catch (const std::exception& error) {
            reason = QString::fromUtf8(error.what());
        }
        if (!reason.isEmpty())
            return reason;
    }
    return QString();
}

// A file that can be opened but not read is refused no less, as far as a forger is concerned.
void Probe(const QString& path)
{
    constexpr unsigned longest = 20; // seconds; whoever started this program sees the signal
    ::alarm(longest);
    StartMeter();
    const char* end = "refused";
    QString why;
    {
        const Outcome opened = TryOpen(path);
        why = opened.why;
        if (opened.code >= 0) {
            why = ReasonUnread(*opened.file->GetRoot());
            end = why.isEmpty() ? "sound" : "unread";
        }
    }
    std::printf("%s\t%llu\t%s\n", end, static_cast<unsigned long long>(PeakMemory()),
                why.toUtf8().constData());
    std::fflush(stdout);
}

int Run(const std::string& command, const QString& path)
{
    if (command == "sample" || command == "small") {
        SaveNew(path, command == "sample" ? &BuildSample : &BuildSmall);
        return 0;
    }
    const Outcome opened = TryOpen(path, command == "open" ? DataFile::ReadOnly : DataFile::ReadWrite);
    if (opened.code < 0) {
        std::printf("%d %s\n", opened.code, opened.why.toUtf8().constData());
        return s_refused;
    }
    if (command == "resave")
        return opened.file->Save() >= 0 ? 0 : 1;
    const QString unreadable = ReadArrays(*opened.file->GetRoot());
    if (unreadable.isEmpty())
        return 0;
    std::printf("%d %s\n", ER_FAILED, unreadable.toUtf8().constData());
    return s_refused;
}

std::uint64_t BytesRead()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    std::uint64_t bytes = 0;
    counters >> name >> bytes;
    return bytes;
}

// Prints how many bytes an open reads, how many the elements [first, first + count) of the array "a", and these.
void PrintPart(const QString& path, std::uint64_t first, std::uint64_t count)
{
    const std::uint64_t start = BytesRead();
    const auto file = Open(path);
    const std::uint64_t opened = BytesRead();
    const BVariant array = ValueOf(*file->GetRoot(), QStringLiteral("a"));
    std::vector<double> numbers(count);
    copyElements(array, first, count, numbers.data());
    std::printf("%llu %llu", static_cast<unsigned long long>(opened - start),
                static_cast<unsigned long long>(BytesRead() - opened));
    for (const double number : numbers)
        std::printf(" %g", number);
    std::printf("\n");
}

} // namespace

int main(int count, char** arguments)
{
    const bool isProbe = count > 2 && std::string(arguments[1]) == "probe";
    const bool isPart = count == 5 && std::string(arguments[1]) == "part";
    if (count != 3 && !isProbe && !isPart) {
        std::fprintf(stderr, "usage: storage_tool sample|small|open|resave FILE, or probe FILE...,\n"
                             "       or part FILE FIRST COUNT\n");
        return 2;
    }
    try {
        if (isPart) {
            PrintPart(QString::fromLocal8Bit(arguments[2]), std::stoull(arguments[3]),
                      std::stoull(arguments[4]));
            return 0;
        }
        for (int i = 2; isProbe && i < count; ++i)
            Probe(QString::fromLocal8Bit(arguments[i]));
        if (isProbe)
            return 0;
        return Run(arguments[1], QString::fromLocal8Bit(arguments[2]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
