// Whatever the launcher is given, it answers with one clear line and the right exit status.
#include <elf.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

#include "command.h"

namespace {

using file_bytes = std::vector<char>;

const file_bytes& good_file() {
    static const file_bytes bytes = [] {
        std::ifstream file(program_path("endings"), std::ios::binary);
        return file_bytes{std::istreambuf_iterator<char>(file), {}};
    }();
    return bytes;
}

Elf64_Ehdr& header(file_bytes& file) { return *reinterpret_cast<Elf64_Ehdr*>(file.data()); }

// The program header of that number among those of the type.
Elf64_Phdr& segment(file_bytes& file, unsigned type, unsigned number = 0) {
    auto* const table = reinterpret_cast<Elf64_Phdr*>(file.data() + header(file).e_phoff);
    for (unsigned n = 0; n < header(file).e_phnum; ++n)
        if (table[n].p_type == type && number-- == 0)
            return table[n];
    ADD_FAILURE() << "no such program header";
    return table[0];
}

// Makes the file's note the path of an interpreter, which is put behind everything else.
void set_interpreter(file_bytes& file, const std::string& path) {
    Elf64_Phdr& note = segment(file, PT_NOTE);
    note.p_type = PT_INTERP;
    note.p_offset = file.size();
    note.p_filesz = path.size() + 1;
    file.insert(file.end(), path.c_str(), path.c_str() + path.size() + 1);
}

outcome run_file(const file_bytes& bytes, mode_t mode = 0755) {
    const std::string path = "bad_file." + std::to_string(getpid());
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    chmod(path.c_str(), mode);
    outcome result = run_on_target({OSTREL_PATH, "./" + path, "return"});
    unlink(path.c_str());
    const std::string prefix = "ostrel: ./" + path + ": ";
    if (result.errors.rfind(prefix, 0) == 0)
        result.errors.erase(0, prefix.size());
    return result;
}

struct bad_file {
    const char* name;
    std::function<void(file_bytes&)> damage;
    int status;
    std::string reason;
};

const bad_file bad_files[] = {
    {"Empty", [](file_bytes& f) { f.clear(); }, 126, "empty file, not an ELF file"},
    {"OneByte", [](file_bytes& f) { f.resize(1); }, 126, "not an ELF file"},
    {"NamelessScript",
     [](file_bytes& f) {
         f = {'#', '!', ' ', '\n'};
     },
     126, "not an ELF file"},
    {"LostScript", [](file_bytes& f) { f = {'#', '!', '/', 'n', 'o', '\n'}; }, 126,
     "interpreter /no: No such file or directory"},
    {"MagicOnly", [](file_bytes& f) { f.resize(4); }, 126, "truncated ELF header"},
    {"HalfHeader", [](file_bytes& f) { f.resize(40); }, 126, "truncated ELF header"},
    {"HeaderOnly", [](file_bytes& f) { f.resize(64); }, 126,
     "truncated file (program headers beyond its end)"},
    {"HalfProgramHeaders", [](file_bytes& f) { f.resize(150); }, 126,
     "truncated file (program headers beyond its end)"},
    {"HalfSegment", [](file_bytes& f) { f.resize(f.size() / 4); }, 126,
     "truncated file (segment beyond its end)"},
    {"Narrow", [](file_bytes& f) { header(f).e_ident[EI_CLASS] = ELFCLASS32; }, 126,
     "32-bit ELF file, AArch64 expected"},
    {"NoClass", [](file_bytes& f) { header(f).e_ident[EI_CLASS] = 9; }, 126, "corrupt ELF header (class)"},
    {"BigEndian", [](file_bytes& f) { header(f).e_ident[EI_DATA] = ELFDATA2MSB; }, 126,
     "big-endian ELF file, little-endian AArch64 expected"},
    {"NoByteOrder", [](file_bytes& f) { header(f).e_ident[EI_DATA] = 0; }, 126,
     "corrupt ELF header (byte order)"},
    {"Version", [](file_bytes& f) { header(f).e_version = 7; }, 126, "corrupt ELF header (version)"},
    {"X86", [](file_bytes& f) { header(f).e_machine = EM_X86_64; }, 126,
     "ELF file for x86-64, AArch64 expected"},
    {"UnknownMachine", [](file_bytes& f) { header(f).e_machine = 9999; }, 126,
     "ELF file for machine 9999, AArch64 expected"},
    {"Object", [](file_bytes& f) { header(f).e_type = ET_REL; }, 126, "ELF file is not an executable"},
    {"Core", [](file_bytes& f) { header(f).e_type = ET_CORE; }, 126, "ELF file is not an executable"},
    {"NoProgramHeaders", [](file_bytes& f) { header(f).e_phnum = 0; }, 126,
     "corrupt ELF header (program headers)"},
    {"ProgramHeaderSize", [](file_bytes& f) { header(f).e_phentsize = 32; }, 126,
     "corrupt ELF header (program headers)"},
    {"ManyProgramHeaders", [](file_bytes& f) { header(f).e_phnum = 0xFFFF; }, 126,
     "corrupt ELF header (program headers)"},
    {"ProgramHeadersFarOff", [](file_bytes& f) { header(f).e_phoff = ~0ull - 8; }, 126,
     "truncated file (program headers beyond its end)"},
    {"EntryOutside", [](file_bytes& f) { header(f).e_entry = 16; }, 126, "corrupt ELF header (entry point)"},
    {"EntryMisaligned", [](file_bytes& f) { header(f).e_entry += 2; }, 126,
     "corrupt ELF header (entry point)"},
    {"EntryInData", [](file_bytes& f) { header(f).e_entry = segment(f, PT_LOAD, 1).p_vaddr; }, 126,
     "corrupt ELF header (entry point)"},
    {"NoSegments",
     [](file_bytes& f) {
         segment(f, PT_LOAD).p_type = PT_NULL;
         segment(f, PT_LOAD).p_type = PT_NULL;
     },
     126, "no loadable segment"},
    {"FileSizeAboveMemorySize", [](file_bytes& f) { segment(f, PT_LOAD, 1).p_memsz = 1; }, 126,
     "corrupt program header (file size above memory size)"},
    {"OffsetBeyondFile", [](file_bytes& f) { segment(f, PT_LOAD, 1).p_offset += 1 << 30; }, 126,
     "truncated file (segment beyond its end)"},
    {"OffsetWraps", [](file_bytes& f) { segment(f, PT_LOAD, 1).p_offset = ~0ull << 12; }, 126,
     "truncated file (segment beyond its end)"},
    {"AddressWraps", [](file_bytes& f) { segment(f, PT_LOAD, 1).p_vaddr = ~0ull << 12; }, 126,
     "corrupt program header (address out of range)"},
    {"MemorySizeWraps", [](file_bytes& f) { segment(f, PT_LOAD, 1).p_memsz = ~0ull; }, 126,
     "corrupt program header (address out of range)"},
    {"OffsetMisaligned", [](file_bytes& f) { segment(f, PT_LOAD).p_vaddr += 16; }, 126,
     "segment is not aligned"},
    {"AlignmentNoPowerOfTwo", [](file_bytes& f) { segment(f, PT_LOAD).p_align = 12345; }, 126,
     "corrupt program header (alignment)"},
    {"Overlapping", [](file_bytes& f) { segment(f, PT_LOAD, 0).p_memsz = 1 << 20; }, 126,
     "corrupt program headers (overlapping segments)"},
    {"OutOfOrder", [](file_bytes& f) { std::swap(segment(f, PT_LOAD, 0), segment(f, PT_LOAD, 1)); }, 126,
     "corrupt program headers (overlapping segments)"},
    {"Huge", [](file_bytes& f) { segment(f, PT_LOAD, 1).p_memsz = std::uint64_t{1} << 50; }, 126,
     "its address range cannot be mapped: "},
    {"AddressZero",
     [](file_bytes& f) {
         for (unsigned n = 0; n < 2; ++n)
             segment(f, PT_LOAD, n).p_vaddr -= 0x400000;
         header(f).e_entry -= 0x400000;
     },
     126, "its address range cannot be mapped: "},
    {"InterpreterMissing", [](file_bytes& f) { set_interpreter(f, "/no/such/interpreter"); }, 127,
     "interpreter /no/such/interpreter: No such file or directory"},
    {"InterpreterIsNoProgram", [](file_bytes& f) { set_interpreter(f, "/etc/passwd"); }, 126,
     "interpreter /etc/passwd: Permission denied"},
    {"InterpreterIsDirectory", [](file_bytes& f) { set_interpreter(f, "/"); }, 126,
     "interpreter /: is a directory"},
    {"InterpreterEmpty", [](file_bytes& f) { set_interpreter(f, ""); }, 126,
     "corrupt program header (interpreter's path)"},
    {"InterpreterWithoutEnd",
     [](file_bytes& f) {
         set_interpreter(f, "/lib/ld");
         --segment(f, PT_INTERP).p_filesz;
     },
     126, "corrupt program header (interpreter's path)"},
    {"InterpreterTooLong", [](file_bytes& f) { set_interpreter(f, std::string(5000, 'x')); }, 126,
     "corrupt program header (interpreter's path)"},
    {"InterpreterBeyondFile",
     [](file_bytes& f) {
         set_interpreter(f, "/lib/ld");
         segment(f, PT_INTERP).p_filesz = ~0ull;
     },
     126, "truncated file (interpreter's path beyond its end)"},
};

class BadFile : public testing::TestWithParam<bad_file> {};

TEST_P(BadFile, OneLineAndStatus) {
    file_bytes file = good_file();
    GetParam().damage(file);
    const outcome result = run_file(file);
    EXPECT_EQ(result.status, GetParam().status);
    EXPECT_EQ(result.errors.rfind(GetParam().reason, 0), 0u) << result.errors;
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    EXPECT_EQ(result.output, "");
}

INSTANTIATE_TEST_SUITE_P(Table, BadFile, testing::ValuesIn(bad_files),
                         [](const auto& info) { return std::string(info.param.name); });

// No byte of the headers, whatever it holds, may bring the launcher itself down.
TEST(BadFile, EveryDamagedHeaderByteIsAnsweredOrRun) {
    const std::size_t headers = sizeof(Elf64_Ehdr) + 3 * sizeof(Elf64_Phdr);
    for (std::size_t place = 4; place < headers; place += 5) {
        file_bytes file = good_file();
        file[place] = static_cast<char>(file[place] ^ 0xFF);
        const outcome result = run_file(file);
        const bool answered = result.status == 125 || result.status == 126;
        EXPECT_TRUE(answered || without_client_lines(result.errors).empty() || result.status > 128)
            << "byte " << place << ": " << result.status << " " << result.errors;
        if (answered) {
            EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
        }
    }
}

TEST(BadFile, UnchangedCopyRuns) { EXPECT_EQ(run_file(good_file()).status, 77); }

TEST(BadFile, NotExecutable) {
    const outcome result = run_file(good_file(), 0644);
    EXPECT_EQ(result.status, 126);
    EXPECT_EQ(result.errors, "Permission denied\n");
}

struct bad_command {
    std::vector<std::string> words;
    int status;
    std::string errors;
};

TEST(CommandLine, Errors) {
    const bad_command commands[] = {
        {{}, 125, "ostrel: no program given; try 'ostrel --help'\n"},
        {{"--"}, 125, "ostrel: no program given; try 'ostrel --help'\n"},
        {{"./no-such-file"}, 127, "ostrel: ./no-such-file: No such file or directory\n"},
        {{"/dev/null/x"}, 127, "ostrel: /dev/null/x: Not a directory\n"},
        {{"no-such-command"}, 127, "ostrel: no-such-command: command not found\n"},
        {{""}, 127, "ostrel: : command not found\n"},
        {{"/"}, 126, "ostrel: /: is a directory\n"},
        {{"/dev/null"}, 126, "ostrel: /dev/null: not a regular file\n"},
        {{"--", "--version"}, 127, "ostrel: --version: command not found\n"},
        {{"-x", "./no-such-file"}, 255, "Usage error: Unknown option: -x\n"},
        {{"--unknown"}, 255, "Usage error: Unknown option: --unknown\n"},
    };
    for (const bad_command& command : commands) {
        std::vector<std::string> words{OSTREL_PATH};
        words.insert(words.end(), command.words.begin(), command.words.end());
        const outcome result = run_on_target(words);
        EXPECT_EQ(result.status, command.status) << command.errors;
        EXPECT_EQ(result.errors, command.errors);
        EXPECT_EQ(result.output, "");
    }
}

TEST(CommandLine, HelpAndVersion) {
    const outcome help = run_on_target({OSTREL_PATH, "--help", "ignored"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.output.rfind("Usage: ostrel [OPTIONS] PROGRAM [ARG...]\n", 0), 0u);
    const outcome version = run_on_target({OSTREL_PATH, "--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output.rfind("ostrel ", 0), 0u);
}

TEST(CommandLine, ProgramInPath) {
    const std::string path = std::getenv("PATH") ? std::getenv("PATH") : "";
    setenv("PATH", ("/nowhere:" + std::string(ENGINE_PROGRAMS) + ":" + path).c_str(), 1);
    const outcome found = run_on_target({OSTREL_PATH, "--", "endings", "return"});
    EXPECT_EQ(found.status, 77) << found.errors;
    EXPECT_EQ(found.errors.rfind("endings: 0 SVE instructions executed\n", 0), 0u) << found.errors;
    setenv("PATH", path.c_str(), 1);
}

} // namespace
