// The parser of client options, for a client that declares none.
#pragma once

#include <cstring>
#include <string>

namespace dynamorio {
namespace droption {

enum droption_scope_t {
    DROPTION_SCOPE_CLIENT = 1,
    DROPTION_SCOPE_FRONTEND = 2,
    DROPTION_SCOPE_ALL = 3,
};

class droption_parser_t {
public:
    // Parses argv from 1. "--" ends the parse with *last_index just past it, an argument without a leading
    // dash with *last_index at it, and the end of the list with *last_index = argc; all three are success and
    // leave *error_msg untouched. Any other argument is an unknown option: the result is false, *last_index
    // is at the argument, and *error_msg names it. Either pointer may be null.
    static bool parse_argv(unsigned int, int argc, const char* argv[], std::string* error_msg,
                           int* last_index) {
        int index = 1;
        bool known = true;
        if (index < argc && std::strcmp(argv[index], "--") == 0) {
            ++index;
        } else if (index < argc && argv[index][0] == '-') {
            known = false;
            if (error_msg != nullptr)
                *error_msg = std::string("Unknown option: ") + argv[index];
        }
        if (last_index != nullptr)
            *last_index = index < argc ? index : argc;
        return known;
    }
};

} // namespace droption
} // namespace dynamorio
