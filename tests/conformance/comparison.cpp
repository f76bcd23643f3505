#include "tests/conformance/comparison.h"

#include <cstdio>
#include <cstring>

namespace conformance {

namespace {

std::string differs(const std::string& what, std::uint64_t processor, std::uint64_t ours,
                    std::uint64_t before) {
    const auto shown = [](std::uint64_t number) { return static_cast<unsigned long long>(number); };
    char text[200];
    std::snprintf(text, sizeof text, "%s: processor %#llx, ours %#llx (before: %#llx)", what.c_str(),
                  shown(processor), shown(ours), shown(before));
    return text;
}

std::string predicate_difference(const std::string& what, const std::uint64_t (&processor)[2],
                                 const std::uint8_t* ours, const std::uint8_t* before) {
    for (int i = 0; i < vector_bytes; ++i) {
        const std::uint64_t bit = processor[i / 64] >> (i % 64) & 1;
        if (bit != (ours[i] & 1u))
            return differs(what + " bit " + std::to_string(i), bit, ours[i], before[i]);
    }
    return {};
}

} // namespace

std::string first_difference(const carried_out& done) {
    const processor_registers& processor = done.processor;
    const cpu_state& ours = done.ours;
    const cpu_state& before = done.before;
    for (int i = 0; i < 31; ++i)
        if (processor.x[i] != ours.x[i])
            return differs("X" + std::to_string(i), processor.x[i], ours.x[i], before.x[i]);
    for (int i = 0; i < 32; ++i)
        for (int byte = 0; byte < vector_bytes; byte += 8) {
            std::uint64_t values[3];
            std::memcpy(&values[0], processor.z[i] + byte, 8);
            std::memcpy(&values[1], ours.z[i] + byte, 8);
            std::memcpy(&values[2], before.z[i] + byte, 8);
            if (values[0] != values[1])
                return differs("Z" + std::to_string(i) + " byte " + std::to_string(byte), values[0],
                               values[1], values[2]);
        }
    std::string difference = predicate_difference("FFR", processor.ffr, ours.ffr, before.ffr);
    for (int i = 0; i < 16 && difference.empty(); ++i)
        difference = predicate_difference("P" + std::to_string(i), processor.p[i], ours.p[i], before.p[i]);
    const auto address = [](const cpu_state& state) { return reinterpret_cast<std::uint64_t>(state.pc); };
    const struct {
        const char* name;
        std::uint64_t processor, ours, before;
    } numbers[] = {
        {"SP", processor.sp, ours.x[31], before.x[31]},
        {"NZCV", processor.nzcv, ours.nzcv, before.nzcv},
        {"FPSR", processor.fpsr, ours.fpsr, before.fpsr},
        {"FPCR", processor.fpcr, ours.fpcr, before.fpcr},
        {"fpcr_extra", 0, ours.fpcr_extra, 0},
        {"pc", address(before), address(ours), address(before)},
        {"instr_word", done.row.route == opcode_route::handler ? done.word : before.instr_word,
         ours.instr_word, before.instr_word},
    };
    for (const auto& number : numbers)
        if (difference.empty() && number.processor != number.ours)
            difference = differs(number.name, number.processor, number.ours, number.before);
    return difference;
}

std::string first_memory_difference(const std::uint8_t* processor, const std::uint8_t* ours,
                                    const std::uint8_t* before, std::size_t size) {
    for (std::size_t at = 0; at < size; ++at)
        if (processor[at] != ours[at])
            return differs("memory at byte " + std::to_string(at), processor[at], ours[at], before[at]);
    return {};
}

} // namespace conformance
