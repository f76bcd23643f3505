#include "framework/loader/script.h"

#include <algorithm>
#include <unistd.h>

#include "framework/runtime/process_end.h"

namespace {

constexpr unsigned most_scripts = 5; // the kernel's

constexpr std::string_view blanks = " \t";

std::string_view without_leading_blanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text;
}

std::optional<script_line> read_script_line(int descriptor) {
    char start[script_line_bytes];
    const ssize_t length = pread(descriptor, start, sizeof start, 0);
    return length > 0 ? parse_script_line({start, static_cast<std::size_t>(length)}) : std::nullopt;
}

} // namespace

std::optional<script_line> parse_script_line(std::string_view start) {
    start = start.substr(0, script_line_bytes);
    if (!start.starts_with("#!"))
        return std::nullopt;
    const std::size_t end = start.find_first_of(std::string_view("\n\0", 2));
    const bool cut_off = end == std::string_view::npos && start.size() == script_line_bytes;
    std::string_view line = start.substr(0, cut_off ? script_line_bytes - 1 : end);
    line = without_leading_blanks(line.substr(2));
    // An argument may be cut off, the interpreter's name may not.
    if (cut_off && line.find_first_of(blanks) == std::string_view::npos)
        return std::nullopt;
    line = line.substr(0, line.find_last_not_of(blanks) + 1);
    if (line.empty())
        return std::nullopt;
    const std::size_t name_end = std::min(line.find_first_of(blanks), line.size());
    return script_line{std::string(line.substr(0, name_end)),
                       std::string(without_leading_blanks(line.substr(name_end)))};
}

std::optional<executable> find_executable(const char* path, load_error& error) {
    executable result{path, {}};
    for (unsigned scripts = 0; scripts <= most_scripts; ++scripts) {
        const int descriptor = open_executable_file(result.path.c_str(), error);
        if (descriptor < 0) {
            if (scripts > 0)
                error = {status_cannot_execute, "interpreter " + result.path + ": " + error.reason};
            return std::nullopt;
        }
        const std::optional<script_line> line = read_script_line(descriptor);
        close(descriptor);
        if (!line)
            return result;
        // Each interpreter gets the path of its script in place of the script's own first argument.
        std::vector<std::string> arguments{line->interpreter};
        if (!line->argument.empty())
            arguments.push_back(line->argument);
        arguments.push_back(result.path);
        if (!result.arguments.empty())
            arguments.insert(arguments.end(), result.arguments.begin() + 1, result.arguments.end());
        result = {line->interpreter, std::move(arguments)};
    }
    error = {status_cannot_execute, "too many scripts that are each other's interpreters"};
    return std::nullopt;
}
