// Examines the command before it is run.
#include "simulator/launcher/executable.hpp"

#include <elf.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace simulator
{

namespace
{

struct ElfFile {
    bool is_elf = false;
    unsigned char width = 0;   // ELFCLASS32 or ELFCLASS64
    unsigned type = 0;         // ET_EXEC, ET_DYN, ...
    unsigned machine = 0;      // EM_ARM, EM_X86_64, ...
    bool names_loader = false; // which means that it is dynamically linked
};

// Finds it as the shell does.
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

template <typename FileHeader, typename ProgramHeader>
void read_elf(std::ifstream &file, ElfFile &elf)
{
    FileHeader header = {};
    if (!read_header(file, 0, header)) {
        return;
    }
    elf.type = header.e_type;
    elf.machine = header.e_machine;
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        ProgramHeader segment = {};
        const auto at = static_cast<std::streamoff>(header.e_phoff + i * sizeof(segment));
        elf.names_loader |= read_header(file, at, segment) && segment.p_type == PT_INTERP;
    }
}

ElfFile look_at(const std::string &path)
{
    ElfFile elf;
    std::ifstream file(path, std::ios::binary);
    unsigned char identity[EI_NIDENT] = {};
    elf.is_elf = read_header(file, 0, identity) && memcmp(identity, ELFMAG, SELFMAG) == 0;
    elf.width = identity[EI_CLASS];
    if (elf.is_elf && elf.width == ELFCLASS64) {
        read_elf<Elf64_Ehdr, Elf64_Phdr>(file, elf);
    } else if (elf.is_elf) {
        read_elf<Elf32_Ehdr, Elf32_Phdr>(file, elf);
    }
    return elf;
}

// The program that runs a script, or the program itself.
std::string interpreter_of(std::string program)
{
    constexpr int MOST_LEVELS = 5; // the kernel does not follow more
    for (int level = 0; level < MOST_LEVELS; ++level) {
        std::ifstream file(program, std::ios::binary);
        std::string line;
        std::string interpreter;
        std::getline(file, line);
        if (!line.starts_with("#!") || !(std::istringstream(line.substr(2)) >> interpreter)) {
            break;
        }
        program = interpreter;
    }
    return program;
}

// If so, the dynamic loader searches only the system's own folders for libraries.
bool gains_rights(const std::string &program)
{
    struct stat status = {};
    if (geteuid() == 0 || stat(program.c_str(), &status) != 0) {
        return false;
    }
    const bool other_user = (status.st_mode & S_ISUID) != 0 && status.st_uid != geteuid();
    const bool other_group = (status.st_mode & S_ISGID) != 0 && status.st_gid != getegid();
    const bool capable = getxattr(program.c_str(), "security.capability", nullptr, 0) > 0;
    return other_user || other_group || capable;
}

} // namespace

std::string why_not_loadable(const std::string &command, const std::string &library)
{
    const ElfFile loaded = look_at(library);
    if (!loaded.is_elf || loaded.type != ET_DYN) {
        return library + ": not a library that can be loaded";
    }
    const std::string program = interpreter_of(find_program(command));
    const ElfFile elf = look_at(program);
    if (!elf.is_elf) {
        return {};
    }
    if (!elf.names_loader) {
        return program + ": statically linked, so its device cannot be replaced";
    }
    if (elf.width != loaded.width || elf.machine != loaded.machine) {
        return program + ": of a different architecture from " + library;
    }
    if (gains_rights(program)) {
        return program + ": runs with different privileges, so its device cannot be replaced";
    }
    return {};
}

} // namespace simulator
