#include "ntfs/Lznt1.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {
struct Case {
    const char* what;
    std::vector<uint8_t> input;
    std::string expected; // the unit's first bytes
    bool damaged;
};

class Lznt1Cases : public ::testing::TestWithParam<Case> {};

TEST_P(Lznt1Cases, DecompressesWhatTheUnitHolds)
{
    const Case& c = GetParam();
    std::vector<uint8_t> unit(2 * Lznt1::kChunkBytes, 0);
    bool damaged = false;
    Lznt1::decompressUnit(c.input.data(), c.input.size(), unit.data(), unit.size(), &damaged);
    EXPECT_EQ(std::string(unit.begin(), unit.begin() + c.expected.size()), c.expected) << c.what;
    EXPECT_EQ(damaged, c.damaged) << c.what;
}

std::vector<uint8_t> rawChunk(char fill)
{
    std::vector<uint8_t> v{0xFF, 0x3F}; // stored, 4096 bytes
    v.insert(v.end(), Lznt1::kChunkBytes, uint8_t(fill));
    return v;
}

std::vector<uint8_t> concat(std::vector<uint8_t> a, const std::vector<uint8_t>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

INSTANTIATE_TEST_SUITE_P(
    Units, Lznt1Cases,
    ::testing::Values(
        // Three literals, then a reference three back that overlaps its own output.
        Case{"overlapping reference", {0x05, 0xB0, 0x08, 'a', 'b', 'c', 0x06, 0x20, 0x00, 0x00}, "abcabcabcabc", false},
        // A short compressed chunk stands for 4096 bytes: the next chunk starts behind them.
        Case{"short chunk then raw chunk",
             concat({0x02, 0xB0, 0x00, 'x', 'y'}, rawChunk('z')),
             std::string("xy") + std::string(Lznt1::kChunkBytes - 2, '\0') + "zzz",
             false},
        Case{"reference before any byte", {0x03, 0xB0, 0x01, 0x00, 0x10}, "", true},
        Case{"chunk longer than the input", {0x40, 0xB0, 0x00, 'q'}, "", true}));
} // namespace
