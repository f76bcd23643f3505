// Events, fields, output and modules of the framework interface.
#include "drmgr.h"
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

// They start in order and end in reverse, all of them, even if the first ends the use of the manager.
TEST_F(events, come_in_order) {
    EXPECT_TRUE(drmgr_register_thread_init_event(note_thread<'a'>));
    EXPECT_TRUE(drmgr_register_thread_init_event(note_thread<'b'>));
    EXPECT_TRUE(drmgr_register_thread_exit_event(note_thread<'c'>));
    EXPECT_TRUE(drmgr_register_thread_exit_event(note_thread<'d'>));
    EXPECT_TRUE(drmgr_register_exit_event(note<'e'>));
    EXPECT_TRUE(drmgr_register_exit_event([] {
        drmgr_exit();
        order += 'f';
    }));
    raise_thread_init(nullptr);
    raise_thread_exit(nullptr);
    raise_process_exit();
    EXPECT_EQ(order, "abdcfe");
    EXPECT_FALSE(drmgr_register_exit_event(note<'e'>));
    raise_process_exit();
    EXPECT_EQ(order, "abdcfe") << "the last exit drops the registrations";
    drmgr_init();
}

TEST(output, is_one_write_of_limited_length) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(dr_fprintf(ends[1], "%s-%d\n", "text", 42), 8);
    EXPECT_EQ(dr_fprintf(ends[1], "%s|end", std::string(2560, 'y').c_str()), 2559);
    std::string all(8192, '\0');
    all.resize(static_cast<std::size_t>(read(ends[0], all.data(), all.size())));
    EXPECT_EQ(all, "text-42\n" + std::string(2559, 'y'));
    close(ends[1]);
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

TEST(modules, are_copies) {
    std::uint8_t mapping[64];
    program = {mapping, mapping + 32, mapping + 8, "/a/b/prog"};
    module_data_t* const main = dr_get_main_module();
    module_data_t* const found = dr_lookup_module(mapping + 31);
    ASSERT_TRUE(main && found && main != found);
    for (const module_data_t* module : {main, found}) {
        EXPECT_EQ(module->start, mapping);
        EXPECT_EQ(module->end, mapping + 32);
        EXPECT_EQ(module->entry_point, mapping + 8);
        EXPECT_STREQ(module->names.file_name, "prog");
    }
    EXPECT_EQ(dr_lookup_module(mapping + 32), nullptr);
    program = {};
    EXPECT_EQ(dr_get_main_module(), nullptr);
    EXPECT_STREQ(found->full_path, "/a/b/prog");
    for (module_data_t* module : {main, found, static_cast<module_data_t*>(nullptr)})
        dr_free_module_data(module);
}

} // namespace
