#include "tests/conformance/memory_operands.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace conformance {

namespace {

constexpr int readable_pages = 2;
constexpr std::uint64_t stack_alignment = 16;
constexpr std::uint32_t stack_pointer = 31;

constexpr std::uint32_t field(std::uint32_t word, int high, int low) {
    return (word >> low) & (0xFFFFFFFFu >> (31 - high + low));
}
constexpr std::int64_t signed_field(std::uint32_t word, int high, int low) {
    return static_cast<std::int32_t>(word << (31 - high)) >> (31 - high + low);
}

bool take(std::string_view& text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix)
        return false;
    text.remove_prefix(prefix.size());
    return true;
}
int take_number(std::string_view& text) {
    int number = 0;
    while (!text.empty() && text[0] >= '0' && text[0] <= '9') {
        number = number * 10 + text[0] - '0';
        text.remove_prefix(1);
    }
    return number;
}

// The number whose product with an odd one is 1, modulo 2 to the power 64.
std::uint64_t inverse(std::uint64_t odd) {
    std::uint64_t result = odd;
    for (int i = 0; i < 5; ++i)
        result *= 2 - odd * result;
    return result;
}

// Makes every element active, in more states than have such a predicate by chance.
void activate_all(cpu_state& state, std::uint32_t word, int element_bytes) {
    std::uint8_t* const row = state.p[field(word, 12, 10)];
    for (int i = 0; i < vector_bytes; i += element_bytes)
        row[i] |= 1;
}

// Makes the element inactive; its other predicate bits stay.
void deactivate(cpu_state& state, std::uint32_t word, int element, int element_bytes) {
    state.p[field(word, 12, 10)][element * element_bytes] &= 0xFE;
}

bool is_active(const cpu_state& state, std::uint32_t word, int element, int element_bytes) {
    return state.p[field(word, 12, 10)][element * element_bytes] & 1;
}

bool inside(const arena& memory, std::uint64_t address, std::uint64_t size) {
    return address >= memory.begin() && address + size <= memory.end();
}

// Anything from deep inside to beyond either end, or nowhere near.
std::uint64_t random_start(const arena& memory, std::uint64_t step, std::uint64_t span,
                           random_source& random) {
    const std::uint64_t part = random.below(span / step + 1) * step, bytes = random.below(step);
    const std::uint64_t within = memory.begin() + random.below(memory.size() - span + 1);
    const std::uint64_t starts[] = {
        memory.end() - part - bytes, // across the end, in whole steps and a part
        memory.end() - part - bytes,
        memory.end() - span,
        memory.begin() - part + bytes,
        memory.begin() + memory.size() / 2 - random.below(span + 1), // across a page boundary inside
        random.one_in(4) ? random.next() : memory.begin(),
        within,
        within,
    };
    return starts[random.below(std::size(starts))];
}

struct contiguous_shape {
    std::uint64_t step; // bytes of one element of every register
    int elements;
    std::uint64_t unit; // what an immediate counts
    std::int64_t immediate;
};

contiguous_shape shape_of(const memory_form& form, std::uint32_t word) {
    const auto step = static_cast<std::uint64_t>(form.memory_bytes * form.registers);
    const std::uint64_t span = step * static_cast<std::uint64_t>(form.elements);
    if (form.kind == memory_kind::replicate && form.elements == 1)
        return {step, 1, step, static_cast<std::int64_t>(field(word, 21, 16))};
    return {step, form.elements, span,
            form.kind == memory_kind::whole
                ? signed_field(word, 21, 16) * 8 + static_cast<std::int64_t>(field(word, 12, 10))
                : signed_field(word, 19, 16)};
}

