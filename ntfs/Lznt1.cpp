#include "ntfs/Lznt1.h"
#include "scan/LeReader.h"

#include <algorithm>
#include <cstring>

namespace {
// Chunk header: the low 12 bits are the chunk's stored size less 3 (header
// included), bit 15 says the chunk is compressed.
constexpr uint16_t kSizeMask = 0x0FFF;
constexpr uint16_t kCompressedBit = 0x8000;
constexpr size_t kHeaderBytes = 2;
// Back-references copy at least this many bytes.
constexpr size_t kMinMatch = 3;
// Offsets take at least four bits of a token, lengths at most twelve.
constexpr size_t kOffsetBitsFloor = 0x10;
}

size_t Lznt1::decompressUnit(const uint8_t* input, size_t inputBytes, uint8_t* output, size_t outputBytes,
                             bool* damaged)
{
    if (damaged)
        *damaged = false;
    LeReader reader(input, inputBytes);
    size_t in = 0;
    size_t out = 0;
    // Each chunk consumes at least its header, so the loop ends.
    while (reader.has(in, kHeaderBytes) && out < outputBytes) {
        const uint16_t header = reader.u16(in);
        if (header == 0)
            break; // the end of the unit's data
        const size_t stored = size_t(header & kSizeMask) + 1;
        in += kHeaderBytes;
        if (!reader.has(in, stored)) {
            if (damaged)
                *damaged = true;
            break;
        }
        const size_t room = std::min(kChunkBytes, outputBytes - out);
        size_t produced = 0;
        if (header & kCompressedBit) {
            if (!decompressChunk(input + in, stored, output + out, room, &produced)) {
                if (damaged)
                    *damaged = true;
                return out + produced;
            }
        } else {
            produced = std::min(stored, room);
            std::memcpy(output + out, input + in, produced);
        }
        // A compressed chunk stands for a whole 4096 bytes of the unit: what it
        // does not produce is zeros, as the caller's buffer already holds.
        out += (header & kCompressedBit) ? room : produced;
        in += stored;
    }
    return std::min(out, outputBytes);
}

bool Lznt1::decompressChunk(const uint8_t* in, size_t inBytes, uint8_t* out, size_t outBytes, size_t* produced)
{
    size_t i = 0;
    size_t o = 0;
    while (i < inBytes && o < outBytes) {
        const uint8_t flags = in[i++];
        for (int bit = 0; bit < 8 && i < inBytes && o < outBytes; ++bit) {
            if (!(flags & (1u << bit))) {
                out[o++] = in[i++];
                continue;
            }
            if (i + 2 > inBytes || o == 0) {
                *produced = o;
                return false; // a reference with nothing before it to refer to
            }
            const uint16_t token = uint16_t(in[i] | (in[i + 1] << 8));
            i += 2;
            // The further into the chunk, the more bits the offset takes.
            uint16_t lengthMask = kSizeMask;
            int offsetShift = 12;
            for (size_t p = o - 1; p >= kOffsetBitsFloor; p >>= 1) {
                lengthMask >>= 1;
                --offsetShift;
            }
            const size_t back = size_t(token >> offsetShift) + 1;
            const size_t length = size_t(token & lengthMask) + kMinMatch;
            if (back > o) {
                *produced = o;
                return false;
            }
            // Byte by byte: a reference may overlap the bytes it produces.
            for (size_t n = 0; n < length && o < outBytes; ++n, ++o)
                out[o] = out[o - back];
        }
    }
    *produced = o;
    return true;
}
