// The launcher: ostrel [OPTIONS] PROGRAM [ARG...].
#include <climits>
#include <string_view>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

#include "framework/launcher_options.h"
#include "framework/loader/module.h"
#include "framework/loader/program_image.h"
#include "framework/loader/script.h"
#include "framework/runtime/client_events.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/program_break.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/threads.h"

namespace {

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

// The program's arguments: those of the command line, with what script lines put in front of them.
std::vector<char*> program_arguments(const launcher_options& options, executable& program) {
    std::vector<char*> result;
    for (std::string& argument : program.arguments)
        result.push_back(argument.data());
    if (result.empty())
        result.push_back(options.argument_zero ? const_cast<char*>(options.argument_zero)
                                               : options.program[0]);
    char** const rest = options.program + 1;
    for (char** argument = rest; *argument; ++argument)
        result.push_back(*argument);
    result.push_back(nullptr);
    return result;
}

// Processes are listed under the name of what they have executed; by a descriptor, under that of its file.
void set_process_name(const std::string& executed_path, const std::string& path) {
    std::string name = executed_path;
    char file[PATH_MAX];
    if (name.starts_with("/dev/fd/"))
        if (const ssize_t length = readlink(path.c_str(), file, sizeof file); length > 0)
            name.assign(file, static_cast<std::size_t>(length));
    constexpr std::string_view unlinked = " (deleted)";
    if (name.ends_with(unlinked))
        name.resize(name.size() - unlinked.size());
    prctl(PR_SET_NAME, name.c_str() + name.rfind('/') + 1);
}

// Maps the program and its stack; returns the initial state.
thread_context* load(const launcher_options& options, const Elf64_auxv_t* auxiliary) {
    const char* const name = options.program[0];
    set_program_name(name);
    load_error error;
    const std::string path = options.argument_zero ? name : find_program(name);
    if (path.empty())
        die_with_message(status_not_found, "command not found");
    std::optional<executable> program = find_executable(path.c_str(), error);
    const std::optional<elf_file> file = program ? open_elf_file(program->path.c_str(), error) : std::nullopt;
    program_image image;
    if (!file || !map_program(*file, program_base(), image, error))
        die_of_load_error(error);
    close(file->descriptor);
    set_main_module(image, program->path.c_str());
    set_initial_break(image.end);
    const std::string executed_path = options.executed_as ? options.executed_as : path;
    set_process_name(executed_path, path);
    if (options.closed_descriptor >= 0)
        close(options.closed_descriptor);

    program_image interpreter{};
    if (!file->interpreter.empty())
        interpreter = load_interpreter(file->interpreter);
    add_virtual_object();
    const std::vector<char*> arguments = program_arguments(options, *program);
    const std::uint64_t sp = build_initial_stack(image, interpreter.bias, executed_path.c_str(),
                                                 arguments.data(), environ, auxiliary, error);
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
    const Elf64_auxv_t* const auxiliary = auxiliary_vector_behind(environ);
    launcher_options options = parse_options(arguments);
    const auto start = [&] {
        start_client(static_cast<int>(options.client_arguments.size()), options.client_arguments.data());
    };
    // The client's answer to an option that nobody knows comes before anything about the program.
    const bool options_first = options.client_arguments.size() > 1;
    if (options_first)
        start();
    if (!*options.program)
        die_with_message(status_unsupported, "no program given; try 'ostrel --help'");
    thread_context* const context = load(options, auxiliary);
    if (!options_first)
        start();
    start_signals();
    raw_system_call(SYS_rt_sigprocmask, SIG_BLOCK, 0, reinterpret_cast<std::uint64_t>(&context->signals.mask),
                    sizeof context->signals.mask);
    run_thread(context);
    // The process lives on in its other threads.
    for (;;)
        raw_system_call(SYS_exit, 0);
}
