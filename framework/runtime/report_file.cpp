#include "framework/runtime/report_file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

const char* report_path = nullptr;

// Appending, so that the reports of several processes stand one behind the other.
int open_report(const char* path) { return open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666); }

} // namespace

int set_report_file(const char* path) {
    const int descriptor = open_report(path);
    if (descriptor < 0)
        return errno;
    close(descriptor);
    report_path = path;
    return 0;
}

void redirect_report() {
    if (!report_path)
        return;
    // Opened only now: before, it would be among the program's descriptors.
    const int descriptor = open_report(report_path);
    if (descriptor < 0)
        return;
    dup3(descriptor, STDERR_FILENO, 0);
}
