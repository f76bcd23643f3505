// A hash table from application addresses to what stands there, in memory that does not move, with room for
// more reserved in few pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// Objects that keep their places until all are dropped.
template <typename Object> class stable_pool {
    static constexpr std::size_t piece_objects = 256;

    std::vector<std::unique_ptr<Object[]>> pieces;
    std::size_t count = 0;

public:
    std::size_t size() const { return count; }
    Object& operator[](std::size_t index) { return pieces[index / piece_objects][index % piece_objects]; }
    const Object& operator[](std::size_t index) const {
        return pieces[index / piece_objects][index % piece_objects];
    }
    Object& add(const Object& object) {
        if (count == pieces.size() * piece_objects)
            pieces.push_back(std::make_unique_for_overwrite<Object[]>(piece_objects));
        return (*this)[count++] = object;
    }
    void clear() { count = 0; }
};

// `Key` has an `application_pc`, comparison, and `mixed`, a number that differs between keys of one address.
template <typename Key, typename Value> class address_table {
    struct entry {
        Key key;
        Value value;
    };
    stable_pool<entry> entries;
    std::vector<entry*> slots; // a power of two of them; collisions go on to the next
    unsigned slot_bits = 0;

    entry** slot_of(const Key& key) {
        const std::uint64_t hash = (key.application_pc / 4 ^ key.mixed()) * 0x9E3779B97F4A7C15;
        std::size_t index = hash >> (64 - slot_bits);
        while (slots[index] && !(slots[index]->key == key))
            index = (index + 1) & (slots.size() - 1);
        return &slots[index];
    }

    void grow() {
        slot_bits = slots.empty() ? 10 : slot_bits + 1;
        slots.assign(std::size_t{1} << slot_bits, nullptr);
        for (std::size_t n = 0; n < entries.size(); ++n)
            *slot_of(entries[n].key) = &entries[n];
    }

public:
    Value* find(const Key& key) {
        entry* const found = slots.empty() ? nullptr : *slot_of(key);
        return found ? &found->value : nullptr;
    }
    const Value* find(const Key& key) const { return const_cast<address_table*>(this)->find(key); }

    // Adds a key that is not there yet.
    Value* add(const Key& key, const Value& value) {
        if (2 * entries.size() >= slots.size())
            grow();
        entry& added = entries.add({key, value});
        *slot_of(key) = &added;
        return &added.value;
    }

    template <typename Visitor> void for_each(Visitor visit) {
        for (std::size_t n = 0; n < entries.size(); ++n)
            visit(entries[n].key, entries[n].value);
    }

    void clear() {
        entries.clear();
        slots.assign(slots.size(), nullptr);
    }
};
