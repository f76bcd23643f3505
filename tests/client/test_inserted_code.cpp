// The inserted code is run: what it carries between the processor's registers and the thread's state.
#include "sve/client/emulation_entry.h"
#include "tests/client/client_fixture.h"

#include <cstring>
#include <sys/mman.h>

// A processor's registers. `x[28]` is the application's, which the thread's context holds while code runs.
struct processor {
    std::uint64_t x[31];
    std::uint64_t sp;
    std::uint64_t nzcv;
    std::uint64_t fpcr;
    std::uint64_t fpsr;
    alignas(16) std::uint8_t q[32][16];
};

extern "C" {
// Loads the processor's registers, with the context in X28 and the code's address in X17, branches to the
// code, and stores them again when the code branches to leave_code.
void run_code(processor* registers, thread_context* context, const std::uint32_t* code);
void leave_code();

// Changes to a stack of the tests' own, calls X11, and comes back.
void call_client();

alignas(16) char client_stack[1 << 16];
}

namespace {

// Slots of the context that the inserted code doesn't use: scratch 0 and 1 hold the processor and the
// caller's stack pointer, scratch 2 the link register of a call, engine_sp the application's stack pointer
// during one.
static_assert(offsetof(thread_context, scratch) == 88 && offsetof(thread_context, engine_sp) == 160 &&
              offsetof(thread_context, app_x28) == 0 && offsetof(processor, sp) == 248 &&
              offsetof(processor, q) == 288);

asm(R"(
    .text
    .balign 4
run_code:
    stp x29, x30, [sp, #-160]!
    stp x19, x20, [sp, #16]
    stp x21, x22, [sp, #32]
    stp x23, x24, [sp, #48]
    stp x25, x26, [sp, #64]
    stp x27, x28, [sp, #80]
    stp d8, d9, [sp, #96]
    stp d10, d11, [sp, #112]
    stp d12, d13, [sp, #128]
    stp d14, d15, [sp, #144]
    mov x28, x1
    str x2, [x28, #104]
    mov x1, sp
    stp x0, x1, [x28, #88]
    ldr x1, [x0, #224]
    str x1, [x28]
    ldp x1, x2, [x0, #248]
    mov sp, x1
    msr nzcv, x2
    ldp x1, x2, [x0, #264]
    msr fpcr, x1
    msr fpsr, x2
    add x1, x0, #288
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    ldr q\n, [x1, #16 * \n]
    .endr
    .irp n, 2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,29,30
    ldr x\n, [x0, #8 * \n]
    .endr
    ldp x0, x1, [x0]
    ldr x17, [x28, #104]
    br x17

leave_code:
    str x0, [x28, #104]
    ldr x0, [x28, #88]
    .irp n, 1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,29,30
    str x\n, [x0, #8 * \n]
    .endr
    ldr x1, [x28, #104]
    str x1, [x0]
    ldr x1, [x28]
    str x1, [x0, #224]
    mov x1, sp
    mrs x2, nzcv
    stp x1, x2, [x0, #248]
    mrs x1, fpcr
    mrs x2, fpsr
    stp x1, x2, [x0, #264]
    msr fpcr, xzr
    add x1, x0, #288
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    str q\n, [x1, #16 * \n]
    .endr
    ldr x1, [x28, #96]
    mov sp, x1
    ldp x19, x20, [sp, #16]
    ldp x21, x22, [sp, #32]
    ldp x23, x24, [sp, #48]
    ldp x25, x26, [sp, #64]
    ldp x27, x28, [sp, #80]
    ldp d8, d9, [sp, #96]
    ldp d10, d11, [sp, #112]
    ldp d12, d13, [sp, #128]
    ldp d14, d15, [sp, #144]
    ldp x29, x30, [sp], #160
    ret

call_client:
    mov x9, sp
    str x9, [x28, #160]
    str x30, [x28, #104]
    adrp x9, client_stack + 0x10000
    add x9, x9, :lo12:client_stack + 0x10000
    mov sp, x9
    blr x11
    ldr x30, [x28, #104]
    ldr x9, [x28, #160]
    mov sp, x9
    // The callee may change every register but X28: all that it left alone by chance is changed here.
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,29
    movn x\n, #\n
    .endr
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    movi v\n\().16b, #0x77
    .endr
    msr nzcv, x0
    msr fpsr, xzr
    ret
    .globl run_code, leave_code, call_client
)");

constexpr std::uint32_t sve_add = 0x04220020; // add z0.b, z1.b, z2.b
constexpr std::uint32_t sve_sub = 0x04A50483; // sub z3.s, z4.s, z5.s

struct inserted_code : client_test {
    static inline std::uint32_t* code = nullptr;
    processor before = {};

    void SetUp() override {
        client_test::SetUp();
        if (code == nullptr)
            code = static_cast<std::uint32_t*>(mmap(nullptr, 1 << 16, PROT_READ | PROT_WRITE | PROT_EXEC,
                                                    MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        ASSERT_NE(code, MAP_FAILED);
        context.client_call_entry = reinterpret_cast<std::uint64_t>(call_client);
        for (std::uint64_t number = 0; number < 31; ++number)
            before.x[number] = 0x1111'0000'2222'0000 + number * 0x0100'0001'0000'0001;
        before.sp = 0x7FFF'1234'5670;
        before.nzcv = 0xA0000000;
        before.fpcr = 0x03C00000; // round to zero, flush to zero, default NaN
        before.fpsr = 0x08000015;
        for (int number = 0; number < 32; ++number)
            for (int byte = 0; byte < 16; ++byte)
                before.q[number][byte] = static_cast<std::uint8_t>(number * 16 + byte + 1);
        before.x[17] = 0;
    }

    // Runs the program's first `count` instructions, rewritten, and gives the registers afterwards.
    processor run(int count) {
        std::vector<std::uint32_t> words;
        for (const inserted& instruction : rewrite(program_code, count))
            words.push_back(instruction.word);
        // Jump back: the address stands behind the code; X17 is given up for it.
        words.push_back(0x58000051); // ldr x17, .+8
        words.push_back(0xD61F0220); // br x17
        const auto target = reinterpret_cast<std::uint64_t>(leave_code);
        words.push_back(static_cast<std::uint32_t>(target));
        words.push_back(static_cast<std::uint32_t>(target >> 32));
        std::memcpy(code, words.data(), words.size() * 4);
        __builtin___clear_cache(reinterpret_cast<char*>(code), reinterpret_cast<char*>(code + words.size()));
        processor registers = before;
        run_code(&registers, &context, code);
        registers.x[17] = 0;
        return registers;
    }

    static void expect_equal(const processor& actual, const processor& expected) {
        for (int number = 0; number < 31; ++number)
            EXPECT_EQ(actual.x[number], expected.x[number]) << "x" << number;
        EXPECT_EQ(actual.sp, expected.sp);
        EXPECT_EQ(actual.nzcv, expected.nzcv);
        EXPECT_EQ(actual.fpcr, expected.fpcr);
        EXPECT_EQ(actual.fpsr, expected.fpsr);
        for (int number = 0; number < 32; ++number)
            EXPECT_EQ(std::memcmp(actual.q[number], expected.q[number], 16), 0) << "v" << number;
    }
};

TEST_F(inserted_code, harness_changes_nothing_itself) { expect_equal(run(0), before); }

TEST_F(inserted_code, changes_what_the_instruction_changes_and_nothing_else) {
    program_code[0] = sve_add;
    const processor after = run(1);
    processor expected = before;
    for (int byte = 0; byte < 16; ++byte)
        expected.q[0][byte] = static_cast<std::uint8_t>(before.q[1][byte] + before.q[2][byte]);
    expect_equal(after, expected);
    EXPECT_EQ(context.call_app_pc, reinterpret_cast<std::uint64_t>(program_code));
    EXPECT_EQ(sve_instr_count, 1u);
    EXPECT_EQ(state()->pc, program_code);
    EXPECT_EQ(state()->x[17], reinterpret_cast<std::uint64_t>(code)); // see run_code
    for (int number = 0; number < 31; ++number) {
        if (number != 17) {
            EXPECT_EQ(state()->x[number], before.x[number]) << "x" << number;
        }
    }
    EXPECT_EQ(state()->x[31], before.sp);
    EXPECT_EQ(state()->nzcv, before.nzcv);
    EXPECT_EQ(state()->fpcr, before.fpcr);
    EXPECT_EQ(state()->fpsr, before.fpsr);
    EXPECT_EQ(state()->fpcr_extra, 0u);
    for (int number = 1; number < 32; ++number)
        EXPECT_EQ(std::memcmp(state()->z[number], before.q[number], 16), 0) << "z" << number;
}

TEST_F(inserted_code, joins_neighbours_and_keeps_what_only_the_state_holds) {
    program_code[0] = sve_add;    // add z0.b, z1.b, z2.b
    program_code[1] = 0x4E218422; // add v2.16b, v1.16b, v1.16b, native
    program_code[2] = 0x04220005; // add z5.b, z0.b, z2.b
    std::memset(state()->z[1] + 16, 3, vector_bytes - 16);
    std::memset(state()->z[2] + 16, 4, vector_bytes - 16);
    const processor after = run(3);
    for (int byte = 0; byte < 16; ++byte) {
        const int one = before.q[1][byte], two = before.q[2][byte];
        EXPECT_EQ(after.q[2][byte], static_cast<std::uint8_t>(2 * one));
        EXPECT_EQ(after.q[5][byte], static_cast<std::uint8_t>(one + two + 2 * one));
    }
    for (int byte = 16; byte < vector_bytes; ++byte)
        EXPECT_EQ(state()->z[5][byte], 3 + 4 + 4);
    EXPECT_EQ(sve_instr_count, 2u);
}

// One block, built by one thread and run by two.
TEST_F(inserted_code, of_a_shared_block_works_on_the_running_threads_state) {
    program_code[0] = sve_add;
    failing_call = "dr_using_all_private_caches";
    thread_context other = {};
    raise_thread_init(&other);
    other.client_call_entry = context.client_call_entry;
    auto* other_state = static_cast<cpu_state*>(drmgr_get_tls_field(&other, tls_idx));
    for (cpu_state* of_thread : {state(), other_state})
        std::memset(of_thread->z[1] + 16, of_thread == state() ? 3 : 5, vector_bytes - 16);
    processor expected = before;
    for (int byte = 0; byte < 16; ++byte)
        expected.q[0][byte] = static_cast<std::uint8_t>(before.q[1][byte] + before.q[2][byte]);

    expect_equal(run(1), expected);
    EXPECT_EQ(state()->z[0][100], 3);
    EXPECT_EQ(other_state->z[0][100], 0);

    set_current_drcontext(&other);
    processor registers = before;
    run_code(&registers, &other, code);
    registers.x[17] = 0;
    expect_equal(registers, expected);
    EXPECT_EQ(other_state->z[0][100], 5);
    EXPECT_EQ(other_state->x[3], before.x[3]);
    EXPECT_EQ(state()->z[0][100], 3);
    EXPECT_EQ(sve_instr_count, 2u);

    set_current_drcontext(&context);
    raise_thread_exit(&other);
    failing_call.clear();
}

// Every register that an instruction might write, the three spilled ones among them.
aarch64_decode_rc change_everything(cpu_state* state, unsigned int) {
    for (std::uint64_t& x : state->x)
        x = ~x;
    state->x[31] = 0x7FFF'0000'0010;
    state->nzcv = 0x50000000;
    state->fpcr = 0x00800000;
    state->fpsr = 0x00000008;
    for (auto& z : state->z)
        for (std::uint8_t& byte : z)
            byte ^= 0xFF;
    return aarch64_not_emulated;
}

TEST_F(inserted_code, brings_back_every_register_even_after_a_failure) {
    program_code[0] = sve_sub;
    stub_in_place = change_everything;
    testing::internal::CaptureStderr();
    const processor after = run(1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("0x04a50483"), std::string::npos);
    stub_in_place = nullptr;
    processor expected = before;
    for (std::uint64_t& x : expected.x)
        x = ~x;
    expected.x[17] = 0;
    expected.sp = 0x7FFF'0000'0010;
    expected.nzcv = 0x50000000;
    expected.fpcr = 0x00800000;
    expected.fpsr = 0x00000008;
    for (auto& q : expected.q)
        for (std::uint8_t& byte : q)
            byte ^= 0xFF;
    expect_equal(after, expected);
    EXPECT_EQ(sve_instr_count, 0u);
}

} // namespace
