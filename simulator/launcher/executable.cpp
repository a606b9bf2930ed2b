// Looks at the command before it is run.
#include "simulator/launcher/executable.hpp"

#include <elf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

namespace simulator
{

namespace
{

// As the shell finds it.
std::string find_program(const std::string &command)
{
    if (command.find('/') != std::string::npos) {
        return command;
    }
    const char *path = getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/bin:/usr/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::string program = (folder.empty() ? "." : folder) + '/' + command;
        if (access(program.c_str(), X_OK) == 0) {
            return program;
        }
    }
    return command;
}

template <typename Header>
bool read_header(std::ifstream &file, std::streamoff at, Header &header)
{
    file.seekg(at);
    return static_cast<bool>(file.read(reinterpret_cast<char *>(&header), sizeof(header)));
}

// True if it names a dynamic loader, and if it cannot be read to its end.
template <typename FileHeader, typename ProgramHeader>
bool names_loader(std::ifstream &file)
{
    FileHeader header = {};
    if (!read_header(file, 0, header)) {
        return true;
    }
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        ProgramHeader segment = {};
        const auto at = static_cast<std::streamoff>(header.e_phoff + i * sizeof(segment));
        if (!read_header(file, at, segment) || segment.p_type == PT_INTERP) {
            return true;
        }
    }
    return false;
}

bool is_static(const std::string &program)
{
    std::ifstream file(program, std::ios::binary);
    unsigned char identity[EI_NIDENT] = {};
    if (!read_header(file, 0, identity) || memcmp(identity, ELFMAG, SELFMAG) != 0) {
        return false;
    }
    return identity[EI_CLASS] == ELFCLASS64 ? !names_loader<Elf64_Ehdr, Elf64_Phdr>(file)
                                            : !names_loader<Elf32_Ehdr, Elf32_Phdr>(file);
}

bool changes_user(const std::string &program)
{
    struct stat status = {};
    return stat(program.c_str(), &status) == 0 && (status.st_mode & S_ISUID) != 0 &&
           status.st_uid != geteuid();
}

} // namespace

std::string why_not_loadable(const std::string &command)
{
    const std::string program = find_program(command);
    if (is_static(program)) {
        return program + ": statically linked, its device cannot be replaced";
    }
    if (changes_user(program)) {
        return program + ": runs as another user, its device cannot be replaced";
    }
    return {};
}

} // namespace simulator
