// Any bytes in place of a data file are refused with a reason, or give a tree that can be saved and read again.
#include "foundations/property/Property.h"
#include "foundations/storage/DataFileFactory.h"
#include "tests/fuzz/TemporaryInput.h"

#include <QString>
#include <QtGlobal>

#include <cstdint>
#include <cstdlib>
#include <memory>

using namespace Orrery;

namespace {

void Discard(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QtMessageHandler former = qInstallMessageHandler(&Discard);
    Q_UNUSED(former)

    const TemporaryInput input(data, size);
    std::shared_ptr<DataFile> file;
    QString why;
    const ERESULT code = DataFileFactory::Instance().Open(QString::fromStdString(input.Path()),
                                                          DataFile::ReadOnly, &file, &why);
    if (code < 0) {
        if (why.isEmpty() || why.contains(QLatin1Char('\n')))
            std::abort();
        return 0;
    }
    const std::unique_ptr<AbstractProperty> copy(file->GetRoot()->Clone());
    if (static_cast<PropertyObject*>(copy.get())->GetPropertyCount() != file->GetRoot()->GetPropertyCount())
        std::abort();
    return 0;
}