// Base register and offset for an address; with the stack pointer as base, the address is moved so that it is
// aligned.
std::uint64_t set_base(const memory_form& form, std::uint32_t word, const contiguous_shape& shape,
                       std::uint64_t start, cpu_state& state, random_source& random) {
    const std::uint32_t rn = field(word, 9, 5);
    const std::uint32_t rm = field(word, 20, 16);
    const auto scale = static_cast<std::uint64_t>(form.memory_bytes);
    if (form.scalar_offset && rn == rm && rm != 31) {
        if (scale == 1)
            start &= ~std::uint64_t{1};
        state.x[rn] = scale == 1 ? start / 2 : start * inverse(1 + scale);
        return start;
    }
    std::uint64_t offset = static_cast<std::uint64_t>(shape.immediate) * shape.unit;
    if (form.scalar_offset) {
        const std::uint64_t count =
            random.one_in(3) ? random.next() : static_cast<std::uint64_t>(random.between(-500, 500));
        if (rm != 31)
            state.x[rm] = count;
        offset = rm == 31 ? 0 : count * scale;
    }
    std::uint64_t base = start - offset;
    if (rn == stack_pointer)
        base &= ~(stack_alignment - 1);
    state.x[rn] = base;
    return base + offset;
}

void place_contiguous(const memory_form& form, std::uint32_t word, const arena& memory, cpu_state& state,
                      random_source& random) {
    const contiguous_shape shape = shape_of(form, word);
    const std::uint64_t span = shape.step * static_cast<std::uint64_t>(shape.elements);
    std::uint64_t start;
    if (form.faults != fault_rule::none) // every page that is probed is readable
        start = memory.begin() + stack_alignment + random.below(memory.size() - 4 * vector_bytes);
    else if (form.kind == memory_kind::whole && !random.one_in(4))
        start = memory.begin() + stack_alignment + random.below(memory.size() - span - stack_alignment + 1);
    else
        start = form.kind == memory_kind::whole ? memory.end() - span
                                                : random_start(memory, shape.step, span, random);
    start = set_base(form, word, shape, start, state, random);
    if (form.kind == memory_kind::whole)
        return;

    // A replicated element is read for every active one of the register.
    const int elements = form.kind == memory_kind::replicate && shape.elements == 1
                             ? vector_bytes / form.element_bytes
                             : shape.elements;
    for (int i = 0; i < elements; ++i) {
        const std::uint64_t at =
            start + (shape.elements == 1 ? 0 : shape.step * static_cast<std::uint64_t>(i));
        if (!inside(memory, at, shape.step))
            deactivate(state, word, i, form.element_bytes);
    }
}

// The offset of the first byte of the arena, in units of the scale, within what the extension can express.
std::uint64_t first_offset(const memory_form& form, std::uint64_t units, random_source& random) {
    const auto room = static_cast<std::int64_t>(units);
    if (random.one_in(2))
        return random.below(4096);
    if (form.extension == offset_extension::none)
        return random.next();
    const std::int64_t lowest = form.extension == offset_extension::sign ? -0x80000000ll : 0;
    return static_cast<std::uint64_t>(random.between(lowest, lowest + 0xFFFFFFFF - room));
}

// Whether each byte is in the arena or on the unreadable pages around it.
bool is_known(const arena& memory, std::uint64_t address, std::uint64_t size) {
    const std::uint64_t page = memory.size() / readable_pages;
    return address >= memory.begin() - page && address + size <= memory.end() + page;
}

bool crosses_page(const arena& memory, std::uint64_t address, std::uint64_t size) {
    const std::uint64_t page = memory.size() / readable_pages;
    return address % page > page - size;
}

