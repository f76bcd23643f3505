#include "tests/conformance/native_execution.h"

#include "sve/client/fault_trapping.h"

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <ucontext.h>
#include <unistd.h>

extern "C" {
void enter_slot(conformance::processor_registers* registers, const void* slot);
void leave_slot();
extern const std::uint32_t leave_slot_template[];
extern const std::uint32_t leave_slot_template_end[];
}

namespace conformance {

static_assert(offsetof(processor_registers, sp) == 248);
static_assert(offsetof(processor_registers, nzcv) == 256);
static_assert(offsetof(processor_registers, fpsr) == 264);
static_assert(offsetof(processor_registers, fpcr) == 272);
static_assert(offsetof(processor_registers, host) == 288);
static_assert(offsetof(processor_registers, z) == 512);
static_assert(offsetof(processor_registers, p) == 512 + 4096);
static_assert(offsetof(processor_registers, ffr) == 512 + 4096 + 256);

sigjmp_buf fault_return;
volatile bool expect_fault;
volatile std::uint64_t unexpected_fault_address;

namespace {

// One slot: load X30, the word, branch to the common end.
constexpr std::size_t slot_words = 4;
constexpr std::size_t code_bytes = 0x40000;

// The registers stand behind the code, within reach of a load relative to it.
struct native_code {
    std::uint32_t* words;
    processor_registers* registers;
    std::size_t next_slot;
    std::size_t first_slot;
};
native_code code;

volatile sig_atomic_t executing;
volatile sig_atomic_t caught_signal;
volatile std::uint64_t caught_address;

std::uint32_t branch(const std::uint32_t* from, const std::uint32_t* to) {
    return 0x14000000u | (static_cast<std::uint32_t>(to - from) & 0x03FFFFFFu);
}
std::uint32_t load_x30(const std::uint32_t* from, const void* literal) {
    const auto distance = static_cast<const std::uint32_t*>(literal) - from;
    return 0x5800001Eu | (static_cast<std::uint32_t>(distance) & 0x7FFFFu) << 5;
}

// These handlers take the place of the emulator's. In a slot the word is stepped over, so that the registers
// are stored as they then are.
void on_signal(int signal, siginfo_t* info, void* context) {
    auto* const machine = &static_cast<ucontext_t*>(context)->uc_mcontext;
    if (executing) {
        caught_signal = signal;
        caught_address = reinterpret_cast<std::uint64_t>(info->si_addr);
        machine->pc += 4;
        return;
    }
    if (SVEFaultRegion != 0)
        SVESigHandler(signal, info, context); // comes back to where the emulator's guarded access began
    if (expect_fault) {
        expect_fault = false;
        caught_signal = signal;
        unexpected_fault_address = reinterpret_cast<std::uint64_t>(info->si_addr);
        siglongjmp(fault_return, signal);
    }
    std::signal(signal, SIG_DFL);
}

void install_handlers() {
    constexpr std::size_t stack_bytes = 256 * 1024;
    stack_t stack = {};
    stack.ss_sp = std::malloc(stack_bytes);
    stack.ss_size = stack_bytes;
    sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = on_signal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (const int signal : {SIGILL, SIGSEGV, SIGBUS, SIGFPE, SIGTRAP, SIGABRT, SIGALRM})
        sigaction(signal, &action, nullptr);
}

bool make_code_region() {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t registers_bytes = (sizeof(processor_registers) + page - 1) / page * page;
    void* const region = mmap(nullptr, code_bytes + registers_bytes, PROT_READ | PROT_WRITE | PROT_EXEC,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED)
        return false;
    code.words = static_cast<std::uint32_t*>(region);
    code.registers = reinterpret_cast<processor_registers*>(static_cast<char*>(region) + code_bytes);

    const std::size_t template_words =
        static_cast<std::size_t>(leave_slot_template_end - leave_slot_template);
    std::memcpy(code.words, leave_slot_template, template_words * sizeof(std::uint32_t));
    constexpr std::size_t literal_words = 4;
    const std::uint64_t literals[2] = {reinterpret_cast<std::uint64_t>(code.registers),
                                       reinterpret_cast<std::uint64_t>(leave_slot)};
    std::memcpy(code.words + template_words - literal_words, literals, sizeof literals);
    __builtin___clear_cache(reinterpret_cast<char*>(code.words),
                            reinterpret_cast<char*>(code.words + template_words));
    // Slots begin on another page than the code that never changes.
    code.first_slot = page / sizeof(std::uint32_t);
    code.next_slot = code.first_slot;
    return true;
}

} // namespace

std::string prepare_processor() {
    if (!(getauxval(AT_HWCAP) & HWCAP_SVE))
        return "this processor has no SVE";
    const int result = prctl(PR_SVE_SET_VL, vector_bytes);
    const int length = result < 0 ? result : result & PR_SVE_VL_LEN_MASK;
    if (length != vector_bytes)
        return "this processor has no vectors of 1024 bits";
    if (!make_code_region())
        return "there is no memory that is writable and executable";
    install_handlers();
    return {};
}

void spread_predicate(const std::uint64_t (&bits)[2], std::uint8_t* row) {
    for (int i = 0; i < vector_bytes / 8; ++i) {
        const std::uint64_t eight = bits[i / 8] >> (i % 8 * 8) & 0xFF;
        const std::uint64_t each = eight * 0x0101010101010101 & 0x8040201008040201;
        const std::uint64_t bytes = (each + 0x7F7F7F7F7F7F7F7F) >> 7 & 0x0101010101010101;
        std::memcpy(row + i * 8, &bytes, 8);
    }
}

void gather_predicate(const std::uint8_t* row, std::uint64_t (&bits)[2]) {
    bits[0] = bits[1] = 0;
    for (int i = 0; i < vector_bytes / 8; ++i) {
        std::uint64_t bytes;
        std::memcpy(&bytes, row + i * 8, 8);
        const std::uint64_t eight = (bytes & 0x0101010101010101) * 0x0102040810204080 >> 56;
        bits[i / 8] |= eight << (i % 8 * 8);
    }
}

void to_processor(const cpu_state& state, processor_registers& registers) {
    std::memcpy(registers.x, state.x, sizeof registers.x);
    registers.sp = state.x[31];
    registers.nzcv = state.nzcv;
    registers.fpsr = state.fpsr;
    registers.fpcr = state.fpcr;
    std::memcpy(registers.z, state.z, sizeof registers.z);
    for (int i = 0; i < 16; ++i)
        gather_predicate(state.p[i], registers.p[i]);
    gather_predicate(state.ffr, registers.ffr);
}

const void* place_word(std::uint32_t word) {
    if ((code.next_slot + slot_words) * sizeof(std::uint32_t) > code_bytes)
        code.next_slot = code.first_slot;
    std::uint32_t* const slot = code.words + code.next_slot;
    code.next_slot += slot_words;
    slot[0] = load_x30(slot, &code.registers->x[30]);
    slot[1] = word;
    slot[2] = branch(slot + 2, code.words);
    __builtin___clear_cache(reinterpret_cast<char*>(slot), reinterpret_cast<char*>(slot + slot_words));
    return slot;
}

std::uint32_t* placed_word(const void* slot) {
    return const_cast<std::uint32_t*>(static_cast<const std::uint32_t*>(slot)) + 1;
}

execution execute_placed(const void* slot, processor_registers& registers) {
    *code.registers = registers;
    caught_signal = 0;
    executing = 1;
    enter_slot(code.registers, slot);
    executing = 0;
    if (caught_signal == SIGILL)
        return {outcome::rejected, 0};
    registers = *code.registers;
    if (caught_signal != 0)
        return {outcome::faulted, caught_address};
    return {outcome::executed, 0};
}

} // namespace conformance
