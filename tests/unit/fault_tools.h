// Tools for tests of what happens at a fault: pairs of pages of which each can be read or not, and children
// that may die.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// Two pages with unreadable ones around them, if need be below 4 GB. The boundary between them is no boundary
// of larger pages.
class page_pair {
public:
    explicit page_pair(bool is_low = false)
        : page_(static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE))),
          reserved_(mmap(is_low ? reinterpret_cast<void*>(0x50000000) : nullptr, 5 * page_, PROT_NONE,
                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)),
          begin_(reinterpret_cast<std::uint64_t>(reserved_) + page_) {
        if (boundary() / page_ % 2 == 0)
            begin_ += page_;
        set_readable(true, true);
        std::mt19937 generator(1);
        auto* const bytes = reinterpret_cast<std::uint8_t*>(begin_);
        for (std::uint64_t i = 0; i < 2 * page_; ++i)
            bytes[i] = static_cast<std::uint8_t>(generator());
        contents_.assign(bytes, bytes + 2 * page_);
    }
    ~page_pair() { munmap(reserved_, 5 * page_); }
    page_pair(const page_pair&) = delete;

    void set_readable(bool first, bool second) {
        readable_[0] = first;
        readable_[1] = second;
        for (const std::uint64_t i : {0, 1})
            mprotect(reinterpret_cast<void*>(begin_ + i * page_), page_,
                     readable_[i] ? PROT_READ | PROT_WRITE : PROT_NONE);
    }

    std::uint64_t begin() const { return begin_; }
    std::uint64_t boundary() const { return begin_ + page_; }
    std::uint64_t end() const { return begin_ + 2 * page_; }
    std::uint64_t page() const { return page_; }

    // Whether all of so many bytes can be read.
    bool readable(std::uint64_t address, std::uint64_t bytes = 1) const {
        for (std::uint64_t a = address; a != address + bytes; ++a)
            if (a - begin_ >= 2 * page_ || !readable_[(a - begin_) / page_])
                return false;
        return true;
    }

    // The number that stands in so many bytes, whether they can be read or not, extended to 64 bits.
    std::uint64_t number_at(std::uint64_t address, int bytes, bool sign_extends) const {
        std::uint64_t number = 0;
        for (int k = bytes - 1; k >= 0; --k)
            number = number << 8 | contents_[address - begin_ + static_cast<std::uint64_t>(k)];
        if (sign_extends && bytes < 8 && (number >> (8 * bytes - 1) & 1))
            number |= ~std::uint64_t{0} << (8 * bytes);
        return number;
    }

private:
    std::uint64_t page_;
    void* reserved_;
    std::uint64_t begin_;
    bool readable_[2];
    std::vector<std::uint8_t> contents_;
};

struct child_outcome {
    int exit_status; // or -1
    int signal;      // that ended the child, or 0
    std::string errors;
};

// Runs the action in a child process, which ends with status 0 after it.
template <class Action> child_outcome run_in_child(Action action) {
    std::FILE* const errors = std::tmpfile();
    const pid_t child = fork();
    if (child == 0) {
        const rlimit no_core = {0, 0};
        setrlimit(RLIMIT_CORE, &no_core);
        dup2(fileno(errors), STDERR_FILENO);
        action();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    child_outcome result = {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                            WIFSIGNALED(status) ? WTERMSIG(status) : 0, ""};
    std::rewind(errors);
    for (int c; (c = std::fgetc(errors)) != EOF;)
        result.errors += static_cast<char>(c);
    std::fclose(errors);
    return result;
}

inline const std::string message_of_segv =
    "kelvo's SVESigHandler caught signal SIGSEGV from the process being "
    "emulated, passing it to the default signal handler.\n";
inline const std::string message_of_bus = "kelvo's SVESigHandler caught signal SIGBUS from the process being "
                                          "emulated, passing it to the default signal handler.\n";

// How often one text stands in another.
inline int occurrences(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}
