// A client that has been started, with one thread, in a made-up process.
#pragma once

#include "dr_api.h"
#include "framework/ir/instruction.h"
#include "framework/loader/module.h"
#include "framework/runtime/client_events.h"
#include "framework/runtime/thread_context.h"
#include "sve/client/statistics.h"
#include "sve/client/sve_client.h"
#include "sve/decode/cpu_state.h"
#include "tests/client/recorded_calls.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

// What main_module() and find_module() know; an empty range is no module.
inline loaded_module program = {};
inline loaded_module library = {};

// The client's callbacks run as in a process of one thread whose main module is `program`.
struct client_test : testing::Test {
    alignas(16) std::uint32_t program_code[64] = {};
    alignas(16) std::uint32_t library_code[64] = {};
    alignas(16) std::uint32_t generated_code[64] = {}; // in no module
    thread_context context = {};

    static std::uint8_t* bytes(std::uint32_t* code) { return reinterpret_cast<std::uint8_t*>(code); }

    void SetUp() override {
        program = {bytes(program_code), bytes(program_code + 64), bytes(program_code), "/made/up/program"};
        library = {bytes(library_code), bytes(library_code + 64), bytes(library_code), "/made/up/library.so"};
        icounts.clear();
        const char* arguments[] = {"ostrel", nullptr};
        start_client(1, arguments);
        set_current_drcontext(&context);
        raise_thread_init(&context);
        recorded_calls.clear();
    }

    void TearDown() override {
        raise_thread_exit(&context);
        set_current_drcontext(nullptr);
        testing::internal::CaptureStderr();
        raise_process_exit();
        testing::internal::GetCapturedStderr();
        program = {};
        library = {};
    }

    cpu_state* state() { return static_cast<cpu_state*>(drmgr_get_tls_field(&context, tls_idx)); }

    // The block of `count` instructions at `code`, as the block event leaves it.
    struct inserted {
        std::uint32_t word;
        std::uint8_t* translation;
        bool is_app;
    };
    std::vector<inserted> rewrite(std::uint32_t* code, int count) {
        instrlist_t* list = create_instruction_list();
        for (int index = 0; index < count; ++index)
            instrlist_append(list, instruction_from_application(bytes(code + index)));
        EXPECT_EQ(raise_block_event(&context, code, list, false, false), DR_EMIT_DEFAULT);
        std::vector<inserted> result;
        for (instr_t* instruction = list->first; instruction != nullptr; instruction = instruction->next)
            result.push_back({instruction->word, instruction->translation, instruction->is_app});
        destroy_instruction_list(list);
        return result;
    }
};
