// The file for DynamoRIO, with the few calls that it makes answered by the test.
#include "sve/client/framework_port.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

struct {
    const char* known_option = "max_bb_instrs";
    uint64 option_value = 256;
    std::vector<uint64> call_arguments;
    bool call_saves_fp_state = true;
    void (*exit_event)() = nullptr;
    const char* exit_registration = "none";
    bool (*restore_event)(void*, bool, dr_restore_state_info_t*) = nullptr;
    std::vector<const void*> unreadable;
} framework;

opnd_t operand(uint64 value) {
    const uint64 members[2] = {value, 0};
    opnd_t result;
    std::memcpy(&result, members, sizeof result);
    return result;
}

} // namespace

extern "C" {

file_t our_stderr = 2;

void dr_abort(void) { std::_Exit(255); }

ssize_t dr_fprintf(file_t f, const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    const int length = vdprintf(f, fmt, arguments);
    va_end(arguments);
    return length;
}

bool dr_get_integer_option(const char* option_name, uint64* val) {
    if (std::strcmp(option_name, framework.known_option) != 0)
        return false;
    *val = framework.option_value;
    return true;
}

void dr_insert_clean_call(void* drcontext, instrlist_t* ilist, instr_t* where, void* callee,
                          bool save_fpstate, uint num_args, ...) {
    framework.call_saves_fp_state = save_fpstate;
    for (const void* pointer : {drcontext, static_cast<void*>(ilist), static_cast<void*>(where), callee})
        framework.call_arguments.push_back(reinterpret_cast<uint64>(pointer));
    va_list arguments;
    va_start(arguments, num_args);
    for (uint index = 0; index < num_args; ++index) {
        const opnd_t argument = va_arg(arguments, opnd_t);
        uint64 value;
        std::memcpy(&value, &argument, sizeof value);
        framework.call_arguments.push_back(value);
    }
    va_end(arguments);
}

#if PUBLISHED_VERSION > 1103
bool drmgr_register_exit_event(void (*func)(void)) {
    framework.exit_event = func;
    framework.exit_registration = "drmgr";
    return true;
}
#else
void dr_register_exit_event(void (*func)(void)) {
    framework.exit_event = func;
    framework.exit_registration = "dr";
}
#endif

bool drmgr_register_restore_state_ex_event(bool (*func)(void*, bool, dr_restore_state_info_t*)) {
    framework.restore_event = func;
    return true;
}

bool dr_safe_read(const void* base, size_t size, void* out_buf, size_t* bytes_read) {
    for (const void* address : framework.unreadable)
        if (address == base)
            return false;
    std::memcpy(out_buf, base, size);
    *bytes_read = size;
    return true;
}

reg_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot) {
    return reinterpret_cast<reg_t>(drcontext) + static_cast<reg_t>(slot);
}

} // extern "C"

namespace {

struct dynamorio_port : testing::Test {
    void SetUp() override { framework = {}; }
};

TEST_F(dynamorio_port, makes_a_clean_call_without_the_address) {
    const auto pointer = [](std::uintptr_t value) { return reinterpret_cast<void*>(value); };
    dr_insert_call_kelvo(pointer(1), reinterpret_cast<instrlist_t*>(2), reinterpret_cast<instr_t*>(3),
                         static_cast<app_pc>(pointer(4)), pointer(5), 3, operand(6), operand(7), operand(8));
    EXPECT_EQ(framework.call_arguments, (std::vector<uint64>{1, 2, 3, 5, 6, 7, 8}));
    EXPECT_FALSE(framework.call_saves_fp_state);
}

TEST_F(dynamorio_port, registers_the_exit_event_of_the_version) {
    register_process_exit_event([] {});
    EXPECT_NE(framework.exit_event, nullptr);
    EXPECT_STREQ(framework.exit_registration, PUBLISHED_VERSION > 1103 ? "drmgr" : "dr");
}

TEST_F(dynamorio_port, refuses_blocks_that_can_outgrow_a_fragment) {
    const uint64 most = most_block_instructions;
    for (const uint64 accepted : {std::uint64_t{1}, std::uint64_t{8}, std::uint64_t{most}}) {
        framework.option_value = accepted;
        check_framework_options();
    }
    for (const uint64 refused : {std::uint64_t{most + 1}, std::uint64_t{256}, std::uint64_t{1024}}) {
        framework.option_value = refused;
        EXPECT_EXIT(
            check_framework_options(), testing::ExitedWithCode(255),
            "^Usage error: blocks of " + std::to_string(refused) +
                " instructions can outgrow DynamoRIO's code cache: run drrun with -max_bb_instrs 32\n$");
    }
    framework.known_option = "none that is known";
    check_framework_options();
}

constexpr unsigned int sve_add = 0x04220020; // add z0.b, z1.b, z2.b

// A thread that is stopped at `word` in the cache, on the way through what stands for `application_word`.
struct stopped_thread {
    unsigned int application_word;
    unsigned int word;
    dr_mcontext_t application = {};
    dr_mcontext_t raw = {};
    dr_restore_state_info_t info = {};