// Sets an element of the vector operand so that its address is the target, or next below it in units of the
// scale.
void set_vector_element(const memory_form& form, std::uint32_t word, int element, std::uint64_t target,
                        cpu_state& state, random_source& random) {
    std::uint8_t* const vector = state.z[form.vector_base ? field(word, 9, 5) : field(word, 20, 16)];
    std::uint64_t value = target - field(word, 20, 16) * static_cast<std::uint64_t>(form.memory_bytes);
    if (!form.vector_base) {
        const auto distance = static_cast<std::int64_t>(target - state.x[field(word, 9, 5)]);
        value = static_cast<std::uint64_t>(distance / (form.scaled ? form.memory_bytes : 1));
        if (form.extension != offset_extension::none)
            value = (value & 0xFFFFFFFF) | random.next() << 32; // the upper half does not count
    }
    __builtin_memcpy(vector + element * form.element_bytes, &value,
                     static_cast<std::size_t>(form.element_bytes));
}

// The address of an element as its vector operand now gives it.
std::uint64_t vector_address(const memory_form& form, std::uint32_t word, int element,
                             const cpu_state& state) {
    const std::uint8_t* const vector = state.z[form.vector_base ? field(word, 9, 5) : field(word, 20, 16)];
    std::uint64_t value = 0;
    __builtin_memcpy(&value, vector + element * form.element_bytes,
                     static_cast<std::size_t>(form.element_bytes));
    const auto size = static_cast<std::uint64_t>(form.memory_bytes);
    if (form.vector_base)
        return value + field(word, 20, 16) * size;
    if (form.extension == offset_extension::sign)
        value = static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(value)});
    else if (form.extension == offset_extension::zero)
        value &= 0xFFFFFFFF;
    return state.x[field(word, 9, 5)] + value * (form.scaled ? size : 1);
}

void place_vector(const memory_form& form, std::uint32_t word, const arena& memory, cpu_state& state,
                  random_source& random) {
    const auto size = static_cast<std::uint64_t>(form.memory_bytes);
    if (!form.vector_base) {
        const std::uint32_t rn = field(word, 9, 5);
        const std::uint64_t scale = form.scaled ? size : 1;
        state.x[rn] = memory.begin() - first_offset(form, memory.size() / scale, random) * scale;
        state.x[rn] += random.below(scale);
        if (rn == stack_pointer)
            state.x[rn] &= ~(stack_alignment - 1);
    }

    const bool few_targets = random.one_in(3);
    const bool some_outside = random.one_in(2);
    const std::uint64_t few = memory.begin() + 64 + random.below(memory.size() - 256);
    bool may_fault = false; // in a first-fault load, behind its first active element
    for (int i = 0; i < form.elements; ++i) {
        std::uint64_t target = memory.begin() + random.below(memory.size() - size + 1);
        if (random.one_in(4))
            target = random.one_in(2) ? memory.begin() : memory.end() - size;
        if (few_targets)
            target = few + random.below(2 * size);
        if (some_outside && random.one_in(6)) {
            const std::uint64_t elsewhere =
                may_fault ? memory.begin() - 1 - random.below(500) : random.next();
            target = random.one_in(2) ? memory.end() - random.below(size) : elsewhere;
            if (!may_fault)
                deactivate(state, word, i, form.element_bytes);
        }
        set_vector_element(form, word, i, target, state, random);

        // What the element as stored says counts, after all rounding. The processor may stop a first-fault
        // load wherever it likes, and user-mode emulation does so at an element that crosses pages.
        const std::uint64_t address = vector_address(form, word, i, state);
        const bool readable = inside(memory, address, size);
        if (!readable && !(may_fault && is_known(memory, address, size)))
            deactivate(state, word, i, form.element_bytes);
        if (form.faults != fault_rule::none) {
            if (readable && crosses_page(memory, address, size))
                deactivate(state, word, i, form.element_bytes);
            may_fault = may_fault || is_active(state, word, i, form.element_bytes);
        }
    }
    // What elements hold that are not true in FFR from the start on, the architecture leaves open.
    if (form.faults != fault_rule::none) {
        for (std::uint8_t& byte : state.ffr)
            byte |= 1;
    }
}

} // namespace

