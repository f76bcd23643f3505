// partial_store FILE segv|bus: stores one vector of bytes, 1, 2, 3 and so on, of which the first 40 go to the
// end of the file and the rest to where they fault.
#include <arm_sve.h>
#include <fcntl.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc != 3)
        return 1;
    const size_t page = (size_t)sysconf(_SC_PAGESIZE);
    const int file = open(argv[1], O_RDWR | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || ftruncate(file, (off_t)page) != 0)
        return 2;
    // Beyond the end of the file an access is a bus error.
    uint8_t* const memory = mmap(NULL, 2 * page, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED)
        return 3;
    if (strcmp(argv[2], "segv") == 0 && mprotect(memory + page, page, PROT_NONE) != 0)
        return 4;
    svst1_u8(svptrue_b8(), memory + page - 40, svindex_u8(1, 1));
    return 5;
}
