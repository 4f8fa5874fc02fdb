#include "fat32/Fat32LongName.h"
#include "scan/LeReader.h"

namespace {
constexpr int kSlotBytes = 32;
struct Part {
    size_t offset;
    int units;
};
// Where a slot keeps its 13 UTF-16 units: 5, 6 and 2 of them.
constexpr Part kParts[] = {{0x01, 5}, {0x0E, 6}, {0x1C, 2}};
} // namespace

void Fat32LongName::add(const uchar* slot)
{
    if (m_count >= kMaxSlots)
        return;
    LeReader r(slot, kSlotBytes);
    auto& units = m_slots[size_t(m_count++)];
    size_t i = 0;
    for (const Part& p : kParts) {
        for (int u = 0; u < p.units; ++u)
            units[i++] = char16_t(r.u16(p.offset + size_t(u) * 2));
    }
}

QString Fat32LongName::take()
{
    QString name;
    for (int s = m_count - 1; s >= 0; --s) {
        for (char16_t unit : m_slots[size_t(s)]) {
            if (unit == 0) {
                m_count = 0;
                return name;
            }
            name.append(QChar(unit));
        }
    }
    m_count = 0;
    return name;
}
