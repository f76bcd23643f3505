// The published interface of the option parser.
#pragma once

#include <string>

#define TESTALL(mask, var) (((mask) & (var)) == (mask))
#define TESTANY(mask, var) (((mask) & (var)) != 0)

namespace dynamorio {
namespace droption {

typedef enum {
    DROPTION_SCOPE_CLIENT = 0x0001,
    DROPTION_SCOPE_FRONTEND = 0x0002,
    DROPTION_SCOPE_ALL = DROPTION_SCOPE_CLIENT | DROPTION_SCOPE_FRONTEND,
} droption_scope_t;

class droption_parser_t {
public:
    static bool parse_argv(unsigned int scope, int argc, const char* argv[], std::string* error_msg,
                           int* last_index);
};

} // namespace droption
} // namespace dynamorio
