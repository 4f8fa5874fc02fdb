#pragma once
#include "carving/CarveKind.h"

#include <array>
#include <memory>
#include <vector>

// The kinds the carving pass knows, with a dispatch on a block's first byte
// so that a block is tested only by the kinds that can start with it.
class CarveKinds {
public:
    // Every kind, in a fixed order.
    static const CarveKinds& all();

    // The first kind whose header test passes on these bytes, or null.
    const CarveKind* match(const uchar* head, size_t bytes) const;
    // Whether any kind's header lies at these bytes.
    bool headerAt(const uchar* head, size_t bytes) const { return match(head, bytes) != nullptr; }
    const std::vector<std::unique_ptr<CarveKind>>& kinds() const { return m_kinds; }
    // Every extension a carved file may get, for the type choices.
    static QStringList extensions();

    explicit CarveKinds(std::vector<std::unique_ptr<CarveKind>> kinds);

private:
    std::vector<std::unique_ptr<CarveKind>> m_kinds;
    std::array<std::vector<const CarveKind*>, 256> m_byFirstByte;
};
