#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "framework/loader/program_image.h"

namespace {

bool is_executable_file(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

} // namespace

std::string find_program(const char* name) {
    if (std::strchr(name, '/'))
        return name;
    const char* const variable = std::getenv("PATH");
    std::string_view directories = variable ? variable : "/usr/local/bin:/bin:/usr/bin";
    while (*name) {
        const std::size_t colon = directories.find(':');
        std::string candidate(directories.substr(0, colon));
        if (!candidate.empty()) // an empty entry is the current directory
            candidate.push_back('/');
        candidate.append(name);
        if (is_executable_file(candidate))
            return candidate;
        if (colon == std::string_view::npos)
            break;
        directories.remove_prefix(colon + 1);
    }
    return {};
}
