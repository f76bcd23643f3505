// The inserted code is run: what it carries between the processor's registers and the thread's state, and
// what the function that it calls reports and counts.
#include "tests/client/client_fixture.h"
#include "tests/tools/registers.h"

#include <cstring>
#include <sys/mman.h>

// See inserted_code.S. `x[28]` is the application's, which the thread's context holds while code runs.
extern "C" {
void run_code(machine* registers, thread_context* context, const std::uint32_t* code);
void leave_code();
void call_client();
}

namespace {

static_assert(offsetof(thread_context, scratch) == 88 && offsetof(thread_context, engine_sp) == 160 &&
              offsetof(thread_context, app_x28) == 0 && offsetof(machine, q) == 288);

constexpr std::uint32_t sve_add = 0x04220020; // add z0.b, z1.b, z2.b

struct inserted_code : client_test {
    static inline std::uint32_t* code = nullptr;
    machine before = {};

    void SetUp() override {
        client_test::SetUp();
        if (code == nullptr)
            code = static_cast<std::uint32_t*>(mmap(nullptr, 1 << 16, PROT_READ | PROT_WRITE | PROT_EXEC,
                                                    MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        context.client_call_entry = reinterpret_cast<std::uint64_t>(call_client);
        for (std::uint64_t number = 0; number < 31; ++number)
            before.x[number] = 0x1111'0000'2222'0000 + number * 0x0100'0001'0000'0001;
        before.x[17] = reinterpret_cast<std::uint64_t>(code); // see run_code
        before.sp = 0x7FFF'1234'5670;
        before.nzcv = 0xA0000000;
        before.fpcr = 0x03C00000; // round to zero, flush to zero, default NaN
        before.fpsr = 0x08000015;
        for (int number = 0; number < 32; ++number)
            for (int byte = 0; byte < 16; ++byte)
                before.q[number][byte] = static_cast<std::uint8_t>(number * 16 + byte + 1);
    }

    // Puts words where they are run, with a jump back behind them.
    void place(std::vector<std::uint32_t> words) {
        const auto target = reinterpret_cast<std::uint64_t>(leave_code);
        for (const std::uint64_t word :
             {0x58000051ul, 0xD61F0220ul, target & 0xFFFFFFFF, target >> 32}) // ldr x17; br x17
            words.push_back(static_cast<std::uint32_t>(word));
        std::memcpy(code, words.data(), words.size() * 4);
        __builtin___clear_cache(reinterpret_cast<char*>(code), reinterpret_cast<char*>(code + words.size()));
    }
    // The program's first `count` instructions, rewritten.
    void place(int count) {
        std::vector<std::uint32_t> words;
        for (const inserted& instruction : rewrite(program_code, count))
            words.push_back(instruction.word);
        place(words);
    }
    machine run(thread_context& of_thread) {
        machine registers = before;
        run_code(&registers, &of_thread, code);
        registers.x[17] = before.x[17]; // given up for the jump back
        return registers;
    }
    machine run(int count) {
        place(count);
        return run(context);
    }

    static void expect_equal(const machine& actual, const machine& expected) {
        for (int number = 0; number < 31; ++number)
            EXPECT_EQ(actual.x[number], expected.x[number]) << "x" << number;
        EXPECT_EQ(actual.sp, expected.sp);
        EXPECT_EQ(actual.nzcv, expected.nzcv);
        EXPECT_EQ(actual.fpcr, expected.fpcr);
        EXPECT_EQ(actual.fpsr, expected.fpsr);
        for (int number = 0; number < 32; ++number)
            EXPECT_EQ(std::memcmp(actual.q[number], expected.q[number], 16), 0) << "v" << number;
    }
    // What sve_add makes of `before`.
    machine with_sum() const {
        machine result = before;
        for (int byte = 0; byte < 16; ++byte)
            result.q[0][byte] = static_cast<std::uint8_t>(before.q[1][byte] + before.q[2][byte]);
        return result;
    }
};

TEST_F(inserted_code, harness_changes_nothing_itself) { expect_equal(run(0), before); }

TEST_F(inserted_code, changes_what_the_instruction_changes_and_nothing_else) {
    program_code[0] = sve_add;
    expect_equal(run(1), with_sum());
    EXPECT_EQ(context.call_app_pc, reinterpret_cast<std::uint64_t>(program_code));
    EXPECT_EQ(sve_instr_count, 1u);
    EXPECT_EQ(icounts.at(program_code).first, sve_add);
    EXPECT_EQ(icounts.at(program_code).second, 1u);
}

TEST_F(inserted_code, joins_neighbours_and_keeps_what_only_the_state_holds) {
    program_code[0] = sve_add;    // add z0.b, z1.b, z2.b
    program_code[1] = 0x4E218422; // add v2.16b, v1.16b, v1.16b, native
    program_code[2] = 0x04220005; // add z5.b, z0.b, z2.b
    std::memset(state()->z[1] + 16, 3, vector_bytes - 16);
    std::memset(state()->z[2] + 16, 4, vector_bytes - 16);
    machine expected = with_sum();
    for (int byte = 0; byte < 16; ++byte) {
        expected.q[2][byte] = static_cast<std::uint8_t>(2 * before.q[1][byte]);
        expected.q[5][byte] = static_cast<std::uint8_t>(expected.q[0][byte] + expected.q[2][byte]);
    }
    expect_equal(run(3), expected);
    for (int byte = 16; byte < vector_bytes; ++byte)
        EXPECT_EQ(state()->z[5][byte], 3 + 4 + 4);
    EXPECT_EQ(sve_instr_count, 2u);
}

TEST_F(inserted_code, holds_immediates_of_every_shape) {
    machine expected = before;
    for (const std::uint64_t value : {0ul, 1ul, 0xFFFF0000ul, 0x1234'0000'0000'0000ul, 0x1234'0000'5678ul,
                                      ~0ul, 0x0123'4567'89AB'CDEFul}) {
        instrlist_t* list = create_instruction_list();
        instrlist_insert_mov_immed_ptrsz(nullptr, static_cast<ptr_int_t>(value), opnd_create_reg(DR_REG_X5),
                                         list, nullptr, nullptr, nullptr);
        std::vector<std::uint32_t> words;
        for (instr_t* instruction = list->first; instruction != nullptr; instruction = instruction->next)
            words.push_back(instruction->word);
        destroy_instruction_list(list);
        place(words);
        expected.x[5] = value;
        expect_equal(run(context), expected);
    }
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

    expect_equal(run(1), with_sum());
    EXPECT_EQ(state()->z[0][100], 3);
    EXPECT_EQ(other_state->z[0][100], 0);

    set_current_drcontext(&other);
    expect_equal(run(other), with_sum());
    EXPECT_EQ(other_state->z[0][100], 5);
    EXPECT_EQ(other_state->x[28], before.x[28]);
    EXPECT_EQ(state()->z[0][100], 3);
    EXPECT_EQ(sve_instr_count, 2u);

    set_current_drcontext(&context);
    raise_thread_exit(&other);
    failing_call.clear();
}

// Every register that an instruction might write, the three spilled ones among them.
cpu_state seen;
unsigned int seen_word;
aarch64_decode_rc change_everything(cpu_state* state, unsigned int word) {
    seen = *state;
    seen_word = word;
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

TEST_F(inserted_code, carries_every_register_both_ways_even_when_emulation_fails) {
    program_code[0] = program_code[1] = 0xD503201F; // nop
    program_code[2] = sve_add;
    stub_in_place = change_everything;
    place(3);
    stub_in_place = nullptr;
    program_code[2] = 0x04205678; // the line quotes the word in memory, not the one from block-build time
    testing::internal::CaptureStderr();
    const machine after = run(context);
    char line[128];
    std::snprintf(line, sizeof line, "Error: failed to emulate SVE instruction 0x04205678 at PC %p\n",
                  static_cast<void*>(program_code + 2));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), line);
    EXPECT_EQ(sve_instr_count, 0u);
    EXPECT_TRUE(icounts.empty());

    machine given = {};
    std::memcpy(given.x, seen.x, sizeof given.x);
    given.sp = seen.x[31];
    given.nzcv = seen.nzcv;
    given.fpcr = seen.fpcr;
    given.fpsr = seen.fpsr;
    for (int number = 0; number < 32; ++number)
        std::memcpy(given.q[number], seen.z[number], 16);
    expect_equal(given, before);
    EXPECT_EQ(seen.fpcr_extra, 0u);
    EXPECT_EQ(seen_word, sve_add);
    EXPECT_EQ(seen.pc, program_code + 2);
    EXPECT_EQ(state()->pc, program_code + 2) << "the program counter is not the client's to advance";

    machine expected = before;
    for (int number = 0; number < 31; ++number)
        expected.x[number] = number == 17 ? before.x[17] : ~before.x[number];
    expected.sp = 0x7FFF'0000'0010;
    expected.nzcv = 0x50000000;
    expected.fpcr = 0x00800000;
    expected.fpsr = 0x00000008;
    for (auto& q : expected.q)
        for (std::uint8_t& byte : q)
            byte ^= 0xFF;
    expect_equal(after, expected);
}

} // namespace
