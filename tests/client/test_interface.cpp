// Events, fields, options, output and modules of the framework interface.
#include "drmgr.h"
#include "droption.h"
#include "drreg.h"
#include "framework/ir/services.h"
#include "tests/client/client_fixture.h"

#include <unistd.h>

// Past the wrapper that records the client's calls.
extern "C" void __real_dr_log(void* drcontext, uint mask, uint level, const char* format, ...);

namespace {

std::string order;

struct events : testing::Test {
    void SetUp() override {
        order.clear();
        ASSERT_TRUE(drmgr_init());
    }
    void TearDown() override { drmgr_exit(); }
};

template <char Letter> void note_thread(void*) { order += Letter; }
template <char Letter> void note() { order += Letter; }

TEST_F(events, start_in_order_and_end_in_reverse) {
    EXPECT_TRUE(drmgr_register_thread_init_event(note_thread<'a'>));
    EXPECT_TRUE(drmgr_register_thread_init_event(note_thread<'b'>));
    EXPECT_TRUE(drmgr_register_thread_exit_event(note_thread<'c'>));
    EXPECT_TRUE(drmgr_register_thread_exit_event(note_thread<'d'>));
    EXPECT_TRUE(drmgr_register_exit_event(note<'e'>));
    EXPECT_TRUE(drmgr_register_exit_event(note<'f'>));
    raise_thread_init(nullptr);
    raise_thread_exit(nullptr);
    raise_process_exit();
    EXPECT_EQ(order, "abdcfe");
}

TEST_F(events, all_run_even_if_the_first_ends_the_use_of_the_manager) {
    EXPECT_TRUE(drmgr_register_exit_event(note<'a'>));
    EXPECT_TRUE(drmgr_register_exit_event([] {
        drmgr_exit();
        order += 'b';
    }));
    raise_process_exit();
    EXPECT_EQ(order, "ba");
    EXPECT_FALSE(drmgr_register_exit_event(note<'a'>));
    raise_process_exit();
    EXPECT_EQ(order, "ba") << "the last exit drops the registrations";
    drmgr_init();
}

template <int Flags> dr_emit_flags_t give_flags(void*, void*, instrlist_t*, bool, bool) {
    return static_cast<dr_emit_flags_t>(Flags);
}

TEST_F(events, of_blocks_join_their_flags) {
    drmgr_priority_t priority = {sizeof priority, "name", nullptr, nullptr, 0};
    EXPECT_FALSE(drmgr_register_bb_app2app_event(give_flags<1>, &priority));
    EXPECT_FALSE(drmgr_register_bb_app2app_event(nullptr, nullptr));
    EXPECT_TRUE(drmgr_register_bb_app2app_event(give_flags<1>, nullptr));
    EXPECT_TRUE(drmgr_register_bb_app2app_event(give_flags<4>, nullptr));
    EXPECT_TRUE(drmgr_register_bb_app2app_event(give_flags<8>, nullptr));
    EXPECT_EQ(raise_block_event(nullptr, nullptr, nullptr, false, false), 13);
    EXPECT_TRUE(drmgr_unregister_bb_app2app_event(give_flags<4>));
    EXPECT_FALSE(drmgr_unregister_bb_app2app_event(give_flags<4>));
    EXPECT_EQ(raise_block_event(nullptr, nullptr, nullptr, false, false), 9);
}

TEST_F(events, register_reservation_counts_its_uses) {
    drreg_options_t options = {};
    EXPECT_EQ(drreg_init(&options), DRREG_ERROR_INVALID_PARAMETER);
    options.struct_size = sizeof options;
    EXPECT_EQ(drreg_init(&options), DRREG_SUCCESS);
    EXPECT_EQ(drreg_init(&options), DRREG_SUCCESS);
    EXPECT_EQ(drreg_exit(), DRREG_SUCCESS);
    EXPECT_EQ(drreg_exit(), DRREG_SUCCESS);
    EXPECT_EQ(drreg_exit(), DRREG_ERROR);
    options.num_spill_slots = 1;
    EXPECT_EQ(drreg_init(&options), DRREG_ERROR_OUT_OF_SLOTS);
}

TEST_F(events, thread_fields_are_numbered_until_none_is_left) {
    thread_context one = {}, two = {};
    int fields[client_tls_fields];
    for (int& field : fields) {
        field = drmgr_register_tls_field();
        ASSERT_GE(field, 0);
    }
    EXPECT_EQ(drmgr_register_tls_field(), -1);
    EXPECT_TRUE(drmgr_set_tls_field(&one, fields[0], &one));
    EXPECT_TRUE(drmgr_set_tls_field(&one, fields[63], &two));
    EXPECT_EQ(drmgr_get_tls_field(&one, fields[0]), &one);
    EXPECT_EQ(drmgr_get_tls_field(&one, fields[63]), &two);
    EXPECT_EQ(drmgr_get_tls_field(&two, fields[0]), nullptr);

    EXPECT_EQ(drmgr_get_tls_field(nullptr, fields[0]), nullptr);
    EXPECT_FALSE(drmgr_set_tls_field(nullptr, fields[0], &one));
    EXPECT_FALSE(drmgr_set_tls_field(&one, -1, &one));
    EXPECT_FALSE(drmgr_set_tls_field(&one, client_tls_fields, &one));

    EXPECT_TRUE(drmgr_unregister_tls_field(fields[5]));
    EXPECT_FALSE(drmgr_unregister_tls_field(fields[5]));
    EXPECT_FALSE(drmgr_set_tls_field(&one, fields[5], &one));
    EXPECT_EQ(drmgr_register_tls_field(), fields[5]);
}

TEST_F(events, read_a_thread_field_in_inserted_code) {
    const int first = drmgr_register_tls_field();
    int last = first;
    while (const int field = drmgr_register_tls_field() + 1)
        last = field - 1;
    ASSERT_EQ(last, client_tls_fields - 1);
    instrlist_t* list = create_instruction_list();
    EXPECT_TRUE(drmgr_insert_read_tls_field(nullptr, first, list, nullptr, DR_REG_X27));
    EXPECT_TRUE(drmgr_insert_read_tls_field(nullptr, last, list, nullptr, DR_REG_X0));
    EXPECT_FALSE(drmgr_insert_read_tls_field(nullptr, client_tls_fields, list, nullptr, DR_REG_X27));
    drmgr_unregister_tls_field(last);
    EXPECT_FALSE(drmgr_insert_read_tls_field(nullptr, last, list, nullptr, DR_REG_X27));

    // ldr x27, [x28, #offset] and ldr x0, [x28, #offset + 63 * 8]
    constexpr std::uint32_t scaled = offsetof(thread_context, tls_field) / 8;
    ASSERT_NE(list->first, nullptr);
    EXPECT_EQ(list->first->word, 0xF940039B | scaled << 10);
    EXPECT_TRUE(instr_is_meta(list->first));
    ASSERT_EQ(list->first->next, list->last);
    EXPECT_EQ(list->last->word, 0xF9400380 | (scaled + 63) << 10);
    destroy_instruction_list(list);
}

TEST(options, stop_where_the_client_has_nothing_to_read) {
    const struct {
        std::vector<const char*> arguments;
        bool accepted;
        int last_index;
        const char* message;
    } cases[] = {
        {{"client"}, true, 1, "untouched"},
        {{"client", "--"}, true, 2, "untouched"},
        {{"client", "--", "-x"}, true, 2, "untouched"},
        {{"client", "word", "-x"}, true, 1, "untouched"},
        {{"client", ""}, true, 1, "untouched"},
        {{"client", "-x", "--"}, false, 1, "Unknown option: -x"},
        {{"client", "--x=1"}, false, 1, "Unknown option: --x=1"},
        {{"client", "---"}, false, 1, "Unknown option: ---"},
        {{"client", "-"}, false, 1, "Unknown option: -"},
    };
    using dynamorio::droption::droption_parser_t;
    for (auto c : cases) {
        std::string message = "untouched";
        int last_index = -7;
        const int count = static_cast<int>(c.arguments.size());
        c.arguments.push_back(nullptr);
        const char** arguments = c.arguments.data();
        const auto scope = dynamorio::droption::DROPTION_SCOPE_CLIENT;
        EXPECT_EQ(droption_parser_t::parse_argv(scope, count, arguments, &message, &last_index), c.accepted);
        EXPECT_EQ(last_index, c.last_index) << c.message;
        EXPECT_EQ(message, c.message);
        EXPECT_EQ(droption_parser_t::parse_argv(scope, count, arguments, nullptr, nullptr), c.accepted);
    }
}

TEST(output, is_one_write_of_limited_length) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(dr_fprintf(ends[1], "%s-%d\n", "text", 42), 8);
    EXPECT_EQ(dr_fprintf(ends[1], "%s", std::string(2559, 'x').c_str()), 2559);
    EXPECT_EQ(dr_fprintf(ends[1], "%s|end", std::string(2560, 'y').c_str()), 2559);
    close(ends[1]);
    std::string all(8192, '\0');
    all.resize(static_cast<std::size_t>(read(ends[0], all.data(), all.size())));
    EXPECT_EQ(all, "text-42\n" + std::string(2559, 'x') + std::string(2559, 'y'));
    close(ends[0]);
    EXPECT_EQ(dr_fprintf(ends[0], "lost"), -1);
}

