#include "tests/conformance/comparison.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace conformance {

namespace {

[[gnu::format(printf, 1, 2)]] std::string text(const char* format, ...) {
    char buffer[200];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return buffer;
}

std::string differs(const char* what, std::uint64_t processor, std::uint64_t ours, std::uint64_t before) {
    return text("%s: processor %#llx, ours %#llx (before: %#llx)", what,
                static_cast<unsigned long long>(processor), static_cast<unsigned long long>(ours),
                static_cast<unsigned long long>(before));
}

std::string predicate_difference(const char* what, const std::uint64_t (&processor)[2],
                                 const std::uint8_t* ours, const std::uint8_t* before) {
    std::uint64_t bits[2];
    gather_predicate(ours, bits);
    for (int i = 0; i < vector_bytes; ++i) {
        const bool expected = processor[i / 64] >> (i % 64) & 1;
        if (expected != static_cast<bool>(bits[i / 64] >> (i % 64) & 1))
            return text("%s bit %d: processor %d, ours %d (byte %#x; before: %#x)", what, i, expected,
                        !expected, ours[i], before[i]);
    }
    return {};
}

std::string vector_difference(int number, const std::uint8_t* processor, const std::uint8_t* ours,
                              const std::uint8_t* before) {
    int at = 0;
    while (processor[at] == ours[at])
        ++at;
    const int first = at / 8 * 8;
    std::uint64_t values[3];
    std::memcpy(&values[0], processor + first, 8);
    std::memcpy(&values[1], ours + first, 8);
    std::memcpy(&values[2], before + first, 8);
    return text("Z%d byte %d: in doubleword %d processor %#018llx, ours %#018llx (before: %#018llx)", number,
                at, first / 8, static_cast<unsigned long long>(values[0]),
                static_cast<unsigned long long>(values[1]), static_cast<unsigned long long>(values[2]));
}

} // namespace

std::string first_difference(const carried_out& done) {
    const processor_registers& processor = done.processor;
    const cpu_state& ours = done.ours;
    const cpu_state& before = done.before;
    for (int i = 0; i < 31; ++i) {
        if (processor.x[i] != ours.x[i])
            return differs(("X" + std::to_string(i)).c_str(), processor.x[i], ours.x[i], before.x[i]);
    }
    if (processor.sp != ours.x[31])
        return differs("SP", processor.sp, ours.x[31], before.x[31]);
    for (int i = 0; i < 32; ++i) {
        if (std::memcmp(processor.z[i], ours.z[i], vector_bytes) != 0)
            return vector_difference(i, processor.z[i], ours.z[i], before.z[i]);
    }
    for (int i = 0; i < 16; ++i) {
        const std::string difference =
            predicate_difference(("P" + std::to_string(i)).c_str(), processor.p[i], ours.p[i], before.p[i]);
        if (!difference.empty())
            return difference;
    }
    std::string difference = predicate_difference("FFR", processor.ffr, ours.ffr, before.ffr);
    if (!difference.empty())
        return difference;
    if (processor.nzcv != ours.nzcv)
        return differs("NZCV", processor.nzcv, ours.nzcv, before.nzcv);
    if (processor.fpsr != ours.fpsr)
        return differs("FPSR", processor.fpsr, ours.fpsr, before.fpsr);
    if (processor.fpcr != ours.fpcr)
        return differs("FPCR", processor.fpcr, ours.fpcr, before.fpcr);
    if (ours.fpcr_extra != 0)
        return differs("fpcr_extra", 0, ours.fpcr_extra, 0);
    if (ours.pc != before.pc)
        return "pc has moved";
    const std::uint64_t instr_word = done.row.route == opcode_route::handler ? done.word : before.instr_word;
    if (ours.instr_word != instr_word)
        return differs("instr_word", instr_word, ours.instr_word, before.instr_word);
    return {};
}

std::string first_memory_difference(const std::uint8_t* processor, const std::uint8_t* ours,
                                    std::size_t size) {
    if (std::memcmp(processor, ours, size) == 0)
        return {};
    std::size_t at = 0;
    while (processor[at] == ours[at])
        ++at;
    return text("memory at byte %zu of %zu: processor %#x, ours %#x", at, size, processor[at], ours[at]);
}

} // namespace conformance
