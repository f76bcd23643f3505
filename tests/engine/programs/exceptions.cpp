// C++ exceptions: frames are found by way of the libraries' program headers, and unwound through functions
// that are run from somewhere else than where they stand.
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// For AddressSanitizer: its look for leaks stops the process from another one.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

namespace {

int destroyed = 0;
struct counted {
    ~counted() { ++destroyed; }
};

int descend(int depth) {
    counted local;
    if (depth == 0)
        throw std::runtime_error("bottom");
    return descend(depth - 1) + 1;
}

std::string rethrown(int depth) {
    try {
        try {
            descend(depth);
        } catch (const std::logic_error&) {
            return "wrong";
        } catch (const std::exception& error) {
            throw std::out_of_range(std::string("from ") + error.what());
        }
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    return "none";
}

} // namespace

int main() {
    std::cout << "constructed by the library\n";
    for (int depth = 1; depth < 300; depth *= 3)
        std::cout << rethrown(depth) << ' ' << destroyed << '\n';
    // Thrown by the library itself, and through its frames.
    try {
        std::vector<int>().at(3);
    } catch (const std::exception& error) {
        std::cout << "library's " << (std::string(error.what()).size() > 0) << '\n';
    }
    std::map<std::string, std::function<int(int)>> table{{"throws", [](int n) { return descend(n); }},
                                                         {"returns", [](int n) { return n + 1; }}};
    for (const auto& [name, function] : table) {
        try {
            std::cout << name << ' ' << function(3) << '\n';
        } catch (...) {
            std::cout << name << " caught\n";
        }
    }
    std::cout << std::flush;
    throw std::unique_ptr<int>(); // uncaught: the process aborts
}
