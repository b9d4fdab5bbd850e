// Writes the manual pages of the program into MAN_FOLDER, and its completion for bash as COMPLETION_FILE. The build runs
// it, so that both say what the help says.
//
// usage: orrery_manual_writer MAN_FOLDER COMPLETION_FILE VERSION

#include "hosts/orrery/commands/Commands.h"
#include "hosts/orrery/manual/Completion.h"
#include "hosts/orrery/manual/ManPage.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

using namespace Orrery::Host;

// The same sources give the same pages: a date is there only if whoever builds a package tells it.
std::string dateOfSources()
{
    const char* const epoch = std::getenv("SOURCE_DATE_EPOCH");
    if (!epoch)
        return {};
    const std::time_t seconds = std::strtoll(epoch, nullptr, 10);
    std::tm date = {};
    char text[16];
    if (!::gmtime_r(&seconds, &date) || std::strftime(text, sizeof text, "%Y-%m-%d", &date) == 0)
        return {};
    return text;
}

void write(const std::filesystem::path& path, const std::string& content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    if (!file.flush())
        throw std::runtime_error(path.string() + ": can't be written");
}

void writeAll(const std::filesystem::path& pages, const std::filesystem::path& completion,
              const std::string& version)
{
    CLI::App program;
    Action action;
    setUpProgram(program, {[] {}, [](const std::string&) {}}, &action);
    const ProgramText text = textOf(program);
    const Edition edition = {version, dateOfSources()};
    std::filesystem::remove_all(pages); // a command that is gone has no page
    std::filesystem::create_directories(pages);
    write(pages / (text.program.name + ".1"), programPage(text, edition));
    for (const CommandText& command : text.commands)
        write(pages / (text.program.name + '-' + command.name + ".1"), commandPage(text, command, edition));
    std::filesystem::create_directories(completion.parent_path());
    write(completion, bashCompletion(text));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: orrery_manual_writer MAN_FOLDER COMPLETION_FILE VERSION\n");
        return 2;
    }
    try {
        writeAll(argv[1], argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orrery_manual_writer: %s\n", error.what());
        return 1;
    }
    return 0;
}