arena::arena() {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    size_ = readable_pages * page;
    for (std::uint64_t place = 0x30000000; place < 0xE0000000; place += 0x01000000) {
        void* const wanted = reinterpret_cast<void*>(place);
        void* const region = mmap(wanted, size_ + 2 * page, PROT_NONE,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
        if (region == MAP_FAILED)
            continue;
        if (region != wanted) {
            munmap(region, size_ + 2 * page);
            continue;
        }
        bytes_ = static_cast<std::uint8_t*>(region) + page;
        if (mprotect(bytes_, size_, PROT_READ | PROT_WRITE) == 0)
            return;
    }
    std::fprintf(stderr, "conformance: there is no free memory below 4 GB\n");
    std::exit(2);
}

memory_form memory_form_of(std::string_view name) {
    memory_form form = {};
    form.registers = 1;
    const bool predicate = take(name, "VecP");
    if (!predicate) {
        if (!take(name, "VecU") && !take(name, "VecS"))
            return form;
        form.element_bytes = take_number(name) / 8;
        if (form.element_bytes == 0)
            return form;
    }
    if (name == "FillSI" || name == "SpillSI") {
        form.kind = memory_kind::whole;
        form.store = name == "SpillSI";
        form.memory_bytes = predicate ? vector_bytes / 8 : vector_bytes;
        form.elements = 1;
        return form;
    }
    if (predicate)
        return form;
    form.elements = vector_bytes / form.element_bytes;

    bool contiguous = take(name, "C");
    if (!contiguous && take(name, "E")) {
        contiguous = true;
        form.registers = take_number(name);
    }
    form.store = take(name, "Store");
    if (!form.store && !take(name, "Load"))
        return {};
    const bool replicate = take(name, "Dup");
    if (take(name, "FF"))
        form.faults = fault_rule::first_fault;
    else if (take(name, "NF"))
        form.faults = fault_rule::non_fault;
    else
        take(name, "NT");
    form.memory_bytes = take_number(name);

    if (contiguous && (name == "SIZ" || name == "LSSZ")) {
        form.kind = memory_kind::contiguous;
        form.scalar_offset = name == "LSSZ";
    } else if (replicate && (name == "SIZ" || name == "QSIZ" || name == "QSSZ")) {
        form.kind = memory_kind::replicate;
        form.elements = name == "SIZ" ? 1 : 16 / form.memory_bytes;
        form.scalar_offset = name == "QSSZ";
    } else {
        form.kind = memory_kind::vector;
        form.vector_base = name == "VIZ";
        if (take(name, "X"))
            form.extension = offset_extension::sign;
        else if (take(name, "Y") || form.element_bytes == 4)
            form.extension = offset_extension::zero;
        form.scaled = name == "SVZ";
        if (!form.vector_base && !form.scaled && name != "VSZ")
            return {};
    }
    return form;
}

void place_operands(const memory_form& form, std::uint32_t word, const arena& memory, cpu_state& state,
                    random_source& random) {
    if (form.kind == memory_kind::none)
        return;
    if (form.kind != memory_kind::whole && random.one_in(3))
        activate_all(state, word, form.element_bytes);
    if (form.kind == memory_kind::vector)
        place_vector(form, word, memory, state, random);
    else
        place_contiguous(form, word, memory, state, random);
}

std::uint32_t reference_word(const memory_form& form, std::uint32_t word) {
    if (form.kind != memory_kind::contiguous || form.faults == fault_rule::none)
        return word;
    constexpr std::uint32_t bit_13 = 1u << 13;
    constexpr std::uint32_t bit_20 = 1u << 20;
    if (form.faults == fault_rule::non_fault)
        return word & ~bit_20;
    if (field(word, 20, 16) != 31)
        return word ^ bit_13;
    // A plain load takes no register 31 as offset: an immediate of 0 says the same.
    constexpr std::uint32_t offset_and_form = 0x1Fu << 16 | 7u << 13;
    return (word & ~offset_and_form) | 5u << 13;
}

} // namespace conformance
