#include "command.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::string quoted(const std::string& word) {
    std::string result = "'";
    for (const char c : word)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string content_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::string emulator() {
    const char* const variable = std::getenv("ENGINE_TEST_EMULATOR");
    return variable ? variable : ENGINE_TEST_EMULATOR_DEFAULT;
}

} // namespace

outcome run_on_target(const std::vector<std::string>& words) {
    const std::string stem = "engine_test." + std::to_string(getpid());
    std::string command = "ulimit -c 0; exec " + emulator();
    for (const std::string& word : words)
        command += " " + quoted(word);
    command += " </dev/null >" + stem + ".out 2>" + stem + ".err";
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(99);
    }
    int status = 0;
    waitpid(child, &status, 0);
    outcome result{WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
                   content_of(stem + ".out"), content_of(stem + ".err")};
    std::remove((stem + ".out").c_str());
    std::remove((stem + ".err").c_str());
    return result;
}

namespace {

outcome run_words(std::vector<std::string> words, const std::vector<std::string>& arguments) {
    words.insert(words.end(), arguments.begin(), arguments.end());
    return run_on_target(words);
}

} // namespace

outcome run_directly(const std::string& program, const std::vector<std::string>& arguments) {
    return run_words({program_path(program)}, arguments);
}

outcome run_translated(const std::string& program, const std::vector<std::string>& arguments) {
    return run_words({OSTREL_PATH, program_path(program)}, arguments);
}

outcome run_followed(const std::vector<std::string>& options, const std::string& path,
                     const std::vector<std::string>& arguments) {
    std::vector<std::string> words{OSTREL_PATH};
    if (const std::string launcher = emulator(); !launcher.empty())
        words.insert(words.end(), {"--launcher", launcher});
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(path);
    return run_words(words, arguments);
}

std::string program_path(const std::string& name) { return std::string(ENGINE_PROGRAMS) + "/" + name; }

unsigned occurrences(const std::string& text, const std::string& part) {
    unsigned count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at)
        ++count;
    return count;
}

std::string without_client_lines(const std::string& errors) {
    std::istringstream lines(errors);
    std::string result;
    for (std::string line; std::getline(lines, line);)
        if (line.find(" instructions executed") == std::string::npos &&
            line.find("SVESigHandler caught signal") == std::string::npos)
            result += line + "\n";
    return result;
}
