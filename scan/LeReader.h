#pragma once
// Bounds-checked little-endian reads over a byte view. Every on-disk field is
// decoded through this: a read that would leave the view yields 0 and marks the
// reader as failed, so a parse can run its reads and test ok() once.

#include <cstddef>
#include <cstdint>
#include <cstring>

class LeReader {
public:
    LeReader(const void* data, size_t size)
        : m_data(static_cast<const uint8_t*>(data)), m_size(data ? size : 0) {}

    size_t size() const { return m_size; }
    const uint8_t* data() const { return m_data; }
    bool ok() const { return m_ok; }

    bool has(size_t offset, size_t width) const
    {
        return offset <= m_size && width <= m_size - offset;
    }

    uint8_t u8(size_t offset) { return static_cast<uint8_t>(take(offset, 1)); }
    uint16_t u16(size_t offset) { return static_cast<uint16_t>(take(offset, 2)); }
    uint32_t u32(size_t offset) { return static_cast<uint32_t>(take(offset, 4)); }
    uint64_t u64(size_t offset) { return take(offset, 8); }

    // Unsigned little-endian integer of 0..8 bytes.
    uint64_t uN(size_t offset, size_t width) { return take(offset, width); }

    // Signed little-endian integer of 0..8 bytes, sign taken from its top byte.
    int64_t sN(size_t offset, size_t width)
    {
        uint64_t v = take(offset, width);
        if (width == 0 || width >= 8)
            return static_cast<int64_t>(v);
        const uint64_t signBit = uint64_t(1) << (width * 8 - 1);
        if (v & signBit)
            v |= ~((signBit << 1) - 1);
        return static_cast<int64_t>(v);
    }

    // True when the bytes at offset equal the given text (no terminator compared).
    bool matches(size_t offset, const char* text, size_t length)
    {
        if (!has(offset, length)) {
            m_ok = false;
            return false;
        }
        return std::memcmp(m_data + offset, text, length) == 0;
    }

    // Pointer to width bytes at offset, or null (and failed) when they are not all inside.
    const uint8_t* bytes(size_t offset, size_t width)
    {
        if (!has(offset, width)) {
            m_ok = false;
            return nullptr;
        }
        return m_data + offset;
    }

private:
    uint64_t take(size_t offset, size_t width)
    {
        if (width > 8 || !has(offset, width)) {
            m_ok = false;
            return 0;
        }
        uint64_t v = 0;
        for (size_t i = 0; i < width; ++i)
            v |= uint64_t(m_data[offset + i]) << (8 * i);
        return v;
    }

    const uint8_t* m_data;
    size_t m_size;
    bool m_ok = true;
};
