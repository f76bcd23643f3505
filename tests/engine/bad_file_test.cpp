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

using damage = std::function<void(file_bytes&)>;

damage replace_by(const std::string& content) {
    return [=](file_bytes& file) { file.assign(content.begin(), content.end()); };
}
damage cut_to(std::size_t bytes) {
    return [=](file_bytes& file) { file.resize(bytes); };
}
damage identify(unsigned place, unsigned char value) {
    return [=](file_bytes& file) { header(file).e_ident[place] = value; };
}
template <class Field> damage set(Field Elf64_Ehdr::*field, std::uint64_t value) {
    return [=](file_bytes& file) { header(file).*field = static_cast<Field>(value); };
}
// Of the first or second segment that is loaded.
template <class Field> damage set(unsigned number, Field Elf64_Phdr::*field, std::uint64_t value) {
    return [=](file_bytes& file) { segment(file, PT_LOAD, number).*field = static_cast<Field>(value); };
}
damage interpret(const std::string& path) {
    return [=](file_bytes& file) { set_interpreter(file, path); };
}

struct bad_file {
    const char* name;
    damage spoil;
    std::string reason;
    int status = 126;
};

constexpr char beyond[] = "truncated file (program headers beyond its end)";
constexpr char segment_beyond[] = "truncated file (segment beyond its end)";
constexpr char bad_headers[] = "corrupt ELF header (program headers)";
constexpr char bad_entry[] = "corrupt ELF header (entry point)";
constexpr char bad_address[] = "corrupt program header (address out of range)";
constexpr char overlapping[] = "corrupt program headers (overlapping segments)";
constexpr char unmappable[] = "its address range cannot be mapped: ";
constexpr char bad_path[] = "corrupt program header (interpreter's path)";

const bad_file bad_files[] = {
    {"Empty", cut_to(0), "empty file, not an ELF file"},
    {"OneByte", cut_to(1), "not an ELF file"},
    {"NamelessScript", replace_by("#! \n"), "not an ELF file"},
    {"LostScript", replace_by("#!/no\n"), "interpreter /no: No such file or directory"},
    {"HalfHeader", cut_to(40), "truncated ELF header"},
    {"HeaderOnly", cut_to(64), beyond},
    {"HalfProgramHeaders", cut_to(150), beyond},
    {"HalfSegment", [](file_bytes& f) { f.resize(f.size() / 4); }, segment_beyond},
    {"Narrow", identify(EI_CLASS, ELFCLASS32), "32-bit ELF file, AArch64 expected"},
    {"NoClass", identify(EI_CLASS, 9), "corrupt ELF header (class)"},
    {"BigEndian", identify(EI_DATA, ELFDATA2MSB), "big-endian ELF file, little-endian AArch64 expected"},
    {"NoByteOrder", identify(EI_DATA, 0), "corrupt ELF header (byte order)"},
    {"Version", set(&Elf64_Ehdr::e_version, 7), "corrupt ELF header (version)"},
    {"X86", set(&Elf64_Ehdr::e_machine, EM_X86_64), "ELF file for x86-64, AArch64 expected"},
    {"UnknownMachine", set(&Elf64_Ehdr::e_machine, 9999), "ELF file for machine 9999, AArch64 expected"},
    {"Object", set(&Elf64_Ehdr::e_type, ET_REL), "ELF file is not an executable"},
    {"NoProgramHeaders", set(&Elf64_Ehdr::e_phnum, 0), bad_headers},
    {"ProgramHeaderSize", set(&Elf64_Ehdr::e_phentsize, 32), bad_headers},
    {"ManyProgramHeaders", set(&Elf64_Ehdr::e_phnum, 0xFFFF), bad_headers},
    {"ProgramHeadersFarOff", set(&Elf64_Ehdr::e_phoff, ~0ull - 8), beyond},
    {"EntryOutside", set(&Elf64_Ehdr::e_entry, 16), bad_entry},
    {"EntryMisaligned", [](file_bytes& f) { header(f).e_entry += 2; }, bad_entry},
    {"EntryInData", [](file_bytes& f) { header(f).e_entry = segment(f, PT_LOAD, 1).p_vaddr; }, bad_entry},
    {"NoSegments",
     [](file_bytes& f) { segment(f, PT_LOAD).p_type = segment(f, PT_LOAD, 1).p_type = PT_NULL; },
     "no loadable segment"},
    {"FileSizeAboveMemorySize", set(1, &Elf64_Phdr::p_memsz, 1),
     "corrupt program header (file size above memory size)"},
    {"OffsetBeyondFile", set(1, &Elf64_Phdr::p_offset, 1 << 30), segment_beyond},
    {"OffsetWraps", set(1, &Elf64_Phdr::p_offset, ~0ull << 12), segment_beyond},
    {"AddressWraps", set(1, &Elf64_Phdr::p_vaddr, ~0ull << 12), bad_address},
    {"MemorySizeWraps", set(1, &Elf64_Phdr::p_memsz, ~0ull), bad_address},
    {"OffsetMisaligned", [](file_bytes& f) { segment(f, PT_LOAD).p_vaddr += 16; }, "segment is not aligned"},
    {"AlignmentNoPowerOfTwo", set(0, &Elf64_Phdr::p_align, 12345), "corrupt program header (alignment)"},
    {"Overlapping", set(0, &Elf64_Phdr::p_memsz, 1 << 20), overlapping},
    {"OutOfOrder", [](file_bytes& f) { std::swap(segment(f, PT_LOAD, 0), segment(f, PT_LOAD, 1)); },
     overlapping},
    {"Huge", set(1, &Elf64_Phdr::p_memsz, std::uint64_t{1} << 50), unmappable},
    {"AddressZero",
     [](file_bytes& f) {
         for (std::uint64_t* address :
              {&header(f).e_entry, &segment(f, PT_LOAD).p_vaddr, &segment(f, PT_LOAD, 1).p_vaddr})
             *address -= 0x400000;
     },
     unmappable},
    {"InterpreterMissing", interpret("/no/such"), "interpreter /no/such: No such file or directory", 127},
    {"InterpreterIsNoProgram", interpret("/etc/passwd"), "interpreter /etc/passwd: Permission denied"},
    {"InterpreterIsDirectory", interpret("/"), "interpreter /: is a directory"},
    {"InterpreterEmpty", interpret(""), bad_path},
    {"InterpreterTooLong", interpret(std::string(5000, 'x')), bad_path},
    {"InterpreterWithoutEnd",
     [](file_bytes& f) {
         set_interpreter(f, "/lib/ld");
         --segment(f, PT_INTERP).p_filesz;
     },
     bad_path},
    {"InterpreterBeyondFile",
     [](file_bytes& f) {
         set_interpreter(f, "/lib/ld");
         segment(f, PT_INTERP).p_filesz = ~0ull;
     },
     "truncated file (interpreter's path beyond its end)"},
};

