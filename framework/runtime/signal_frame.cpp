#include "framework/runtime/signal_frame.h"

#include <algorithm>
#include <asm/sigcontext.h>
#include <cstring>
#include <ucontext.h>
#include <vector>

#include "framework/include/signal_frame_record.h"
#include "framework/runtime/interruptible.h"

namespace {

signal_frame_record client_record;

struct signal_frame {
    siginfo_t information;
    ucontext_t machine;
};
static_assert(sizeof(siginfo_t) == 128 && offsetof(ucontext_t, uc_mcontext) == 176 &&
                  sizeof(mcontext_t) == 280 + 8 + 4096,
              "the kernel's layout");

// What stands above everything else, so that the chain of frame records goes on through the handler.
struct frame_record {
    std::uint64_t frame_pointer;
    std::uint64_t link;
};

constexpr std::uint64_t round_down(std::uint64_t address) { return address & ~std::uint64_t{15}; }

// Records from the reserved space of the frame on: of the vector registers, of the client's behind the frame
// if there is one, and the end.
struct extra_pointer {
    _aarch64_ctx head;
    std::uint64_t data;
    std::uint32_t bytes;
    std::uint32_t reserved[3];
};
constexpr _aarch64_ctx end_of_records{0, 0};

void save_vector_registers(const thread_context* context, std::uint8_t* to) {
    fpsimd_context record{};
    record.head = {FPSIMD_MAGIC, sizeof record};
    record.fpsr = static_cast<std::uint32_t>(context->fpsr);
    record.fpcr = static_cast<std::uint32_t>(context->fpcr);
    static_assert(sizeof record.vregs == sizeof context->q);
    std::memcpy(record.vregs, context->q, sizeof record.vregs);
    std::memcpy(to, &record, sizeof record);
}

void load_vector_registers(thread_context* context, const std::uint8_t* from) {
    fpsimd_context record;
    std::memcpy(&record, from, sizeof record);
    context->fpsr = record.fpsr;
    context->fpcr = record.fpcr;
    std::memcpy(context->q, record.vregs, sizeof record.vregs);
}

// The client's record and the end behind it; nothing if it has nothing to save.
std::vector<std::uint8_t> save_client_record(thread_context* context) {
    if (!client_record.save)
        return {};
    std::vector<std::uint8_t> bytes(client_record.bytes + 16);
    if (!client_record.save(context, bytes.data()))
        return {};
    const _aarch64_ctx head{client_record.magic, client_record.bytes};
    std::memcpy(bytes.data(), &head, sizeof head);
    return bytes;
}

void fill_machine(const thread_context* context, ucontext_t& machine) {
    mcontext_t& registers = machine.uc_mcontext;
    for (unsigned n = 0; n < 31; ++n)
        registers.regs[n] = read_register(context, n);
    registers.sp = context->sp;
    registers.pc = context->pc;
    registers.pstate = context->nzcv;
}

stack_t alternate_stack_in_frame(const thread_context* context) {
    stack_t stack = context->signals.alternate;
    if (!(stack.ss_flags & SS_DISABLE))
        stack.ss_flags |= is_on_alternate_stack(context, context->sp) ? SS_ONSTACK : 0;
    return stack;
}

// The client's record among those of `bytes` from there on. Sets `extra` if a record leads to further ones.
const std::uint8_t* find_client_record(const std::uint8_t* from, std::size_t bytes, extra_pointer& extra) {
    for (std::size_t offset = 0; offset + sizeof(_aarch64_ctx) <= bytes;) {
        _aarch64_ctx head;
        std::memcpy(&head, from + offset, sizeof head);
        if (head.magic == 0 || head.size < sizeof head || head.size > bytes - offset)
            return nullptr;
        if (head.magic == client_record.magic && head.size == client_record.bytes)
            return from + offset;
        if (head.magic == EXTRA_MAGIC && head.size >= sizeof extra)
            std::memcpy(&extra, from + offset, sizeof extra);
        offset += head.size;
    }
    return nullptr;
}

bool load_client_record(thread_context* context, const std::uint8_t* reserved) {
    if (!client_record.restore)
        return true;
    extra_pointer extra{};
    const std::uint8_t* found = find_client_record(reserved, sizeof(mcontext_t::__reserved), extra);
    std::vector<std::uint8_t> behind;
    if (!found && extra.data) {
        constexpr std::uint32_t most = 65536;
        behind.resize(std::min(extra.bytes, most));
        if (!copy_guarded(behind.data(), reinterpret_cast<const void*>(extra.data), behind.size()))
            return false;
        extra_pointer ignored;
        found = find_client_record(behind.data(), behind.size(), ignored);
    }
    client_record.restore(context, found);
    return true;
}

} // namespace

void register_signal_frame_record(const signal_frame_record& record) { client_record = record; }

