// The launcher: ostrel [OPTIONS] PROGRAM [ARG...].
#include <cstdio>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

#include "framework/loader/module.h"
#include "framework/loader/program_image.h"
#include "framework/runtime/client_events.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/program_break.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/threads.h"

namespace {

constexpr char usage[] =
    "Usage: ostrel [OPTIONS] PROGRAM [ARG...]\n"
    "Runs an AArch64 program that was compiled for SVE on a processor without SVE.\n"
    "\n"
    "  --help     show this text\n"
    "  --version  show the version\n"
    "  --         end the options\n"
    "\n"
    "PROGRAM without a slash is looked up in PATH. Counts of the instructions executed go to\n"
    "standard error at exit.\n"
    "\n"
    "Exit status: the program's own, or 125 if a feature that it needs is not supported, 126 if\n"
    "it cannot be executed, 127 if it is not found.\n";

struct command_line {
    std::vector<const char*>
        client_arguments; // options that are not the launcher's, behind the client's name
    char** program;       // PROGRAM and its arguments, null-terminated
};

[[noreturn]] void print_and_exit(const char* text) {
    const bool written = std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0;
    exit_process(written ? 0 : 1);
}

command_line parse(char** arguments) {
    command_line result{{"ostrel"}, nullptr};
    for (++arguments; *arguments && **arguments == '-'; ++arguments) {
        if (std::strcmp(*arguments, "--") == 0) {
            ++arguments;
            break;
        }
        if (std::strcmp(*arguments, "--help") == 0)
            print_and_exit(usage);
        if (std::strcmp(*arguments, "--version") == 0)
            print_and_exit("ostrel " OSTREL_VERSION "\n");
        result.client_arguments.push_back(*arguments);
    }
    result.program = arguments;
    return result;
}

[[noreturn]] void die_of_load_error(const load_error& error) {
    die_with_message(error.status, error.reason.c_str());
}

// The auxiliary vector stands behind the environment as the kernel left it.
const Elf64_auxv_t* auxiliary_vector_behind(char** environment) {
    while (*environment)
        ++environment;
    return reinterpret_cast<const Elf64_auxv_t*>(environment + 1);
}

// Maps the interpreter that is to load the program's libraries and to start it.
program_image load_interpreter(const std::string& path) {
    load_error error;
    program_image image;
    const std::optional<elf_file> file = open_elf_file(path.c_str(), error);
    if (!file || !map_program(*file, 0, image, error)) {
        error.reason = "interpreter " + path + ": " + error.reason;
        die_of_load_error(error);
    }
    close(file->descriptor);
    add_library(image, path.c_str());
    return image;
}

// Maps the program and its stack; returns the initial state.
thread_context* load(char** arguments, const Elf64_auxv_t* auxiliary) {
    set_program_name(arguments[0]);
    load_error error;
    const std::string path = find_program(arguments[0]);
    if (path.empty())
        die_with_message(status_not_found, "command not found");
    const std::optional<elf_file> file = open_elf_file(path.c_str(), error);
    program_image image;
    if (!file || !map_program(*file, program_base, image, error))
        die_of_load_error(error);
    close(file->descriptor);
    set_main_module(image, path.c_str());
    set_initial_break(image.end);

    program_image interpreter{};
    if (!file->interpreter.empty())
        interpreter = load_interpreter(file->interpreter);
    const std::uint64_t sp =
        build_initial_stack(image, interpreter.bias, path.c_str(), arguments, environ, auxiliary, error);
    if (!sp)
        die_of_load_error(error);

    thread_context* const context = create_thread_context();
    main_cache_place = image.start;
    if (!context || !create_code_cache(context, main_cache_place))
        die_with_message(status_cannot_execute, "no memory for the code cache");
    context->pc = file->interpreter.empty() ? image.entry : interpreter.entry;
    context->sp = sp;
    return context;
}

} // namespace

int main(int, char** arguments) {
    command_line command = parse(arguments);
    // The client's answer to an option that nobody knows comes before anything about the program.
    const bool options_first = command.client_arguments.size() > 1;
    if (options_first)
        start_client(static_cast<int>(command.client_arguments.size()), command.client_arguments.data());
    if (!*command.program)
        die_with_message(status_unsupported, "no program given; try 'ostrel --help'");
    thread_context* const context = load(command.program, auxiliary_vector_behind(environ));
    if (!options_first)
        start_client(static_cast<int>(command.client_arguments.size()), command.client_arguments.data());
    start_signals();
    raw_system_call(SYS_rt_sigprocmask, SIG_BLOCK, 0, reinterpret_cast<std::uint64_t>(&context->signals.mask),
                    sizeof context->signals.mask);
    run_thread(context);
    // The process lives on in its other threads.
    for (;;)
        raw_system_call(SYS_exit, 0);
}
