// What must be in place before a command can run on a virtual board.
#include "simulator/launcher/preparation.hpp"

#include "simulator/launcher/executable.hpp"
#include "simulator/store/board_directory.hpp"
#include "simulator/store/shared_state.hpp"
#include "simulator/words/text.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace simulator
{

namespace
{

namespace fs = std::filesystem;

std::string variable(const char *name)
{
    const char *value = getenv(name);
    return value != nullptr ? value : "";
}

// Puts an entry in front of the others in a variable's list.
std::string with_first(const std::string &first, const char *name)
{
    const std::string others = variable(name);
    return others.empty() ? first : first + ':' + others;
}

// How the dynamic loader finds the library: by its path or, because a blank would end the path, by
// its name and the folder to search.
struct LoaderVariables {
    std::string preload;
    std::string library_path; // empty if the preload is a path
};

LoaderVariables loader_variables(const std::string &preload)
{
    if (preload.find(' ') == std::string::npos) {
        return {preload, ""};
    }
    const fs::path path(preload);
    return {path.filename().string(), path.parent_path().string()};
}

// Instrumented programs insist that their runtime is loaded first; this makes them do without.
void admit_instrumented_programs()
{
    const std::string given = variable("ASAN_OPTIONS");
    const std::string options = given.empty() ? "" : given + ':';
    setenv("ASAN_OPTIONS", (options + "verify_asan_link_order=0").c_str(), 1);
}

void set_for_own_architecture(const LoaderVariables &loader)
{
    setenv("LD_PRELOAD", with_first(loader.preload, "LD_PRELOAD").c_str(), 1);
    if (!loader.library_path.empty()) {
        setenv("LD_LIBRARY_PATH", with_first(loader.library_path, "LD_LIBRARY_PATH").c_str(), 1);
    }
}

// The emulator sets the variables for the program that it runs; it must not have them itself.
void set_for_emulator(std::vector<std::string> &emulator, const LoaderVariables &loader)
{
    emulator.insert(emulator.end(), {"-E", text("LD_PRELOAD=%s", loader.preload.c_str())});
    if (!loader.library_path.empty()) {
        emulator.insert(emulator.end(),
                        {"-E", text("LD_LIBRARY_PATH=%s", loader.library_path.c_str())});
    }
}

// Those that the board already has are kept, unless they are given again.
std::string add_answers(const BoardDirectory &directory, const CommandValues &fresh)
{
    CommandValues answers;
    std::string error = directory.load(ValuesOf::answers, answers);
    if (!error.empty() || fresh.empty()) {
        return error;
    }
    for (const auto &[key, value] : fresh) {
        answers[key] = value;
    }
    return directory.save(ValuesOf::answers, answers);
}

} // namespace

std::string find_preload(const LaunchOptions &options)
{
    if (!options.preload.empty()) {
        return options.preload;
    }
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    fs::path library;
    for (const char *path : {VIRTUAL_BOARD_LIBRARY_PATHS}) {
        library = (folder / path).lexically_normal();
        if (fs::exists(library, error)) {
            break;
        }
    }
    return library.string();
}

std::string check_preload(const LaunchOptions &options, const std::string &preload)
{
    if (access(preload.c_str(), R_OK) != 0) {
        return preload + ": " + strerror(errno);
    }
    const char *separators = options.emulator.empty() ? ":;$" : ":;$,";
    if (preload.find_first_of(separators) != std::string::npos) {
        return preload +
               text(": a library whose path contains one of %s cannot be loaded", separators);
    }
    if (!options.emulator.empty() && access(options.command[0], F_OK) != 0) {
        return {}; // the emulator reports it
    }
    return why_not_loadable(options.command[0], preload);
}

std::string prepare_board(const LaunchOptions &options)
{
    BoardDirectory directory;
    std::string error = directory.open(options.run.directory);
    if (error.empty() && options.mode) {
        error = directory.save_mode(*options.mode);
    }
    if (error.empty() && options.version) {
        error = directory.save_version(*options.version);
    }
    if (error.empty()) {
        error = add_answers(directory, options.answers);
    }
    BoardIdentity identity;
    CommandValues settings;
    if (error.empty()) {
        error = directory.load(ValuesOf::settings, settings);
    }
    uint32_t spi_mode = 0;
    if (error.empty()) {
        error = directory.load_spi_mode(spi_mode);
    }
    return error.empty() ? directory.load(identity) : error;
}

std::string prepare_transcript(const RunOptions &run)
{
    const std::string &path = run.transcript;
    const bool goes_on = !run.directory.empty() && SharedState::is_used(run.directory);
    errno = 0;
    if (path.empty() || path == "-" ||
        std::ofstream(path, goes_on ? std::ios::app : std::ios::out)) {
        return {};
    }
    return path + ": " + strerror(errno);
}

std::vector<char *> prepare_command(LaunchOptions &options, const std::string &preload)
{
    admit_instrumented_programs();
    put_into_environment(options.run);
    const LoaderVariables loader = loader_variables(preload);
    std::vector<char *> words;
    if (options.emulator.empty()) {
        set_for_own_architecture(loader);
    } else {
        set_for_emulator(options.emulator, loader);
    }
    for (std::string &word : options.emulator) {
        words.push_back(word.data());
    }
    words.insert(words.end(), options.command.begin(), options.command.end());
    words.push_back(nullptr);
    return words;
}

} // namespace simulator
