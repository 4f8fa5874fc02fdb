#pragma once
#include <cstddef>
#include <cstdint>

// Decompression of NTFS compressed streams. A compressed $DATA is cut into
// compression units (16 clusters as a rule); a unit stored in fewer clusters
// than it spans holds LZNT1 data: chunks of up to 4096 bytes of output, each a
// two-byte header and either raw bytes or flag-led literals and back-references.
class Lznt1 {
public:
    // Output bytes one chunk expands to at the most.
    static constexpr size_t kChunkBytes = 4096;

    // Decompresses one unit from `input` into `output` (of the unit's size,
    // zero-filled by the caller).
    // Stops at the end-of-unit header, at the end of either buffer, or at a
    // chunk that breaks the format; what was not produced stays as the caller
    // left it (zeros, as NTFS defines the rest of a unit). Returns the bytes
    // produced, and sets *damaged when a chunk broke the format.
    static size_t decompressUnit(const uint8_t* input, size_t inputBytes, uint8_t* output, size_t outputBytes,
                                 bool* damaged = nullptr);

private:
    static bool decompressChunk(const uint8_t* in, size_t inBytes, uint8_t* out, size_t outBytes, size_t* produced);
};
