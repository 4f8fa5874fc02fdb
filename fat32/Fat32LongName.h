#pragma once
#include <QString>
#include <array>

// The long-name slots seen since the last short entry. Slots stand on disk
// before their short entry, last part first; they are neither numbered nor
// checked here, and go with whichever short entry comes next.
class Fat32LongName {
public:
    // 20 slots of 13 units give 260 units, the longest name the format allows.
    static constexpr int kMaxSlots = 20;
    static constexpr int kUnitsPerSlot = 13;

    // Stages one 32-byte slot; slots beyond the limit are dropped.
    void add(const uchar* slot);
    int count() const { return m_count; }
    // The staged name, last slot first, up to the first 0 unit; empties the table.
    QString take();

private:
    std::array<std::array<char16_t, kUnitsPerSlot>, kMaxSlots> m_slots{};
    int m_count = 0;
};
