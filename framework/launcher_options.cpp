#include "framework/launcher_options.h"

#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

#include "framework/ir/services.h"
#include "framework/loader/program_image.h"
#include "framework/runtime/announced_sve.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/exec_calls.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/report_file.h"

namespace {

// What is being made of the command line.
struct parse_state {
    launcher_options options{{"ostrel"}, nullptr, nullptr, -1, nullptr};
    bool follow = true;
    std::vector<std::string> launcher;  // words in front of the launcher's own path
    std::vector<std::string> inherited; // options for the programs that this one executes
};

struct option {
    std::string_view name;
    std::string_view short_name; // or empty
    const char* value_name;      // null if the option has no value
    const char* help;            // null if the option is between ostrel and itself
    bool inherited;              // holds also for programs that this one executes
    void (*apply)(parse_state&, const char* value);
};

[[noreturn]] void refuse_value(std::string_view option_name, const char* expected, const char* value) {
    const std::string reason = std::string(option_name) + ": " + expected + " expected, not ";
    die_with_message(status_unsupported, reason.c_str(), value);
}

std::optional<unsigned> number_of(std::string_view text) {
    unsigned number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc{} && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

[[noreturn]] void print_and_exit(const std::string& text) {
    const bool written = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    exit_process(written ? 0 : 1);
}

[[noreturn]] void print_help(parse_state&, const char*);
void print_version(parse_state&, const char*) { print_and_exit("ostrel " OSTREL_VERSION "\n"); }

void set_variable(parse_state&, const char* value) {
    const char* const equals = std::strchr(value, '=');
    if (!equals || equals == value)
        refuse_value("--env", "NAME=VALUE", value);
    setenv(std::string(value, equals).c_str(), equals + 1, 1);
}

void unset_variable(parse_state&, const char* value) {
    if (!*value || std::strchr(value, '='))
        refuse_value("--unset-env", "NAME", value);
    unsetenv(value);
}

void set_log_level(parse_state&, const char* value) {
    const std::optional<unsigned> level = number_of(value);
    if (!level)
        refuse_value("--log-level", "a number", value);
    client_log_level = *level;
}

void set_code_cache(parse_state&, const char* value) {
    constexpr unsigned least = 256, most = code_cache_bytes >> 10;
    const std::optional<unsigned> kilobytes = number_of(value);
    if (!kilobytes || *kilobytes < least || *kilobytes > most)
        refuse_value("--code-cache", "a number from 256 to 65536", value);
    static_assert(least == 256 && most == 65536);
    code_cache_limit = std::size_t{*kilobytes} << 10;
}

std::string absolute(const std::string& path) {
    char directory[PATH_MAX];
    return path[0] == '/' || !getcwd(directory, sizeof directory) ? path
                                                                  : std::string(directory) + "/" + path;
}

// Programs that are executed append to the same file, wherever they are.
void set_report(parse_state& state, const char* value) {
    static std::string path;
    path = absolute(value);
    if (const int failure = set_report_file(path.c_str()))
        die_with_message(status_unsupported, ("--report " + path + ": ").c_str(), std::strerror(failure));
    state.inherited.insert(state.inherited.end(), {inherited_report_option, path});
}

// One that is executed with other rights may not write there: then its report goes to standard error.
void set_inherited_report(parse_state& state, const char* path) {
    if (set_report_file(path) == 0)
        state.inherited.insert(state.inherited.end(), {inherited_report_option, path});
}

void announce_sve(parse_state&, const char*) { sve_is_announced = true; }
void follow_children(parse_state& state, const char*) { state.follow = true; }
void leave_children(parse_state& state, const char*) { state.follow = false; }

void set_launcher(parse_state& state, const char* value) {
    state.launcher.clear();
    std::string_view rest = value;
    while (true) {
        rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
        if (rest.empty())
            break;
        const std::size_t length = std::min(rest.find_first_of(" \t"), rest.size());
        state.launcher.emplace_back(rest.substr(0, length));
        rest.remove_prefix(length);
    }
    if (state.launcher.empty())
        refuse_value("--launcher", "a command", "an empty text");
}

void set_argument_zero(parse_state& state, const char* value) { state.options.argument_zero = value; }

void set_executed_path(parse_state& state, const char* value) { state.options.executed_as = value; }

void set_closed_descriptor(parse_state& state, const char* value) {
    const std::optional<unsigned> number = number_of(value);
    if (!number || *number > INT_MAX)
        refuse_value(close_descriptor_option, "a number", value);
    state.options.closed_descriptor = static_cast<int>(*number);
}

constexpr option options[] = {
    {"--env", "-E", "NAME=VALUE", "set an environment variable of the program", false, set_variable},
    {"--unset-env", "", "NAME", "remove an environment variable of the program", false, unset_variable},
    {"--follow-children", "", nullptr,
     "run the programs that the program executes in the same\nway (the default)", true, follow_children},
    {"--no-follow-children", "", nullptr, "leave them to the kernel", true, leave_children},
    {"--launcher", "", "COMMAND",
     "words to be put in front when ostrel executes itself, where\n"
     "it runs under another program: 'qemu-aarch64 -cpu max'",
     true, set_launcher},
    {"--hwcap-sve", "", nullptr,
     "tell the program that the processor has SVE (AT_HWCAP,\n"
     "prctl, ID registers); libraries may then choose code with\n"
     "SVE instructions, which are not carried out there",
     true, announce_sve},
    {"--code-cache", "", "KIB",
     "memory for the translated code of each thread, after which\n"
     "it is translated anew; 65536 for the first one and 16384 for\nthe others if not given",
     true, set_code_cache},
    {"--report", "", "FILE", "append the counts to this file instead of writing them to standard error",
     false, set_report},
    {inherited_report_option, "", "FILE", nullptr, false, set_inherited_report},
    {"--log-level", "", "N", "print the log messages up to this level (0: none)", true, set_log_level},
    {argument_zero_option, "", "TEXT", "PROGRAM is a path that is not looked up, and TEXT its argv[0]", false,
     set_argument_zero},
    {executed_path_option, "", "PATH", nullptr, false, set_executed_path},
    {close_descriptor_option, "", "N", nullptr, false, set_closed_descriptor},
    {"--help", "", nullptr, "show this text", false, print_help},
    {"--version", "", nullptr, "show the version", false, print_version},
    {"--", "", nullptr, "end the options", false, nullptr},
};

[[noreturn]] void print_help(parse_state&, const char*) {
    std::string text = "Usage: ostrel [OPTIONS] PROGRAM [ARG...]\n"
                       "Runs an AArch64 program that was compiled for SVE on a processor without SVE.\n"
                       "\n";
    constexpr std::size_t help_column = 26;
    for (const option& o : options) {
        if (!o.help)
            continue;
        std::string names = "  ";
        if (!o.short_name.empty())
            names.append(o.short_name).append(", ");
        names.append(o.name);
        if (o.value_name)
            names.append(" ").append(o.value_name);
        if (names.size() + 2 > help_column)
            names.append("\n").append(help_column, ' ');
        else
            names.resize(help_column, ' ');
        text += names;
        for (const char* c = o.help; *c; ++c) {
            text += *c;
            if (*c == '\n')
                text.append(help_column, ' ');
        }
        text += '\n';
    }
    text +=
        "\n"
        "PROGRAM without a slash is looked up in PATH, and may be a script. Counts of the instructions\n"
        "executed go to standard error at exit. Other options are the client's.\n"
        "\n"
        "Exit status: the program's own, or 125 if an option is wrong or a feature that the program needs\n"
        "is not supported, 126 if it cannot be executed, 127 if it is not found.\n";
    print_and_exit(text);
}

const option* find_option(std::string_view name) {
    for (const option& o : options)
        if (o.apply && (name == o.name || (!o.short_name.empty() && name == o.short_name)))
            return &o;
    return nullptr;
}

// The value of a long option may stand in the same word, behind an equals sign.
struct option_word {
    const option* known; // null if it is not the launcher's
    const char* value;   // null if it is not in the word
};
option_word read_word(const char* word) {
    if (const option* const known = find_option(word))
        return {known, nullptr};
    const char* const equals = std::strchr(word, '=');
    if (!equals || std::strncmp(word, "--", 2) != 0)
        return {nullptr, nullptr};
    const option* const known = find_option(std::string_view(word, static_cast<std::size_t>(equals - word)));
    if (known && !known->value_name)
        die_with_message(status_unsupported, "an option that has no value is given one: ", word);
    return {known, equals + 1};
}

// The command by which ostrel executes itself, as far as it is known beforehand.
std::vector<std::string> follow_command(const parse_state& state) {
    char own_path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", own_path, sizeof own_path);
    if (length <= 0)
        die_with_message(status_unsupported, "/proc/self/exe cannot be read; try --no-follow-children");
    std::vector<std::string> command = state.launcher;
    if (!command.empty()) {
        const std::string path = find_program(command[0].c_str());
        if (path.empty())
            die_with_message(status_unsupported, "--launcher: command not found: ", command[0].c_str());
        command[0] = absolute(path);
    }
    command.emplace_back(own_path, static_cast<std::size_t>(length));
    command.insert(command.end(), state.inherited.begin(), state.inherited.end());
    command.insert(command.end(), state.options.client_arguments.begin() + 1,
                   state.options.client_arguments.end());
    return command;
}

} // namespace

launcher_options parse_options(char** arguments) {
    parse_state state;
    for (++arguments; *arguments && **arguments == '-'; ++arguments) {
        if (std::strcmp(*arguments, "--") == 0) {
            ++arguments;
            break;
        }
        auto [known, value] = read_word(*arguments);
        if (!known) {
            state.options.client_arguments.push_back(*arguments);
            continue;
        }
        if (known->value_name && !value) {
            if (!arguments[1])
                die_with_message(status_unsupported, "an option lacks its value: ", *arguments);
            value = *++arguments;
        }
        known->apply(state, value);
        if (known->inherited) {
            state.inherited.emplace_back(known->name);
            if (known->value_name)
                state.inherited.emplace_back(value);
        }
    }
    state.options.program = arguments;
    if (state.follow)
        following = {follow_command(state), state.launcher.size()};
    return state.options;
}