    stopped_thread(unsigned int at_application, unsigned int at)
        : application_word(at_application), word(at) {
        application.pc = reinterpret_cast<byte*>(&application_word);
        application.r25 = 25;
        application.r26 = 26;
        application.r27 = 27;
        application.r28 = 28;
        raw = application;
        raw.pc = reinterpret_cast<byte*>(&word);
        info.mcontext = &application;
        info.raw_mcontext_valid = true;
        info.raw_mcontext = &raw;
    }
    bool restore() {
        register_framework_events();
        return framework.restore_event(reinterpret_cast<void*>(1000), false, &info);
    }
    bool is_untouched() const { return application.r26 == 26 && application.r27 == 27; }
};

// All that stands with application status in a replacement, one of each form and both ends of each range.
constexpr unsigned int before_the_call[] = {
    0x910003FA, // add x26, sp, #0
    0xF9007F7A, // str x26, [x27, #248]
    0xA9000760, // stp x0, x1, [x27]
    0xA90EFB7D, // stp x29, x30, [x27, #232]
    0x3D804B60, // str q0, [x27, #288]
    0x3D842B7F, // str q31, [x27, #4256]
    0xD53B421A, // mrs x26, nzcv
    0xD53B443A, // mrs x26, fpsr
    0xD53B441A, // mrs x26, fpcr
    0xB901137A, // str w26, [x27, #272]
};
constexpr unsigned int after_the_call[] = {
    0xB941177A, // ldr w26, [x27, #276]
    0xD51B441A, // msr fpcr, x26
    0xD51B443A, // msr fpsr, x26
    0xD51B421A, // msr nzcv, x26
    0xF940877A, // ldr x26, [x27, #264]
    0x3DC04B60, // ldr q0, [x27, #288]
    0x3DC42B7F, // ldr q31, [x27, #4256]
    0xA9400760, // ldp x0, x1, [x27]
    0xA94EFB7D, // ldp x29, x30, [x27, #232]
    0x9100035F, // add sp, x26, #0
};

TEST_F(dynamorio_port, begins_an_instruction_again_that_was_stopped_before_its_call) {
    for (const unsigned int word : before_the_call) {
        stopped_thread thread(sve_add, word);
        EXPECT_TRUE(thread.restore()) << std::hex << word;
        EXPECT_EQ(thread.application.r25, 25u);
        EXPECT_EQ(thread.application.r26, 1000u + SPILL_SLOT_1) << std::hex << word;
        EXPECT_EQ(thread.application.r27, 1000u + SPILL_SLOT_2) << std::hex << word;
        EXPECT_EQ(thread.application.r28, 28u);
    }
}

TEST_F(dynamorio_port, refuses_to_execute_an_instruction_twice) {
    for (const unsigned int word : after_the_call) {
        stopped_thread thread(sve_add, word);
        EXPECT_FALSE(thread.restore()) << std::hex << word;
        EXPECT_TRUE(thread.is_untouched()) << std::hex << word;
    }
}

TEST_F(dynamorio_port, leaves_alone_what_it_did_not_insert) {
    // The application's own store and load, of the same words as inserted ones.
    for (const unsigned int word : {0xF9007F7Au, 0xA9400760u, 0x910003FAu, 0xD51B421Au}) {
        stopped_thread thread(word, word);
        EXPECT_TRUE(thread.restore());
        EXPECT_TRUE(thread.is_untouched());
    }
    // SVE instructions that stand as they are in the cache, since they belong to a library: an addition, a
    // load, a store.
    for (const unsigned int word : {sve_add, 0xA400A000u, 0xE400E000u}) {
        stopped_thread thread(word, word);
        EXPECT_TRUE(thread.restore());
        EXPECT_TRUE(thread.is_untouched());
    }
    // No position, or none that can be read.
    stopped_thread no_position(sve_add, before_the_call[0]);
    no_position.info.raw_mcontext_valid = false;
    no_position.info.raw_mcontext = nullptr;
    EXPECT_TRUE(no_position.restore());
    EXPECT_TRUE(no_position.is_untouched());
    for (const bool application : {true, false}) {
        stopped_thread thread(sve_add, after_the_call[0]);
        framework.unreadable = {application ? thread.application.pc : thread.raw.pc};
        EXPECT_TRUE(thread.restore());
        EXPECT_TRUE(thread.is_untouched());
    }
}

} // namespace
