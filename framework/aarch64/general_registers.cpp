#include "framework/aarch64/general_registers.h"

namespace a64 {

namespace {

struct row {
    word mask;
    word value;
    register_uses uses;
};

// Shapes of the rows below: the use of the fields at bits 0, 5, 10 and 16.
constexpr register_uses registers(use at0, use at5, use at10 = no_use, use at16 = no_use) {
    return {{at0, at5, at10, at16}, false, false};
}
constexpr register_uses memory(use at0, use at5, use at10 = no_use, use at16 = no_use) {
    return {{at0, at5, at10, at16}, true, false};
}
constexpr use none = no_use;

// The first row that takes a word decides, so exceptions stand before their family.
constexpr row table[] = {
    // Data processing, immediate.
    {0x1F000000, 0x11000000, registers(writes, reads)},              // ADD, SUB, ADDG, SUBG, SMAX and its kin
    {0x1F800000, 0x12000000, registers(writes, reads)},              // AND, ORR, EOR, ANDS
    {0x7F800000, 0x72800000, registers(updates, none)},              // MOVK
    {0x1F800000, 0x12800000, registers(writes, none)},               // MOVN, MOVZ
    {0x7F800000, 0x33000000, registers(updates, reads)},             // BFM
    {0x1F800000, 0x13000000, registers(writes, reads)},              // SBFM, UBFM
    {0x1F800000, 0x13800000, registers(writes, reads, none, reads)}, // EXTR

    // System.
    {0xFFE00000, 0xD5200000, registers(writes, none)}, // MRS, SYSL
    {0xFFE00000, 0xD5000000, registers(reads, none)},  // MSR, SYS, WFET

    // Data processing, register.
    {0x1E000000, 0x0A000000, registers(writes, reads, none, reads)}, // logical, ADD and SUB
    {0xFFE07C10, 0xBA000400, registers(none, reads)},                // RMIF
    {0xFFFFBC1F, 0x3A00080D, registers(none, reads)},                // SETF8, SETF16
    {0x1FE00000, 0x1A000000, registers(writes, reads, none, reads)}, // ADC, SBC
    {0x1FE00800, 0x1A400800, registers(none, reads)},                // CCMP, CCMN, immediate
    {0x1FE00800, 0x1A400000, registers(none, reads, none, reads)},   // CCMP, CCMN, register
    {0x1FE00000, 0x1A800000, registers(writes, reads, none, reads)}, // CSEL and its kin
    {0x5FE00000, 0x1AC00000,
     registers(writes, reads, none, reads)},             // division, variable shifts, CRC32, PACGA
    {0xFFFF0000, 0xDAC10000, registers(updates, reads)}, // PACIA, AUTIA, XPACI and their kin
    {0x5FE00000, 0x5AC00000, registers(writes, reads)},  // RBIT, REV, CLZ, CTZ, ABS
    {0x1F000000, 0x1B000000, registers(writes, reads, reads, reads)}, // MADD and its kin

    // Exclusives, acquire and release, compare and swap.
    {0xBFE00000, 0x88200000, memory(reads, reads, reads, writes)},         // STXP
    {0xBFE00000, 0x88600000, memory(writes, reads, writes)},               // LDXP
    {0xBFA00000, 0x08200000, {{reads, reads, none, updates}, true, true}}, // CASP
    {0x3FE00000, 0x08000000, memory(reads, reads, none, writes)},          // STXR
    {0x3FE00000, 0x08400000, memory(writes, reads)},                       // LDXR
    {0x3FE00000, 0x08800000, memory(reads, reads)},                        // STLR, STLLR
    {0x3FE00000, 0x08C00000, memory(writes, reads)},                       // LDAR, LDLAR
    {0x3FA00000, 0x08A00000, memory(reads, reads, none, updates)},         // CAS
    {0x3FE00C00, 0x19000000, memory(reads, reads)},                        // STLUR
    {0x3F200C00, 0x19000000, memory(writes, reads)},                       // LDAPUR
    {0x3F200C00, 0x1D000800, memory(none, reads)},                         // LDAPUR, STLUR, SIMD
    {0xBFE0EC00, 0x99000800, memory(reads, updates, none, reads)},         // STILP
    {0xBFE0EC00, 0x99400800, memory(writes, updates, none, writes)},       // LDIAPP
    {0xBFE00C00, 0x99800800, memory(reads, updates)},                      // STLR, pre-indexed
    {0xBFE00C00, 0x99C00800, memory(writes, updates)},                     // LDAPR, post-indexed
    {0xFF200C00, 0x19200000, memory(updates, reads, none, updates)},       // LDCLRP, LDSETP, SWPP
    {0x3B200C00, 0x19000400, memory(updates, updates, none, updates)},     // CPY, SET and their kin

    // Memory tags.
    {0xFFE00C00, 0xD9600000, memory(updates, reads)}, // LDG
    {0xFFE00C00, 0xD9E00000, memory(writes, reads)},  // LDGM
    {0xFF200400, 0xD9200000, memory(reads, reads)},   // STG, ST2G and their kin, offset; STGM, STZGM
    {0xFF200400, 0xD9200400, memory(reads, updates)}, // the same with writeback

    // Pairs.
    {0x3EC00000, 0x28000000, memory(reads, reads, reads)},     // STP, STNP, STGP
    {0x3EC00000, 0x28400000, memory(writes, reads, writes)},   // LDP, LDNP, LDPSW
    {0x3EC00000, 0x28800000, memory(reads, updates, reads)},   // STP, STGP, with writeback
    {0x3EC00000, 0x28C00000, memory(writes, updates, writes)}, // LDP, LDPSW, with writeback
    {0x3E800000, 0x2C000000, memory(none, reads)},             // SIMD
    {0x3E800000, 0x2C800000, memory(none, updates)},           // SIMD with writeback

    // Single registers: unsigned offset.
    {0xFFC00000, 0xF9800000, memory(none, reads)},   // PRFM
    {0x3FC00000, 0x39000000, memory(reads, reads)},  // STR
    {0x3F000000, 0x39000000, memory(writes, reads)}, // LDR
    {0x3F000000, 0x3D000000, memory(none, reads)},   // SIMD
    // Signed offset; bit 10 says writeback.
    {0xFFE00C00, 0xF8800000, memory(none, reads)},     // PRFUM
    {0x3FE00400, 0x38000000, memory(reads, reads)},    // STUR, STTR
    {0x3FE00400, 0x38000400, memory(reads, updates)},  // STR
    {0x3F200400, 0x38000000, memory(writes, reads)},   // LDUR, LDTR
    {0x3F200400, 0x38000400, memory(writes, updates)}, // LDR
    {0x3F200400, 0x3C000000, memory(none, reads)},     // SIMD
    {0x3F200400, 0x3C000400, memory(none, updates)},   // SIMD with writeback
    // Register offset.
    {0xFFE00C00, 0xF8A00800, memory(none, reads, none, reads)},   // PRFM
    {0x3FE00C00, 0x38200800, memory(reads, reads, none, reads)},  // STR
    {0x3F200C00, 0x38200800, memory(writes, reads, none, reads)}, // LDR
    {0x3F200C00, 0x3C200800, memory(none, reads, none, reads)},   // SIMD
    // Atomics and authenticated loads.
    {0x3F200C00, 0x38200000, memory(writes, reads, none, reads)}, // LDADD and its kin, SWP, LDAPR
    {0xFF200C00, 0xF8200400, memory(writes, reads)},              // LDRAA, LDRAB
    {0xFF200C00, 0xF8200C00, memory(writes, updates)},            // LDRAA, LDRAB, pre-indexed

    // SIMD structures.
    {0xBE800000, 0x0C000000, memory(none, reads)},                // LD1 to LD4, ST1 to ST4, LD1R and its kin
    {0xBE800000, 0x0C800000, memory(none, updates, none, reads)}, // the same with writeback

    // Between general and SIMD registers.
    {0x7F26FC00, 0x1E220000, registers(none, reads)},  // SCVTF, UCVTF
    {0x7F27FC00, 0x1E270000, registers(none, reads)},  // FMOV to SIMD
    {0x7F20FC00, 0x1E200000, registers(writes, none)}, // FCVTNS and its kin, FMOV from SIMD, FJCVTZS
    {0x7F260000, 0x1E020000, registers(none, reads)},  // SCVTF, UCVTF of fixed point
    {0x7F200000, 0x1E000000, registers(writes, none)}, // FCVTZS, FCVTZU to fixed point
    {0xBFE0FC00, 0x0E000C00, registers(none, reads)},  // DUP
    {0xFFE0FC00, 0x4E001C00, registers(none, reads)},  // INS
    {0xBFE0FC00, 0x0E002C00, registers(writes, none)}, // SMOV
    {0xBFE0FC00, 0x0E003C00, registers(writes, none)}, // UMOV
};

} // namespace

register_uses general_registers(word instruction) {
    for (const row& candidate : table)
        if ((instruction & candidate.mask) == candidate.value)
            return candidate.uses;
    return registers(none, none);
}

use use_of_stolen_register(word instruction, const register_uses& uses) {
    use combined = no_use;
    for (unsigned place = 0; place < register_fields; ++place)
        if (register_at(instruction, place) == stolen_register)
            combined |= uses.field[place];
    return combined;
}

word rename_register(word instruction, const register_uses& uses, unsigned from, unsigned to) {
    for (unsigned place = 0; place < register_fields; ++place) {
        const unsigned low = field_low_bit[place];
        if (uses.field[place] != no_use && register_at(instruction, place) == from)
            instruction = (instruction & ~(word{31} << low)) | field(to, low, 5);
    }
    return instruction;
}

} // namespace a64