TEST(output, of_the_log_needs_its_level) {
    const auto logged = [](uint mask, uint level) {
        testing::internal::CaptureStderr();
        __real_dr_log(nullptr, mask, level, "%s\n", "line");
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(logged(DR_LOG_ALL, 1), "");
    client_log_level = 2;
    EXPECT_EQ(logged(DR_LOG_ALL, 2), "line\n");
    EXPECT_EQ(logged(DR_LOG_ALL, 3), "");
    EXPECT_EQ(logged(DR_LOG_NONE, 1), "");
    client_log_level = 0;
}

TEST(process, ends_at_once_on_abort) {
    EXPECT_EXIT(
        {
            std::atexit([] { dr_fprintf(our_stderr, "an exit event ran"); });
            dr_abort();
        },
        testing::ExitedWithCode(255), "^$");
}

TEST(process, keeps_the_clients_name) {
    EXPECT_FALSE(dr_set_client_name(nullptr, "contact"));
    EXPECT_FALSE(dr_set_client_name("name", nullptr));
    EXPECT_TRUE(dr_set_client_name("name", "contact"));
    EXPECT_STREQ(client_name(), "name");
    EXPECT_STREQ(client_report_url(), "contact");
}

TEST(modules, are_copies) {
    std::uint8_t mapping[64];
    program = {mapping, mapping + 32, mapping + 8, "/a/b/prog"};
    module_data_t* main = dr_get_main_module();
    module_data_t* found = dr_lookup_module(mapping + 31);
    ASSERT_NE(main, nullptr);
    ASSERT_NE(found, nullptr);
    EXPECT_NE(main, found);
    for (const module_data_t* module : {main, found}) {
        EXPECT_EQ(module->start, mapping);
        EXPECT_EQ(module->end, mapping + 32);
        EXPECT_EQ(module->entry_point, mapping + 8);
        EXPECT_STREQ(module->full_path, "/a/b/prog");
        EXPECT_NE(module->full_path, program.full_path.c_str());
        EXPECT_STREQ(module->names.file_name, "prog");
    }
    EXPECT_EQ(dr_lookup_module(mapping + 32), nullptr);
    program = {};
    EXPECT_EQ(dr_get_main_module(), nullptr);
    EXPECT_STREQ(found->full_path, "/a/b/prog");
    dr_free_module_data(main);
    dr_free_module_data(found);
    dr_free_module_data(nullptr);
}

TEST(memory, is_freed_by_its_size) {
    void* block = dr_thread_alloc(nullptr, 100);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0u);
    EXPECT_DEATH(dr_thread_free(nullptr, block, 99), "Assertion");
    dr_thread_free(nullptr, block, 100);
}

} // namespace
