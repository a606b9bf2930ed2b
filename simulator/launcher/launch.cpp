// Runs the command of virtual-board.
#include "simulator/launcher/launch.hpp"

#include "simulator/board_directory.hpp"
#include "simulator/launcher/executable.hpp"
#include "simulator/text.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace simulator
{

namespace
{

namespace fs = std::filesystem;

volatile pid_t command_pid = 0;

int complain(const std::string &reason)
{
    fprintf(stderr, "virtual-board: %s\n", reason.c_str());
    return OWN_FAILURE;
}

// Beside the program, as it lies in the build tree or as it is installed.
std::string own_preload()
{
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    fs::path library;
    for (const char *path : {VIRTUAL_BOARD_LIBRARY_PATHS}) {
        library = (folder / path).lexically_normal();
        if (fs::exists(library)) {
            break;
        }
    }
    return library.string();
}

// Empty, or why the board cannot be used.
std::string prepare_board(const LaunchOptions &options)
{
    BoardDirectory directory;
    BoardIdentity identity;
    std::string error = directory.open(options.settings.directory);
    if (error.empty()) {
        error = directory.load(identity);
    }
    if (!error.empty()) {
        return error;
    }
    identity.mode = options.mode.value_or(identity.mode);
    identity.boot_loader_version = options.version.value_or(identity.boot_loader_version);
    return directory.save(identity);
}

// A new transcript for this command; programs only add to it.
std::string prepare_transcript(const std::string &path)
{
    if (path.empty() || path == "-" || std::ofstream(path)) {
        return {};
    }
    return path + ": " + strerror(errno);
}

// The dynamic loader takes a list separated by colons or blanks.
std::string check_preload(const std::string &path)
{
    if (access(path.c_str(), R_OK) != 0) {
        return path + ": " + strerror(errno);
    }
    return path.find_first_of(": ") == std::string::npos
               ? std::string()
               : path + ": the path of a library to load can have no blank and no colon";
}

std::string preload_list(const std::string &path)
{
    const char *others = getenv("LD_PRELOAD");
    return others != nullptr && *others != '\0' ? path + ':' + others : path;
}

// Instrumented programs insist on being loaded first; they do without.
void admit_instrumented_programs()
{
    const char *given = getenv("ASAN_OPTIONS");
    const std::string options = given != nullptr && *given != '\0' ? given + std::string(":") : "";
    setenv("ASAN_OPTIONS", (options + "verify_asan_link_order=0").c_str(), 1);
}

// The command's words as they are run, with its library in place.
std::vector<char *> prepare_command(LaunchOptions &options, const std::string &preload)
{
    admit_instrumented_programs();
    std::vector<char *> words;
    if (options.emulator.empty()) {
        setenv("LD_PRELOAD", preload_list(preload).c_str(), 1);
    } else {
        options.emulator.insert(options.emulator.end(),
                                {"-E", text("LD_PRELOAD=%s", preload.c_str())});
        for (std::string &word : options.emulator) {
            words.push_back(word.data());
        }
    }
    words.insert(words.end(), options.command.begin(), options.command.end());
    words.push_back(nullptr);
    return words;
}

int run_in_place(const std::vector<char *> &words)
{
    execvp(words[0], words.data());
    const int error = errno;
    complain(text("%s: %s", words[0], strerror(error)));
    return error == ENOENT ? NO_SUCH_COMMAND : CANNOT_RUN;
}

void forward_signal(int signal, siginfo_t *info, void *)
{
    // What comes from the terminal has reached the command already.
    if (info->si_code <= 0 && command_pid > 0) {
        kill(command_pid, signal);
    }
}

void forward_signals()
{
    struct sigaction action = {};
    action.sa_sigaction = forward_signal;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2}) {
        sigaction(signal, &action, nullptr);
    }
}

// The signals wait until it is known whom to forward them to.
int run_beside(const std::vector<char *> &words)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before);
    command_pid = fork();
    if (command_pid == 0) {
        sigprocmask(SIG_SETMASK, &before, nullptr);
        _exit(run_in_place(words));
    }
    forward_signals();
    sigprocmask(SIG_SETMASK, &before, nullptr);
    int status = 0;
    if (command_pid < 0 || waitpid(command_pid, &status, 0) < 0) {
        return complain(strerror(errno));
    }
    return WIFSIGNALED(status) ? KILLED_BY_SIGNAL + WTERMSIG(status) : WEXITSTATUS(status);
}

int run_on_fresh_board(LaunchOptions &options, const std::string &preload)
{
    std::string directory = fs::temp_directory_path() / "virtual-board-XXXXXX";
    if (mkdtemp(directory.data()) == nullptr) {
        return complain(directory + ": " + strerror(errno));
    }
    options.settings.directory = directory;
    put_into_environment(options.settings);
    const std::string error = prepare_board(options);
    const int status =
        error.empty() ? run_beside(prepare_command(options, preload)) : complain(error);
    std::error_code ignored;
    fs::remove_all(directory, ignored);
    return status;
}

} // namespace

int launch(LaunchOptions &options)
{
    Settings &settings = options.settings;
    if (settings.through && settings.transcript.empty()) {
        settings.transcript.assign(1, '-');
    }
    const std::string preload = options.preload.empty() ? own_preload() : options.preload;
    for (const std::string &error : {check_preload(preload), why_not_loadable(options.command[0]),
                                     prepare_transcript(settings.transcript)}) {
        if (!error.empty()) {
            return complain(error);
        }
    }
    if (!settings.through && settings.directory.empty()) {
        return run_on_fresh_board(options, preload);
    }
    const std::string error = settings.through ? std::string() : prepare_board(options);
    if (!error.empty()) {
        return complain(error);
    }
    put_into_environment(settings);
    return run_in_place(prepare_command(options, preload));
}

} // namespace simulator
