// Loads and stores as the opcode table has them: what a row's name says of its operands, and its words.
#pragma once

#include "sve/decode/opcode_rows.h"
#include "tests/unit/memory_tools.h"

#include <string_view>

struct memory_form {
    opcode_row row;
    transfer_kind kind;
    int registers;
    std::string_view how;     // the last part of the name, which tells the kind of address
    std::string_view variant; // Dup, NT, FF or NF
    bool is_contiguous, is_replicated;

    bool has_vector_bases() const { return how == "VIZ"; }
    bool has_index() const { return how == "LSSZ"; }
    char extension() const { return how[0] == 'X' || how[0] == 'Y' ? how[0] : ' '; }
    std::uint64_t scale() const {
        return how.find("SV") != how.npos ? static_cast<std::uint64_t>(kind.memory_bytes) : 1;
    }
    int bytes_in_memory() const {
        return is_replicated ? kind.memory_bytes : registers * kind.element_count() * kind.memory_bytes;
    }

    // `third` is the register or immediate in bits 20:16.
    unsigned int word(int zt, int pg, int base, int third) const {
        return map_value(describe(row.map), row.key) |
               static_cast<unsigned int>(zt | base << 5 | pg << 10 | third << 16);
    }
};

// Takes the text, or a number, from the front of a name.
inline bool take(std::string_view& name, std::string_view text) {
    const bool is_there = name.starts_with(text);
    name.remove_prefix(is_there ? text.size() : 0);
    return is_there;
}
inline int take_number(std::string_view& name) {
    int number = 0;
    for (; !name.empty() && name[0] >= '0' && name[0] <= '9'; name.remove_prefix(1))
        number = 10 * number + (name[0] - '0');
    return number;
}

// The rows whose names are of loads and stores of elements.
inline std::vector<memory_form> memory_forms() {
    std::vector<memory_form> forms;
    for_each_opcode([&](const opcode_row& row) {
        std::string_view name = row.name;
        take(name, "Vec");
        memory_form form = {row, {}, 1, {}, {}, {}, {}};
        form.kind.sign_extends = take(name, "S");
        take(name, "U");
        form.kind.element_bytes = take_number(name) / 8;
        form.is_contiguous = take(name, "C");
        if (take(name, "E")) {
            form.is_contiguous = true;
            form.registers = take_number(name);
        }
        form.kind.is_store = take(name, "Store");
        if (!form.kind.is_store && !take(name, "Load"))
            return;
        for (const std::string_view variant : {"Dup", "NT", "FF", "NF"})
            if (take(name, variant))
                form.variant = variant;
        form.is_replicated = form.variant == "Dup";
        form.kind.memory_bytes = take_number(name);
        form.how = name;
        if (form.how[0] != 'Q') // which are loads of blocks
            forms.push_back(form);
    });
    return forms;
}

// A random state as the bridge to the library leaves it, which packs FFR and the flags.
inline cpu_state random_packed_state(unsigned seed) {
    cpu_state state = random_state(seed);
    state.nzcv &= 0xFFFFFFFF;
    for (std::uint8_t& byte : state.ffr)
        byte &= 1;
    return state;
}

// Sets the registers of a vector form, of which element i is to have the address wanted(i) or, where an
// offset is scaled, one close below, and gives the addresses. `anchor` is an address near to all of them.
template <class Wanted>
std::vector<std::uint64_t> set_addresses(const memory_form& form, cpu_state& state, int vector, int rn,
                                         int imm5, std::uint64_t anchor, std::uint64_t span, Wanted wanted,
                                         std::mt19937_64& generator) {
    const std::uint64_t scale = form.scale(), room = span / scale + 2;
    // The offset of the anchor, such that the room above it can be expressed, too.
    std::uint64_t first = generator();
    if (form.extension() == 'X')
        first = first % (0x100000000 - room) - 0x80000000;
    else if (form.extension() == 'Y' || form.kind.element_bytes == 4)
        first = first % (0x100000000 - room);
    const std::uint64_t base = anchor + generator() % scale - first * scale;
    if (!form.has_vector_bases())
        state.x[rn] = base;
    std::vector<std::uint64_t> addresses;
    for (int i = 0; i < form.kind.element_count(); ++i) {
        std::uint64_t address = wanted();
        std::uint64_t stored = address - static_cast<std::uint64_t>(imm5 * form.kind.memory_bytes);
        if (!form.has_vector_bases()) {
            stored = first + (address - anchor) / scale;
            address = base + stored * scale;
            if (form.extension() != ' ') // the upper half is not to count
                stored = (stored & 0xFFFFFFFF) | generator() << 32;
        }
        std::memcpy(state.z[vector] + i * form.kind.element_bytes, &stored,
                    static_cast<std::size_t>(form.kind.element_bytes));
        addresses.push_back(address);
    }
    return addresses;
}
