// Runs the command of virtual-board.
#include "simulator/launcher/launch.hpp"

#include "simulator/driver/intrusion.hpp"
#include "simulator/launcher/preparation.hpp"
#include "simulator/words/text.hpp"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace simulator
{

namespace
{

namespace fs = std::filesystem;

// Signals that would end this process before it can clean up.
constexpr int FORWARDED_SIGNALS[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGUSR1,  SIGUSR2,
                                     SIGALRM, SIGPIPE, SIGPROF, SIGXCPU, SIGVTALRM};

volatile pid_t command_pid = 0;

int run_in_place(const std::vector<char *> &words)
{
    execvp(words[0], words.data());
    const int error = errno;
    complain(text("%s: %s", words[0], strerror(error)));
    return error == ENOENT ? NO_SUCH_COMMAND : CANNOT_RUN;
}

void forward_signal(int signal, siginfo_t *info, void *)
{
    // A signal from the terminal has already reached the command.
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
    for (const int signal : FORWARDED_SIGNALS) {
        sigaction(signal, &action, nullptr);
    }
}

// Dies as the command did, so that the parent of this process sees the same status.
[[noreturn]] void die_of(int signal)
{
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    std::signal(signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    raise(signal);
    _exit(KILLED_BY_SIGNAL + signal);
}

// Runs the command and waits for its end; status is that of waitpid. 0, or an errno.
int run_beside(const std::vector<char *> &words, int &status)
{
    struct sigaction child_before = {};
    struct sigaction child_default = {};
    child_default.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &child_default, &child_before); // if it is ignored, the end cannot be seen
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before); // until the process to forward signals to is known
    command_pid = fork();
    if (command_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        sigaction(SIGCHLD, &child_before, nullptr);
        sigprocmask(SIG_SETMASK, &before, nullptr);
        _exit(run_in_place(words));
    }
    const int fork_error = errno;
    forward_signals();
    sigprocmask(SIG_SETMASK, &before, nullptr);
    if (command_pid < 0) {
        return fork_error;
    }
    return waitpid(command_pid, &status, 0) < 0 ? errno : 0;
}

int run_on_fresh_board(LaunchOptions &options, const std::string &preload)
{
    std::error_code error;
    const fs::path parent = fs::absolute(fs::temp_directory_path(error), error);
    std::string directory = parent / "virtual-board-XXXXXX";
    if (error || mkdtemp(directory.data()) == nullptr) {
        return complain(text("cannot create a temporary folder: %s",
                             error ? error.message().c_str() : strerror(errno)));
    }
    options.run.directory = directory;
    const std::string reason = prepare_board(options);
    int status = 0;
    const int failure = reason.empty() ? run_beside(prepare_command(options, preload), status) : 0;
    fs::remove_all(directory, error);
    if (!reason.empty() || failure != 0) {
        return complain(reason.empty() ? strerror(failure) : reason);
    }
    if (WIFSIGNALED(status)) {
        die_of(WTERMSIG(status));
    }
    return WEXITSTATUS(status);
}

int run_on_lasting_board(LaunchOptions &options, const std::string &preload)
{
    const std::string reason = options.run.through ? "" : prepare_board(options);
    return reason.empty() ? run_in_place(prepare_command(options, preload)) : complain(reason);
}

} // namespace

int complain(const std::string &reason)
{
    fprintf(stderr, "virtual-board: %s\n", reason.c_str());
    return OWN_FAILURE;
}

int launch(LaunchOptions &options)
{
    RunOptions &run = options.run;
    if (run.through && run.transcript.empty()) {
        run.transcript.assign(1, '-');
    }
    const std::string preload = find_preload(options);
    std::string reason = check_preload(options, preload);
    if (reason.empty()) {
        reason = Intrusion().load(run.behaviour.faults); // before it is overwritten
    }
    if (reason.empty()) {
        reason = prepare_transcript(run);
    }
    if (!reason.empty()) {
        return complain(reason);
    }
    return run.through || !run.directory.empty() ? run_on_lasting_board(options, preload)
                                                 : run_on_fresh_board(options, preload);
}

} // namespace simulator