bool is_on_alternate_stack(const thread_context* context, std::uint64_t sp) {
    const stack_t& stack = context->signals.alternate;
    // One that disarms itself is never found in use.
    if (stack.ss_flags & (SS_DISABLE | disarms_itself))
        return false;
    const auto start = reinterpret_cast<std::uint64_t>(stack.ss_sp);
    return sp > start && sp - start <= stack.ss_size;
}

bool push_signal_frame(thread_context* context, const signal_action& action, const siginfo_t& information,
                       std::uint64_t saved_mask, std::uint64_t trampoline) {
    stack_t& alternate = context->signals.alternate;
    const bool switches = action.flags & SA_ONSTACK && !(alternate.ss_flags & SS_DISABLE) &&
                          !is_on_alternate_stack(context, context->sp);
    const std::uint64_t top =
        switches ? reinterpret_cast<std::uint64_t>(alternate.ss_sp) + alternate.ss_size : context->sp;

    const std::vector<std::uint8_t> client_bytes = save_client_record(context);
    const std::uint64_t record_place = round_down(top - sizeof(frame_record));
    const std::uint64_t client_place = record_place - client_bytes.size();
    const std::uint64_t place = client_place - sizeof(signal_frame);

    signal_frame frame{};
    frame.information = information;
    frame.machine.uc_stack = alternate_stack_in_frame(context);
    std::memcpy(&frame.machine.uc_sigmask, &saved_mask, sizeof saved_mask);
    fill_machine(context, frame.machine);
    std::uint8_t* reserved = frame.machine.uc_mcontext.__reserved;
    const auto is_memory_fault = information.si_signo == SIGSEGV || information.si_signo == SIGBUS;
    if (is_memory_fault && information.si_code > 0)
        frame.machine.uc_mcontext.fault_address = reinterpret_cast<std::uint64_t>(information.si_addr);
    save_vector_registers(context, reserved);
    reserved += sizeof(fpsimd_context);
    if (!client_bytes.empty()) {
        extra_pointer extra{};
        extra.head = {EXTRA_MAGIC, sizeof extra};
        extra.data = client_place;
        extra.bytes = static_cast<std::uint32_t>(client_bytes.size());
        std::memcpy(reserved, &extra, sizeof extra);
        reserved += sizeof extra;
    }
    std::memcpy(reserved, &end_of_records, sizeof end_of_records);
    reserved += 16;

    // As the kernel does, nothing is written to what the records leave of the reserved space.
    const auto used = static_cast<std::size_t>(reserved - reinterpret_cast<std::uint8_t*>(&frame));
    const frame_record record{context->x[29], context->x[30]};
    if (!copy_guarded(reinterpret_cast<void*>(place), &frame, used) ||
        !copy_guarded(reinterpret_cast<void*>(client_place), client_bytes.data(), client_bytes.size()) ||
        !write_application(record_place, record))
        return false;

    if (switches && alternate.ss_flags & disarms_itself)
        alternate = {nullptr, SS_DISABLE, 0};
    context->x[0] = static_cast<std::uint64_t>(information.si_signo);
    if (action.flags & SA_SIGINFO) {
        context->x[1] = place + offsetof(signal_frame, information);
        context->x[2] = place + offsetof(signal_frame, machine);
    }
    context->x[29] = record_place;
    constexpr std::uint64_t has_restorer = 0x04000000; // SA_RESTORER
    context->x[30] = action.flags & has_restorer ? action.restorer : trampoline;
    context->sp = place;
    context->pc = action.handler;
    return true;
}

bool pop_signal_frame(thread_context* context, std::uint64_t& mask) {
    signal_frame frame;
    if (context->sp % 16 != 0 || !read_application(frame, context->sp))
        return false;
    const mcontext_t& registers = frame.machine.uc_mcontext;
    _aarch64_ctx head;
    std::memcpy(&head, registers.__reserved, sizeof head);
    if (head.magic != FPSIMD_MAGIC || head.size != sizeof(fpsimd_context))
        return false;
    load_vector_registers(context, registers.__reserved);
    if (!load_client_record(context, registers.__reserved))
        return false;
    for (unsigned n = 0; n < 31; ++n)
        (n == 28 ? context->app_x28 : context->x[n]) = registers.regs[n];
    context->sp = registers.sp;
    context->pc = registers.pc;
    constexpr std::uint64_t condition_flags = 0xF0000000;
    context->nzcv = registers.pstate & condition_flags;
    std::memcpy(&mask, &frame.machine.uc_sigmask, sizeof mask);
    const stack_t& stack = frame.machine.uc_stack;
    context->signals.alternate = {stack.ss_sp, stack.ss_flags & ~SS_ONSTACK, stack.ss_size};
    return true;
}