class BadFile : public testing::TestWithParam<bad_file> {};

TEST_P(BadFile, OneLineAndStatus) {
    file_bytes file = good_file();
    GetParam().spoil(file);
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

TEST(BadFile, GoodFile) {
    EXPECT_EQ(run_file(good_file()).status, 77);
    const outcome forbidden = run_file(good_file(), 0644);
    EXPECT_EQ(forbidden.status, 126);
    EXPECT_EQ(forbidden.errors, "Permission denied\n");
}

TEST(CommandLine, Errors) {
    const struct {
        std::vector<std::string> words;
        int status;
        std::string errors;
    } commands[] = {
        {{}, 125, "ostrel: no program given; try 'ostrel --help'"},
        {{"--"}, 125, "ostrel: no program given; try 'ostrel --help'"},
        {{"./no-such-file"}, 127, "ostrel: ./no-such-file: No such file or directory"},
        {{"/dev/null/x"}, 127, "ostrel: /dev/null/x: Not a directory"},
        {{"no-such-command"}, 127, "ostrel: no-such-command: command not found"},
        {{""}, 127, "ostrel: : command not found"},
        {{"/"}, 126, "ostrel: /: is a directory"},
        {{"/dev/null"}, 126, "ostrel: /dev/null: not a regular file"},
        {{"--", "--version"}, 127, "ostrel: --version: command not found"},
        {{"-x", "./no-such-file"}, 255, "Usage error: Unknown option: -x"},
        {{"-E"}, 125, "ostrel: an option lacks its value: -E"},
        {{"-E", "NAME", "x"}, 125, "ostrel: --env: NAME=VALUE expected, not NAME"},
        {{"--env==1", "x"}, 125, "ostrel: --env: NAME=VALUE expected, not =1"},
        {{"--unset-env", "A=B", "x"}, 125, "ostrel: --unset-env: NAME expected, not A=B"},
        {{"--log-level", "much", "x"}, 125, "ostrel: --log-level: a number expected, not much"},
        {{"--code-cache", "255", "x"},
         125,
         "ostrel: --code-cache: a number from 256 to 65536 expected, not 255"},
        {{"--log-level=-1", "x"}, 125, "ostrel: --log-level: a number expected, not -1"},
        {{"--report", "/", "x"}, 125, "ostrel: --report /: Is a directory"},
        {{"--launcher", " ", "x"}, 125, "ostrel: --launcher: a command expected, not an empty text"},
        {{"--launcher", "no-such -x", "x"}, 125, "ostrel: --launcher: command not found: no-such"},
        {{"--hwcap-sve=1", "x"}, 125, "ostrel: an option that has no value is given one: --hwcap-sve=1"},
    };
    for (const auto& command : commands) {
        std::vector<std::string> words{OSTREL_PATH};
        words.insert(words.end(), command.words.begin(), command.words.end());
        const outcome result = run_on_target(words);
        EXPECT_EQ(result.status, command.status) << command.errors;
        EXPECT_EQ(result.errors, command.errors + "\n");
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

TEST(CommandLine, LogLevel) {
    for (const std::string level : {"0", "1"}) {
        const outcome result =
            run_on_target({OSTREL_PATH, "--log-level", level, program_path("endings"), "exit"});
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.errors.find("SVE client initializing\n") != std::string::npos, level == "1")
            << result.errors;
    }
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
