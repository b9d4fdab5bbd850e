// Any bytes in place of a raw file are refused with one line, or read as plots whose vectors have their shape.
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/RawFile.h"
#include "tests/fuzz/TemporaryInput.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace Orrery;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const TemporaryInput input(data, size);
    try {
        Host::RawFile file(input.Path());
        Host::RawPlot plot;
        while (file.next(&plot)) {
            for (const Host::RawVector& vector : plot.vectors) {
                if (vector.data.isNull())
                    std::abort();
            }
        }
    } catch (const Host::Failure& failure) {
        const std::string line = failure.what();
        if (line.empty() || line.find('\n') != std::string::npos)
            std::abort();
    }
    return 0;
}
