#include "hosts/orrery/CommandLine.h"

int main(int argc, char** argv)
{
    return Orrery::Host::runCommandLine(argc, argv);
}
