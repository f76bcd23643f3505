#include "framework/runtime/exec_calls.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "framework/loader/module.h"
#include "framework/loader/script.h"
#include "framework/runtime/interruptible.h"
#include "framework/runtime/path_calls.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/system_calls.h"

namespace {

// More pointers than any list can have that the kernel accepts, which counts 9 bytes for each at least.
constexpr std::size_t most_arguments = std::size_t{6} << 17;

std::uint64_t address_of(const void* object) { return reinterpret_cast<std::uint64_t>(object); }

// The arguments of the launcher, and what they are made of.
struct exec_command {
    std::string path;
    std::vector<std::string> words;
    std::vector<std::uint64_t> arguments; // addresses of strings, null-terminated
};
thread_local std::unique_ptr<exec_command> last_command;

// Appends the pointers of a null-terminated list. False if it cannot be read or is longer than any.
bool append_list(std::uint64_t list, std::vector<std::uint64_t>& pointers) {
    for (std::uint64_t pointer; pointers.size() < most_arguments; list += sizeof pointer) {
        if (!read_application(pointer, list))
            return false;
        pointers.push_back(pointer);
        if (pointer == 0)
            return true;
    }
    return false;
}

// Whether the kernel would give the process rights that it does not have, and would not give them to another
// program that reads the file.
bool grants_rights(int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return true;
    const bool other_user = status.st_mode & S_ISUID && status.st_uid != geteuid();
    const bool other_group =
        status.st_mode & S_ISGID && status.st_mode & S_IXGRP && status.st_gid != getegid();
    return other_user || other_group ||
           (geteuid() != 0 && fgetxattr(descriptor, "security.capability", nullptr, 0) > 0);
}

// Whether the file is that of the engine: one that runs itself would translate its own translations.
bool is_engine(int descriptor) {
    struct stat own, other;
    return stat(following.command[following.launcher_words].c_str(), &own) == 0 &&
           fstat(descriptor, &other) == 0 && own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

// A path by which the engine can be executed: its own, or where that leads nowhere, as behind chroot, that of
// the process's executable. Empty if there is none.
std::string path_to_engine() {
    for (const std::string& path :
         {following.command[following.launcher_words], std::string("/proc/self/exe")})
        if (access(path.c_str(), X_OK) == 0)
            return path;
    return {};
}

bool can_open(const std::string& path) {
    load_error ignored;
    const std::optional<elf_file> file = open_elf_file(path.c_str(), ignored);
    if (file)
        close(file->descriptor);
    return file.has_value();
}

// How the program behind the path, or behind its script line, is run.
enum class way { left_to_kernel, followed, engine };
way way_of(const char* path, bool script_allowed) {
    load_error ignored;
    const std::optional<executable> found = find_executable(path, ignored);
    if (!found || (!script_allowed && !found->arguments.empty()))
        return way::left_to_kernel;
    const std::optional<elf_file> file = open_elf_file(found->path.c_str(), ignored);
    if (!file)
        return way::left_to_kernel;
    const bool kept_out = grants_rights(file->descriptor);
    const bool engine = is_engine(file->descriptor);
    close(file->descriptor);
    if (kept_out || (!file->interpreter.empty() && !can_open(file->interpreter)))
        return way::left_to_kernel;
    return !engine ? way::followed : following.launcher_words ? way::engine : way::left_to_kernel;
}

// What is to be executed.
struct exec_request {
    std::string path;
    std::string executed_path; // as the application names it
    bool script_allowed;
    int closed_descriptor; // to be closed once the program is open, or -1
    std::uint64_t arguments;
    std::uint64_t environment;
};

// The launcher's command for the request. Null if it is nothing for the launcher: then the kernel says what
// is wrong with it, or finds a way to run it.
std::unique_ptr<exec_command> make_command(const exec_request& request) {
    if (following.command.empty())
        return nullptr;
    const way chosen = way_of(request.path.c_str(), request.script_allowed);
    if (chosen == way::left_to_kernel)
        return nullptr;
    std::vector<std::uint64_t> given;
    if (request.arguments == 0)
        given = {0};
    else if (!append_list(request.arguments, given))
        return nullptr;
    if (given[0] == 0) // a program has at least one
        given.insert(given.begin(), address_of(""));

    auto command = std::make_unique<exec_command>();
    command->path = request.path;
    std::vector<std::string>& words = command->words;
    words = following.command;
    words[following.launcher_words] = path_to_engine();
    if (words[following.launcher_words].empty())
        return nullptr;
    if (chosen == way::engine) {
        words.resize(following.launcher_words);
    } else {
        if (request.closed_descriptor >= 0)
            words.insert(words.end(), {close_descriptor_option, std::to_string(request.closed_descriptor)});
        if (request.executed_path != request.path)
            words.insert(words.end(), {executed_path_option, request.executed_path});
        words.push_back(argument_zero_option);
    }
    std::vector<std::uint64_t>& all = command->arguments;
    for (const std::string& word : words)
        all.push_back(address_of(word.c_str()));
    if (chosen == way::followed)
        all.insert(all.end(), {given[0], address_of("--")});
    all.push_back(address_of(command->path.c_str()));
    all.insert(all.end(), given.begin() + 1, given.end());
    return command;
}

// Executes the launcher's last command. On failure the context is as before but for X0.
void execute_command(thread_context* context, std::uint64_t environment) {
    const std::uint64_t arguments[] = {last_command->arguments[0], address_of(last_command->arguments.data()),
                                       environment};
    std::uint64_t saved[9];
    std::memcpy(saved, context->x, sizeof saved);
    std::memcpy(context->x, arguments, sizeof arguments);
    context->x[8] = SYS_execve;
    {
        const executing_signals signals(context);
        if (pass_to_kernel(context))
            saved[0] = context->x[0];
    }
    std::memcpy(context->x, saved, sizeof saved);
    release_exec_command();
}

// The text at a path that can be read. No copy outlives the handlers' preparations: if the call succeeds in a
// child that shares memory, nothing of theirs is freed any more.
const char* text_at(std::uint64_t path) { return reinterpret_cast<const char*>(path); }

void handle_execve(thread_context* context) {
    const std::uint64_t path = context->x[0];
    const bool own = asks_for_own_executable(path);
    const char* const name = own ? main_module()->full_path.c_str() : text_at(path);
    if (is_readable_path(path))
        last_command = make_command({name, text_at(path), true, -1, context->x[1], context->x[2]});
    if (last_command)
        return execute_command(context, context->x[2]);
    const executing_signals signals(context);
    context->x[0] = address_of(name);
    if (!pass_to_kernel(context))
        context->x[0] = path;
}

// A path for what execveat names, and a descriptor that is to be closed behind it or -1. An empty path if
// there is none.
struct named_file {
    std::string path;
    std::string executed_path;
    bool script_allowed = false;
    int closed_descriptor = -1;
};
named_file file_at(int directory, const char* path, std::uint64_t flags) {
    const bool nothing = *path == '\0';
    if (flags & ~std::uint64_t{AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW} ||
        (nothing && (!(flags & AT_EMPTY_PATH) || directory == AT_FDCWD)))
        return {};
    char target[1];
    if (flags & AT_SYMLINK_NOFOLLOW && readlinkat(directory, path, target, sizeof target) >= 0)
        return {};
    if (*path == '/' || directory == AT_FDCWD)
        return {path, path, true, -1};
    const int descriptor_flags = fcntl(directory, F_GETFD);
    if (descriptor_flags < 0)
        return {};
    // The interpreter of a script would come too late for a descriptor that is closed.
    const bool closed = descriptor_flags & FD_CLOEXEC;
    const int kept = closed ? fcntl(directory, F_DUPFD, 3) : directory;
    const std::string behind = nothing ? std::string() : std::string("/") + path;
    // The kernel names it by /dev/fd, which not every system has.
    const std::string descriptors = access("/dev/fd", F_OK) == 0 ? "/dev/fd/" : "/proc/self/fd/";
    return {descriptors + std::to_string(kept) + behind, "/dev/fd/" + std::to_string(directory) + behind,
            !closed, closed ? kept : -1};
}

// Leaves the launcher's command, if there is one, in `last_command` and returns the descriptor that is open
// for it, or -1.
int make_command_at(const thread_context* context) {
    const std::uint64_t* const x = context->x;
    if (following.command.empty() || !is_readable_path(x[1]))
        return -1;
    const named_file file = file_at(static_cast<int>(x[0]), text_at(x[1]), x[4]);
    if (!file.path.empty())
        last_command = make_command(
            {file.path, file.executed_path, file.script_allowed, file.closed_descriptor, x[2], x[3]});
    if (last_command)
        return file.closed_descriptor;
    if (file.closed_descriptor >= 0)
        close(file.closed_descriptor);
    return -1;
}

void handle_execveat(thread_context* context) {
    const int descriptor = make_command_at(context);
    if (!last_command) {
        const executing_signals signals(context);
        pass_to_kernel(context);
        return;
    }
    execute_command(context, context->x[3]);
    if (descriptor >= 0)
        close(descriptor);
}

constexpr system_call_row rows[] = {
    {SYS_execve, handle_execve},
    {SYS_execveat, handle_execveat},
};

} // namespace

void release_exec_command() { last_command.reset(); }

system_call_rows exec_calls() { return rows; }
